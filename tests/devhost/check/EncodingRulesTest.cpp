// What the rules of EncodingRules.cpp find beside their examples.
#include <gtest/gtest.h>

#include "tests/devhost/check/Examples.h"

namespace devhost {
namespace {

using Lines = std::vector<std::size_t>;

// Each character in two bytes, its own first or last.
std::string InUtf16(const std::string& text, bool ownFirst) {
  std::string wide;
  for (const char c : text) {
    wide += ownFirst ? c : '\0';
    wide += ownFirst ? '\0' : c;
  }
  return wide;
}

TEST(Utf16, IsKnownWithItsMarkAndWithout) {
  const std::string text = "rocommunity  reader\nsysContact  it's\n";
  for (const bool ownFirst : {true, false}) {
    const std::string wide = InUtf16(text, ownFirst);
    EXPECT_EQ(LinesFound("utf-16", wide), Lines{0});
    EXPECT_EQ(LinesFound("utf-16", (ownFirst ? "\xFF\xFE" : "\xFE\xFF") + wide), Lines{0});
    EXPECT_EQ(LinesFound("utf-16", InUtf16("a\n", ownFirst)), Lines{0});
  }
}

TEST(Utf16, IsNotToldFromOtherTextsByAFewNulBytes) {
  for (const std::string& text : {std::string("a\0", 2), std::string("a\0bc", 4), std::string("\0\0\0\0", 4),
                                  std::string("ab\0d\0f\0", 8), std::string()}) {
    EXPECT_EQ(LinesFound("utf-16", text), Lines()) << testing::PrintToString(text);
  }
}

TEST(Utf16, IsAllThatIsSaidOfItsLines) {
  for (const Finding& finding : Judged(InUtf16("rocommunity  it's\nsysContact\n", true))) {
    EXPECT_EQ(finding.line, 0U) << finding.reason;
    EXPECT_NE(finding.rule, "nul-byte");
  }
}

TEST(ANulByte, IsReportedOnce) {
  EXPECT_EQ(LinesFound("nul-byte", std::string("a\0\nb\0\n", 6)), Lines{1});
}

TEST(AByteOrderMark, IsFoundInFrontOfAnyLine) {
  EXPECT_EQ(LinesFound("byte-order-mark", "# one\n\xEF\xBB\xBFsysName  two\n"), Lines{2});
  EXPECT_EQ(
      Judged("\xEF\xBB\xBF")[1].reason,
      "a byte order mark in front of the line: the daemon takes it for the beginning of the first word, and rejects the "
      "line");
}

TEST(AValueOfTheSection, HoldsNothingThatTheToolCannotGet) {
  const auto found = [](const std::string& line) {
    return LinesFound("not-utf-8", "# Halvoren Section Start\n" + line + "\n# Halvoren Section End\n");
  };
  for (const char* const line : {"sysName  b\x01x", "rocommunity  \xE9", "trap2sink  h\xE9te", "trap2sink  host  \xE9",
                                 "sysContact  \xED\xA0\x80", "sysContact  \xC3"}) {
    EXPECT_EQ(found(line), Lines{2}) << line;
  }
  for (const char* const line : {"sysName  \xE2\x82\xAC", "sysName  a\tb", "extend  x  \xE9"}) {
    EXPECT_EQ(found(line), Lines()) << line;
  }
}

TEST(ACommunityOfSeveralBytesACharacter, IsNotCutBeforeItIsJudged) {
  std::string line = "rocommunity  x";
  for (int count = 0; count != 200; ++count) {
    line += "\xC3\xBC";
  }
  EXPECT_EQ(LinesFound("not-utf-8", line + "\n"), Lines());
}

TEST(ACarriageReturn, IsNotWithinALineThatEndsWithIt) {
  EXPECT_EQ(LinesFound("carriage-return-in-line", "sysName  a\r\nsysName  b\r \r\n\r\n"), Lines());
  EXPECT_EQ(LinesFound("carriage-return-in-line", "sysName  a\n\rsysName  b\n"), Lines{2});
}

TEST(ABackslashAtTheEnd, MayHaveBlanksBehindIt) {
  EXPECT_EQ(LinesFound("backslash-at-line-end", "extend  x  a \\ \r\n"), Lines{1});
}

}  // namespace
}  // namespace devhost
