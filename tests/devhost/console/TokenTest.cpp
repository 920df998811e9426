#include "devhost/console/Token.h"

#include <gmock/gmock.h>

namespace devhost {
namespace {

TEST(AToken, IsThirtyTwoRandomBytesInHexadecimal) {
  EXPECT_THAT(Token().Text(), testing::MatchesRegex("[0-9a-f]{64}"));
  EXPECT_NE(Token().Text(), Token().Text());
}

TEST(AToken, IsNoOtherText) {
  const Token token;
  EXPECT_TRUE(token.Is(token.Text()));
  EXPECT_FALSE(token.Is(""));
  EXPECT_FALSE(token.Is(token.Text() + "0"));
  EXPECT_FALSE(token.Is(token.Text().substr(1)));
  for (std::size_t i = 0; i < token.Text().size(); ++i) {
    std::string other = token.Text();
    other[i] = other[i] == '0' ? '1' : '0';
    EXPECT_FALSE(token.Is(other)) << i;
  }
}

TEST(ThePauseOfWrongTokens, BeginsAfterTen) {
  TokenPause pause;
  const TokenPause::Clock::time_point now;
  for (int i = 0; i < 10; ++i) {
    EXPECT_EQ(pause.OnWrong(now).count(), 0) << i;
  }
  EXPECT_EQ(pause.OnWrong(now), TokenPause::kPause);
}

TEST(ThePauseOfWrongTokens, LastsWhileThereAreTenAMinute) {
  TokenPause pause;
  TokenPause::Clock::time_point now;
  for (int i = 0; i < 10; ++i) {
    pause.OnWrong(now);
  }
  now += std::chrono::seconds(59);
  EXPECT_EQ(pause.OnWrong(now), TokenPause::kPause);
  now += std::chrono::seconds(1);
  EXPECT_EQ(pause.OnWrong(now).count(), 0);
}

}  // namespace
}  // namespace devhost
