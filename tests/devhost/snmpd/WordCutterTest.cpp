#include "devhost/snmpd/WordCutter.h"

#include <gmock/gmock.h>

#include <string>

namespace devhost {
namespace {

TEST(AWordCutter, CutsFromAnyPlaceAndSaysWhereTheNextWordBegins) {
  const std::string line = "  one  two ";
  WordCutter cutter(line, 4);
  EXPECT_EQ(cutter.Next().text, "e");
  EXPECT_EQ(cutter.At(), 7U);
  EXPECT_FALSE(cutter.AtEnd());
  EXPECT_EQ(cutter.Next().text, "two");
  EXPECT_TRUE(cutter.AtEnd());
  EXPECT_TRUE(cutter.AtLineEnd());
}

TEST(AWordCutter, IsAtTheEndBeforeANumberSignButNotAtTheEndOfTheLine) {
  WordCutter cutter("one #two");
  cutter.Next();
  EXPECT_TRUE(cutter.AtEnd());
  EXPECT_FALSE(cutter.AtLineEnd());
  EXPECT_EQ(cutter.Next().text, "#two");
  EXPECT_TRUE(cutter.AtLineEnd());
}

TEST(AWordCutter, KnowsTheBlanksOfTheDaemonAndNoOthers) {
  std::string blanks;
  for (int byte = 0; byte != 256; ++byte) {
    blanks += IsConfigBlank(static_cast<char>(byte)) ? std::string(1, static_cast<char>(byte)) : "";
  }
  EXPECT_EQ(blanks, "\t\n\v\f\r ");
}

}  // namespace
}  // namespace devhost
