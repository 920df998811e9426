#include "devhost/snmpd/LineCutter.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace devhost {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// The lines, as "NUMBER LINE".
std::vector<std::string> Lines(std::string_view text) {
  std::vector<std::string> lines;
  for (LineCutter cutter(text); cutter.Next();) {
    lines.push_back(std::to_string(cutter.Number()) + " " + std::string(cutter.Line()));
  }
  return lines;
}

TEST(ALineCutter, CutsAtLineFeeds) {
  EXPECT_THAT(Lines("a\n\nb\r\nc"), ElementsAre("1 a", "2 ", "3 b\r", "4 c"));
}

TEST(ALineCutter, BeginsNoLineAfterTheLastLineFeed) {
  EXPECT_THAT(Lines("a\n"), ElementsAre("1 a"));
  EXPECT_THAT(Lines("\n"), ElementsAre("1 "));
  EXPECT_THAT(Lines(""), IsEmpty());
}

TEST(ALineCutter, KeepsTheNumberOfTheLastLine) {
  LineCutter cutter("a\nb");
  EXPECT_EQ(cutter.Number(), 0U);
  while (cutter.Next()) {
  }
  EXPECT_FALSE(cutter.Next());
  EXPECT_EQ(cutter.Number(), 2U);
}

}  // namespace
}  // namespace devhost
