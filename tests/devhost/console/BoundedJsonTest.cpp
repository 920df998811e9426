#include "devhost/console/BoundedJson.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

namespace devhost {
namespace {

std::string Brackets(std::size_t levels) {
  return std::string(levels, '[') + std::string(levels, ']');
}

TEST(BoundedJson, NestsUpToItsBound) {
  EXPECT_TRUE(ParseBounded(Brackets(5), 5).is_array());
  EXPECT_TRUE(ParseBounded(Brackets(6), 5).is_discarded());
  EXPECT_TRUE(ParseBounded(R"({"a":{"b":[1]}})", 3).is_object());
  EXPECT_TRUE(ParseBounded(R"({"a":{"b":[1]}})", 2).is_discarded());
}

TEST(BoundedJson, CountsWhatIsOpenAndNotWhatIsClosed) {
  EXPECT_TRUE(ParseBounded("[[],[],[{}],{}]", 3).is_array());
}

TEST(BoundedJson, CountsNoBracketsOfTexts) {
  EXPECT_EQ(ParseBounded(R"(["[[{\"[[\\"])", 1).at(0), "[[{\"[[\\");
  EXPECT_TRUE(ParseBounded(R"(["\\",[[]]])", 2).is_discarded()) << "the text ends behind an escaped backslash";
}

TEST(BoundedJson, IsDiscardedWhereItIsNotJson) {
  for (const char* const text : {"", "]", "[", "\"\\", "{\"a\"}"}) {
    EXPECT_TRUE(ParseBounded(text, 5).is_discarded()) << text;
  }
  EXPECT_TRUE(ParseBounded(std::string(200'000, '['), 5).is_discarded());
}

}  // namespace
}  // namespace devhost
