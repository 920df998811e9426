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

std::string RefusalOf(const std::string& expression) {
  try {
    Pattern pattern(expression);
  } catch (const PatternError& error) {
    return error.what();
  }
  return "";
}

std::string Nested(std::size_t depth, const std::string& repeat) {
  std::string expression(depth, '(');
  expression += 'a';
  for (std::size_t i = 0; i != depth; ++i) {
    expression += ")" + repeat;
  }
  return expression;
}

TEST(APatternThatWouldTakeTheStack, IsRefused) {
  EXPECT_THAT(RefusalOf(Nested(20000, "")), testing::HasSubstr("has 40001 characters; allowed: up to 1000"));
  EXPECT_THAT(RefusalOf(Nested(51, "")), testing::HasSubstr("51 deep; allowed: up to 50"));
  EXPECT_EQ(RefusalOf(Nested(50, "")), "");
}

TEST(APatternThatWouldTakeAllMemory, IsRefused) {
  for (const char* const expression :
       {"((((a{1,255}){1,255}){1,255}){1,255})", "a{255}{255}", "(a{200,}){200,}", "([[:alpha:]b]{99}){101}",
        "(\\({101}){101}", "((abc){99}d{99}){99}", "([]a]{101}){101}", "([^]a]{101}){101}", "(a{,200}){,200}"}) {
    EXPECT_THAT(RefusalOf(expression), testing::HasSubstr("written out; allowed: up to 10000")) << expression;
  }
  EXPECT_THAT(RefusalOf(Nested(40, "+")), testing::HasSubstr("written out"));
  EXPECT_EQ(RefusalOf("([0-9]{1,3}\\.){3}[0-9]{1,3}(a*b+c?){10}[(](x|y)"), "");
  EXPECT_EQ(RefusalOf("(a{99}){99}"), "");
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
