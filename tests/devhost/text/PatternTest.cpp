#include "devhost/text/Pattern.h"

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

TEST(APattern, MayBeDeep) {
  EXPECT_TRUE(Pattern(Nested(4000, "")).IsIn("aaa"));
  EXPECT_TRUE(Pattern(Nested(3000, "+")).IsIn("aaa"));
}

TEST(APattern, IsNotLongerThanItsLimit) {
  EXPECT_EQ(RefusalOf(std::string(10000, 'a')), "");
  EXPECT_EQ(RefusalOf(std::string(10001, 'a')), "the expression is too long; allowed: up to 10000");
}

// Each took the C library's compiler seconds to minutes, or gigabytes.
TEST(APattern, IsCompiledWithoutExplodingWhenRepeatsOfNothingAreRepeated) {
  for (const char* const expression : {"x?"
                                       "?++++++++++++",
                                       "((x*)*){1000}", "((|x|y)*){1000}", "(((x?)+)*){1000}", "(((x*y*)*)*){9}"}) {
    EXPECT_TRUE(Pattern(expression).IsIn("xy")) << expression;
  }
}

TEST(APatternThatWouldTakeAllMemory, IsRefused) {
  for (const char* const expression : {"((((a{1,255}){1,255}){1,255}){1,255})", "(((x?){21}){21}){21}", "a{1001}"}) {
    EXPECT_NE(RefusalOf(expression), "") << expression;
  }
  std::string many;
  for (int i = 0; i != 500; ++i) {
    many += ".{1000}";
  }
  EXPECT_THAT(RefusalOf(many), testing::HasSubstr("the expression is too large a regular expression; let its"));
  std::string slow;
  for (int length = 500; length != 900; length += 8) {
    slow += "|1[01]{" + std::to_string(length) + "}";
  }
  EXPECT_THAT(RefusalOf("(1" + slow + ")z"), testing::HasSubstr("is too large a regular expression"));
  EXPECT_EQ(RefusalOf("a{1000}[^b]{300}.{300}"), "");
  EXPECT_EQ(RefusalOf("([0-9]{1,3}\\.){3}[0-9]{1,3}(a*b+c?){10}[(](x|y)"), "");
}

TEST(APattern, CountsInCharacters) {
  EXPECT_TRUE(Pattern("^K.che$").IsIn("K\u00fcche"));
  EXPECT_FALSE(Pattern("^K..che$").IsIn("K\u00fcche"));
  EXPECT_TRUE(Pattern("^[\u00e4\u00fc]{2}$").IsIn("\u00fc\u00e4"));
  EXPECT_TRUE(Pattern("(K\u00e4|K\u00fc)[s-\u00ff]").IsIn("die K\u00fcu"));
}

TEST(APattern, FindsAlternativesThatBeginWithTheSameByte) {
  EXPECT_TRUE(Pattern("K\u00e4se|K\u00fcche").IsIn("die K\u00fcche"));
  EXPECT_TRUE(Pattern("(\u00e4|\u00fc)che").IsIn("die K\u00fcche"));
  EXPECT_TRUE(Pattern("\u00b0F|\u00b0C").IsIn("21 \u00b0C"));
  EXPECT_FALSE(Pattern("\u00b0F|\u00b0C").IsIn("21 \u00b0K"));
}

TEST(APattern, MatchesOnEitherSideOfBytesThatAreNotUtf8) {
  EXPECT_TRUE(Pattern("^a").IsIn("a\xff\xc3z"));
  EXPECT_TRUE(Pattern("z$").IsIn("a\xff\xc3z"));
  EXPECT_FALSE(Pattern("a.").IsIn("a\xff\xc3z"));
  EXPECT_FALSE(Pattern("a[^b]").IsIn("a\xff\xc3z"));
  EXPECT_EQ(Pattern("\u00fc|x").ReplaceIn("\xff\u00e4x\u00fc\x80", "\u00ee"), "\xff\u00e4\u00ee\u00ee\x80");
}

TEST(APattern, KnowsTheShortNamesOfClasses) {
  EXPECT_TRUE(Pattern("\\bnode\\s\\d+\\w$").IsIn("a node 12b"));
  EXPECT_FALSE(Pattern("\\bnode\\s\\d+$").IsIn("anode 12"));
}

TEST(APattern, LiesWithinOneLine) {
  EXPECT_FALSE(Pattern("a[^x]b").IsIn("a\nb"));
  EXPECT_FALSE(Pattern("a\\sb").IsIn("a\nb"));
  EXPECT_THAT(RefusalOf("a\nb"), testing::HasSubstr("holds a line feed; allowed: what lies within one line"));
  EXPECT_THAT(RefusalOf("a\\nb"), testing::HasSubstr("holds a line feed"));
  EXPECT_THAT(RefusalOf("a\\\nb"), testing::HasSubstr("holds a line feed"));
  EXPECT_THAT(RefusalOf("a\\x0ab"), testing::HasSubstr("holds a line feed"));
  EXPECT_THAT(RefusalOf("a\\012b"), testing::HasSubstr("holds a line feed"));
  EXPECT_THAT(RefusalOf("[^x]\\n"), testing::HasSubstr("holds a line feed"));
  EXPECT_THAT(RefusalOf("[^[:alpha:]x]\n"), testing::HasSubstr("holds a line feed"));
  EXPECT_TRUE(Pattern("a\\\\nb").IsIn("a\\nb"));
  EXPECT_TRUE(Pattern("^[^\\n]+$").IsIn("a\nb"));
  EXPECT_TRUE(Pattern("^[^]\n]+$").IsIn("a\nb"));
}

TEST(APatternThatMeansSomethingElseElsewhere, IsRefused) {
  EXPECT_THAT(RefusalOf("[[=a=]]"), testing::HasSubstr("holds [= or [. inside brackets; allowed: characters, ranges"));
  EXPECT_THAT(RefusalOf("[[:digit:][.a.]]"), testing::HasSubstr("holds [= or [. inside brackets"));
  EXPECT_THAT(RefusalOf("a{,3}b"), testing::HasSubstr("holds {,N}; write {0,N}"));
  EXPECT_THAT(RefusalOf("\\<foo"), testing::HasSubstr("write \\b for an edge, < and > for themselves"));
  EXPECT_THAT(RefusalOf("foo\\>"), testing::HasSubstr("write \\b for an edge"));
  EXPECT_TRUE(Pattern("[=a.[]+\\\\<[\\<]{,b}").IsIn("[=.\\<<{,b}"));
  EXPECT_THAT(RefusalOf("(a)\\1"), testing::HasSubstr("is not an extended regular expression: invalid escape sequence"));
}

TEST(APattern, TakesTheLongestOfSeveralMatches) {
  EXPECT_EQ(Pattern("a|ab|abc").ReplaceIn("abcd", "#"), "#d");
}

TEST(APattern, MayHoldNulBytes) {
  EXPECT_TRUE(Pattern(std::string("a\0b", 3)).IsIn(std::string("xa\0b", 4)));
  EXPECT_FALSE(Pattern(std::string("a\0b", 3)).IsIn("ab"));
}

TEST(AWrongPattern, SaysWhy) {
  EXPECT_THAT(RefusalOf("caf\xe9"), testing::EndsWith("is not an extended regular expression: invalid UTF-8"));
  EXPECT_EQ(RefusalOf("a(b"), "the expression is not an extended regular expression: missing )");
  EXPECT_EQ(RefusalOf("[b-a]"), "the expression is not an extended regular expression: invalid character class range");
  EXPECT_EQ(RefusalOf("a{1001}"), "the expression is not an extended regular expression: invalid repetition size");
}

// A script's reader masks an expression that is a secret where it stands whole.

}  // namespace
}  // namespace devhost
