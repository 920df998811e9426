#include "devhost/secrets/Readings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace devhost {
namespace {

using testing::Contains;
using testing::ElementsAre;

std::vector<std::string> Texts(const std::vector<Reading>& readings) {
  std::vector<std::string> texts;
  texts.reserve(readings.size());
  for (const Reading& reading : readings) {
    EXPECT_EQ(reading.places.size(), reading.text.size());
    texts.push_back(reading.text);
  }
  return texts;
}

TEST(AText, IsReadWithoutItsEscapesAsOftenAsThereAreAny) {
  EXPECT_THAT(Texts(Unescaped("")), ElementsAre(""));
  EXPECT_THAT(Texts(Unescaped("a b")), ElementsAre("a b"));
  EXPECT_THAT(Texts(Unescaped("a%20b")), ElementsAre("a%20b", "a b"));
  EXPECT_THAT(Texts(Unescaped("a&amp;lt;%0a\\t")), ElementsAre("a&amp;lt;%0a\\t", "a&lt;\n\t", "a<\n\t"));
}

TEST(AText, KeepsWhatIsNotAnEscape) {
  for (const char* const text : {"%", "%4", "%zz", "&", "&x;", "&#;", "&#x", "&#300;", "\\", "\\q", "\\x4", "100%"}) {
    EXPECT_THAT(Texts(Unescaped(text)), ElementsAre(text));
  }
}

TEST(AText, SaysWhereEachByteComesFrom) {
  const Reading::Place escaped = Unescaped("a%2520b").back().places.at(1);
  EXPECT_EQ(escaped.begin, 1U);
  EXPECT_EQ(escaped.end, 6U);
  const Reading::Place hex = Decoded("68 69 ").front().places.at(1);
  EXPECT_EQ(hex.begin, 3U);
  EXPECT_EQ(hex.end, 5U);
  const Reading::Place base64 = Decoded("aGk=").at(1).places.at(1);
  EXPECT_EQ(base64.begin, 1U);
  EXPECT_EQ(base64.end, 3U);
}

TEST(AText, IsReadInHexadecimalDigitsAndInBase64) {
  for (const char* const text : {"6869", "68 69", "68:69", "68-69", "0x68, 0x69", "\\x68\\x69", "68\n69"}) {
    EXPECT_EQ(Texts(Decoded(text)).front().substr(text[0] == '0' || text[0] == '\\' ? 2 : 0), "hi") << text;
  }
  EXPECT_THAT(Texts(Decoded("aGVsbG8=")), Contains(std::string("hello\0", 6)));
  EXPECT_THAT(Texts(Decoded("aGVs\nbG8=")), Contains(std::string("hello\0", 6)));
}

}  // namespace
}  // namespace devhost
