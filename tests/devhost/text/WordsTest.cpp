#include "devhost/text/Words.h"

#include <gmock/gmock.h>

#include <random>
#include <string>

namespace devhost {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::string ErrorOf(const std::string& line) {
  try {
    SplitWords(line);
  } catch (const WordError& error) {
    return error.what();
  }
  return "";
}

TEST(SplittingALine, CutsAtBlanksAndTabs) {
  EXPECT_THAT(SplitWords(" a\tbc  d "), ElementsAre("a", "bc", "d"));
}

TEST(SplittingALine, FindsNoWordsInBlanksAndComments) {
  EXPECT_THAT(SplitWords(""), IsEmpty());
  EXPECT_THAT(SplitWords(" \t"), IsEmpty());
  EXPECT_THAT(SplitWords("  # command 'x"), IsEmpty());
}

TEST(SplittingALine, TakesANumberSignInsideAWordAsItIs) {
  EXPECT_THAT(SplitWords("a#b c #d"), ElementsAre("a#b", "c"));
}

TEST(SplittingALine, TakesANumberSignInQuotesAsItIs) {
  EXPECT_THAT(SplitWords("'#' \\#"), ElementsAre("#", "#"));
}

TEST(SplittingALine, TakesEverythingInSingleQuotesAsItIs) {
  EXPECT_THAT(SplitWords("'a \\ \"b\" #'"), ElementsAre("a \\ \"b\" #"));
}

TEST(SplittingALine, ReadsTheEscapesOfDoubleQuotes) {
  EXPECT_THAT(SplitWords(R"("\\ \" \n\r\t\x41\xfF 'x'")"), ElementsAre("\\ \" \n\r\tA\xff 'x'"));
}

TEST(SplittingALine, TakesWhatFollowsABackslashAsItIs) {
  EXPECT_THAT(SplitWords(R"(a\ b \' \\n)"), ElementsAre("a b", "'", "\\n"));
}

TEST(SplittingALine, JoinsPiecesThatTouch) {
  EXPECT_THAT(SplitWords("name='a b'\" c\"d"), ElementsAre("name=a b cd"));
}

TEST(SplittingALine, KeepsEmptyWordsInQuotes) {
  EXPECT_THAT(SplitWords("'' a \"\""), ElementsAre("", "a", ""));
}

TEST(SplittingALine, ExpandsNothing) {
  EXPECT_THAT(SplitWords("$HOME * ~ `x`"), ElementsAre("$HOME", "*", "~", "`x`"));
}

TEST(SplittingALine, RefusesQuotesThatAreNeverClosed) {
  EXPECT_THAT(ErrorOf("a 'b"), HasSubstr("single quote is never closed"));
  EXPECT_THAT(ErrorOf("a \"b"), HasSubstr("double quote is never closed"));
  EXPECT_THAT(ErrorOf("a \"b\\"), HasSubstr("double quote is never closed"));
}

TEST(SplittingALine, RefusesABackslashAtTheEnd) {
  EXPECT_THAT(ErrorOf("a \\"), HasSubstr("a backslash ends the line"));
}

TEST(SplittingALine, RefusesUnknownEscapesAndSaysWhichThereAre) {
  EXPECT_THAT(ErrorOf("\"\\d\""), HasSubstr("\\d is not an escape: in double quotes, a backslash is allowed before"));
  EXPECT_THAT(ErrorOf("\"\\x4\""), HasSubstr("two hexadecimal digits"));
  EXPECT_THAT(ErrorOf("\"\\x+1\""), HasSubstr("two hexadecimal digits"));
}

TEST(AText, IsABareWordWhenItNeedsNoQuotes) {
  EXPECT_EQ(AsWord("kitchen"), "kitchen");
  EXPECT_EQ(AsWord("a#b=@c"), "a#b=@c");
}

TEST(AText, IsQuotedWhenItNeedsTo) {
  EXPECT_EQ(AsWord(""), "''");
  EXPECT_EQ(AsWord("a b"), "'a b'");
  EXPECT_EQ(AsWord("#a"), "'#a'");
  EXPECT_EQ(AsWord("a'b\"c\\"), R"("a'b\"c\\")");
  EXPECT_EQ(AsWord("a\nb\x1b"), R"("a\nb\x1b")");
}

TEST(AText, ReadsBackAsTheSameTextFromItsWord) {
  std::mt19937 random(7);
  const std::string alphabet = std::string("ab '\"\\#\n\t\x01=@xn\xff\x80") + std::string(1, '\0');
  for (int round = 0; round != 2000; ++round) {
    std::string text;
    for (std::size_t length = random() % 12; length != 0; --length) {
      text += alphabet[random() % alphabet.size()];
    }
    ASSERT_THAT(SplitWords("first " + AsWord(text) + " # last"), ElementsAre("first", text));
  }
}

TEST(AText, ShowsControlCharactersInAMessage) {
  EXPECT_EQ(Quoted(std::string("a\0\n\x7f", 4)), R"("a\x00\n\x7f")");
}

TEST(ANumber, IsToldWithWhatItCounts) {
  EXPECT_EQ(Counted(0, "error"), "0 errors");
  EXPECT_EQ(Counted(1, "error"), "1 error");
  EXPECT_EQ(Counted(2, "error"), "2 errors");
}

TEST(AText, StartsWithItsBeginningOnly) {
  EXPECT_TRUE(StartsWith("abc", "ab"));
  EXPECT_TRUE(StartsWith("abc", ""));
  EXPECT_FALSE(StartsWith("abc", "bc"));
  EXPECT_FALSE(StartsWith("ab", "abc"));
}

TEST(AText, IsCutInAMessageWhenItIsLong) {
  const std::string shown = Quoted(std::string(5000, 'x'));
  EXPECT_LT(shown.size(), 300u);
  EXPECT_THAT(shown, HasSubstr("(5000 bytes)"));
}

}  // namespace
}  // namespace devhost
