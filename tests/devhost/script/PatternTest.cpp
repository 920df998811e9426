#include "devhost/app/Pattern.h"

#include <gmock/gmock.h>

namespace devhost {
namespace {

TEST(APattern, MatchesAnyPartOfAText) {
  EXPECT_TRUE(Pattern("b+c").IsIn("abbcd"));
  EXPECT_FALSE(Pattern("b+d").IsIn("abbcd"));
}

TEST(APattern, AnchorsAtEachLine) {
  EXPECT_TRUE(Pattern("^b$").IsIn("a\nb\nc"));
  EXPECT_FALSE(Pattern("^b$").IsIn("abc"));
  EXPECT_FALSE(Pattern("a.b").IsIn("a\nb"));
}

TEST(APattern, LooksBehindNulBytes) {
  EXPECT_TRUE(Pattern("c$").IsIn(std::string("ab\0c", 4)));
}

TEST(APattern, ReplacesEveryMatch) {
  EXPECT_EQ(Pattern("[0-9]+").ReplaceIn("a12b3c", "#"), "a#b#c");
  EXPECT_EQ(Pattern("x").ReplaceIn("abc", "#"), "abc");
}

TEST(APattern, ReplacesAnAnchoredMatchOnlyAtTheStartOfALine) {
  EXPECT_EQ(Pattern("^a").ReplaceIn("aa\naa", "#"), "#a\n#a");
}

TEST(APattern, EndsTheReplacementAtAnEmptyMatch) {
  EXPECT_EQ(Pattern("x*").ReplaceIn("xxab", "#"), "#ab");
}

TEST(APattern, SurvivesALongText) {
  EXPECT_TRUE(Pattern("(a|b)*c").IsIn(std::string(1000000, 'a') + "c"));
}

TEST(AWrongPattern, SaysWhy) {
  try {
    Pattern("a(b");
    FAIL() << "no exception";
  } catch (const PatternError& error) {
    EXPECT_THAT(error.what(), testing::StartsWith("\"a(b\" is no extended regular expression: "));
  }
  EXPECT_THROW(Pattern(std::string("a\0b", 3)), PatternError);
}

}  // namespace
}  // namespace devhost
