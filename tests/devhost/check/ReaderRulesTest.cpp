// What the rules of ReaderRules.cpp find beside their examples.
#include <gtest/gtest.h>

#include "tests/devhost/check/Examples.h"

namespace devhost {
namespace {

std::string Section(const std::string& lines) {
  return "# Halvoren Section Start\n" + lines + "# Halvoren Section End\n";
}

TEST(ACommentInASection, ThatNamesNoKeywordOrSetsNothingIsNotFound) {
  EXPECT_TRUE(LinesFound("comment-read-as-setting", Section("# a note\n#agentXTimeout\n")).empty());
  EXPECT_EQ(LinesFound("comment-read-as-setting", Section("# agentXTimeout 5\n")), std::vector<std::size_t>{2});
}

TEST(ASettingInASection, IsFoundTwiceOnlyInTheFirstOne) {
  const std::string once = Section("sysName  one\n");
  EXPECT_TRUE(LinesFound("setting-twice", once + once).empty());
  EXPECT_EQ(LinesFound("setting-twice", Section("sysName  one\nsysName  two\n")), std::vector<std::size_t>{3});
}

TEST(ACommunityTwiceInASection, IsNotSaidToBeServedLast) {
  const std::vector<Finding> findings = Judged(Section("rocommunity  one\nrocommunity  two\n"));
  ASSERT_FALSE(findings.empty());
  EXPECT_EQ(findings[0].rule, "setting-twice");
  EXPECT_EQ(findings[0].reason, "a second rocommunity in the section: the agent reads that of line 2 and drops this one");
}

TEST(ATabInASection, IsFoundInEachKindOfSetting) {
  for (const char* const line : {"sysName\tbox\n", "agentXTimeout\t5\n", "trap2sink  h\tc\n", " agentXTimeout 5\n"}) {
    EXPECT_EQ(LinesFound("blanks-misread", Section(line)), std::vector<std::size_t>{2}) << line;
  }
}
}  // namespace
}  // namespace devhost
