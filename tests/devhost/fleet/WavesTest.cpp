#include "devhost/fleet/Waves.h"

#include <gmock/gmock.h>

namespace devhost {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

std::string Refusal(const std::string& text) {
  try {
    WaveEnds(text, 20);
  } catch (const WaveError& error) {
    return error.what();
  }
  return "";
}

TEST(Waves, AreOneForAllWhenNobodySaysMore) {
  EXPECT_THAT(WaveEnds("", 20), ElementsAre(20U));
}

TEST(Waves, EndAfterNumbersAndSharesOfAll) {
  EXPECT_THAT(WaveEnds("1,10%,100%", 20), ElementsAre(1U, 2U, 20U));
  EXPECT_THAT(WaveEnds("1,10%,50%,100%", 15), ElementsAre(1U, 2U, 8U, 15U));
  EXPECT_THAT(WaveEnds("3,20", 20), ElementsAre(3U, 20U));
}

TEST(Waves, WithNothingToDoAreLeftOut) {
  EXPECT_THAT(WaveEnds("1,10%,100%", 5), ElementsAre(1U, 5U));
  EXPECT_THAT(WaveEnds("10,100%", 5), ElementsAre(5U));
}

TEST(Waves, ThatAreNoListAreRefused) {
  for (const char* const text : {"x", "0", "-1", "1,,100%", "1,", "101%", "0%", "1.5", "1 ,100%", "99999999999"}) {
    EXPECT_THAT(Refusal(text), HasSubstr("is not a wave; allowed: rising numbers or shares")) << text;
  }
}

TEST(Waves, MustRiseAndReachAllDevices) {
  EXPECT_THAT(Refusal("10,1,100%"), HasSubstr("the wave \"1\" is smaller than the one before"));
  EXPECT_THAT(Refusal("1,10%"), HasSubstr("the last wave leaves out 18 devices"));
}

}  // namespace
}  // namespace devhost
