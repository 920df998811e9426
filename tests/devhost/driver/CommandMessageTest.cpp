#include "devhost/driver/CommandMessage.h"

#include <gtest/gtest.h>

namespace devhost {
namespace {

TEST(ACommandMessage, GivesItsParametersByName) {
  const Parameters parameters = {{"a", "x"}, {"n", " 42 "}, {"empty", ""}, {"a", "second"}};
  const CommandMessage message(parameters);
  EXPECT_EQ(message.GetString("a"), "x");
  EXPECT_EQ(message.GetULong("n"), 42U);
  EXPECT_EQ(message.GetULong("a"), 0U);
  EXPECT_EQ(message.GetString("none"), "");
  EXPECT_EQ(message.GetULong("none"), 0U);
  EXPECT_TRUE(message.Has("empty"));
  EXPECT_FALSE(message.Has("none"));
}

TEST(ACommandMessage, HasNoParameterWithoutAName) {
  const Parameters parameters = {{"", "x"}};
  const CommandMessage message(parameters);
  EXPECT_FALSE(message.Has(nullptr));
  EXPECT_EQ(message.GetString(nullptr), "");
  EXPECT_EQ(message.GetULong(nullptr), 0U);
  EXPECT_EQ(message.GetString(""), "x");
}

}  // namespace
}  // namespace devhost
