#include "devhost/text/Difference.h"

#include <gmock/gmock.h>

#include <regex>

namespace devhost {
namespace {

std::vector<std::string> Explained(const std::string& expected, const std::string& found) {
  const Mask whole = [](const std::string& text) { return text; };
  return ExplainDifference(expected, found, whole, whole);
}

using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;

TEST(TwoShortTexts, AreShownWhole) {
  EXPECT_THAT(Explained("<Success/>", "<Fail/>"), ElementsAre("  expected: <Success/>", "  found:    <Fail/>"));
}

TEST(AnEmptyText, IsSaidToBeEmpty) {
  EXPECT_THAT(Explained("a", ""), ElementsAre("  expected: a", "  found:    (empty)"));
}

TEST(TwoLongTexts, AreShownFromTheFirstLineThatDiffers) {
  EXPECT_THAT(Explained("one\ntwo\nthree\nfour here\nfive\n", "one\ntwo\nthree\nfour there\nfive\n"),
              ElementsAre("  first difference in line 4, column 6 (- expected, + found):",  //
                          "    two",                                                        //
                          "    three",                                                      //
                          "  - four here",                                                  //
                          "  + four there",                                                 //
                          "         ^"));
}

TEST(TwoLongTexts, MayDifferInTheFirstLine) {
  EXPECT_THAT(Explained("one\n", "One\n"),
              ElementsAre("  first difference in line 1, column 1 (- expected, + found):", "  - one", "  + One", "    ^"));
}

TEST(TwoLongTexts, MayHaveEmptyLinesInFrontOfTheDifference) {
  EXPECT_THAT(Explained("\n\na\n", "\n\nb\n"), ElementsAre("  first difference in line 3, column 1 (- expected, + found):",
                                                           "    ", "    ", "  - a", "  + b", "    ^"));
}

TEST(ATextThatStops, IsSaidToEnd) {
  EXPECT_THAT(Explained("one\ntwo\n", "one\n"), ElementsAre("  first difference in line 2, column 1 (- expected, + found):",
                                                            "    one", "  - two", "  + (the text ends here)", "    ^"));
  EXPECT_THAT(Explained("one\n", "one"), ElementsAre("  first difference in line 1, column 4 (- expected, + found):",
                                                     "  - one", "  + one (the text ends here)", "       ^"));
}

TEST(ALongLine, IsShownAroundTheDifference) {
  const std::string same(5000, 'x');
  const std::vector<std::string> lines = Explained(same + "a" + same, same + "b" + same);
  ASSERT_THAT(lines, SizeIs(4));
  EXPECT_THAT(lines[0], HasSubstr("line 1, column 5001"));
  EXPECT_EQ(lines[1], "  - ..." + std::string(40, 'x') + "a" + std::string(59, 'x') + "...");
  EXPECT_EQ(lines[2], "  + ..." + std::string(40, 'x') + "b" + std::string(59, 'x') + "...");
  EXPECT_EQ(lines[3].size(), lines[1].find('a') + 1);
}

TEST(ADifference, ShowsNoControlCharacters) {
  for (const std::string& line : Explained("a\x1b[31m\nx\n", "a\x1b[31m\ny\n")) {
    EXPECT_EQ(line.find_first_of("\x1b\n"), std::string::npos) << line;
  }
}

TEST(ADifference, MarksTheColumnAlsoBehindCharactersThatAreShownAsSeveral) {
  const std::vector<std::string> lines = Explained("\t\ta\n", "\t\tb\n");
  ASSERT_THAT(lines, SizeIs(4));
  EXPECT_EQ(lines[1], "  - \\t\\ta");
  EXPECT_EQ(lines[3], "        ^");
}

// Masks what stands in brackets.
std::vector<std::string> Masked(const std::string& expected, const std::string& found) {
  const Mask mask = [](const std::string& text) { return std::regex_replace(text, std::regex("<[^>]*>"), "*"); };
  return ExplainDifference(expected, found, mask, mask);
}

TEST(ADifference, ShowsEachTextThroughAMaskOfItsOwn) {
  EXPECT_THAT(ExplainDifference(
                  "one", "two", [](const std::string&) { return "1"; }, [](const std::string&) { return "2"; }),
              ElementsAre("  expected: 1", "  found:    2"));
}

TEST(ADifferenceInWhatIsMasked, IsToldWithoutShowingIt) {
  EXPECT_THAT(Masked("a <b>", "a <c>"), ElementsAre("  expected: a *", "  found:    a * (differs in what is masked)"));
  EXPECT_THAT(Masked("one\na <b>\n", "one\na <c>\n"),
              ElementsAre("  line 2 differs in what is masked, and nothing else does"));
}

TEST(ADifferenceInWhatIsMasked, IsToldBesideTheFirstOneThatCanBeShown) {
  EXPECT_THAT(Masked("<b>\nc\n", "<bb>\nd\n"),
              ElementsAre("  first difference in line 2, column 1 (- expected, + found):", "    *", "  - c", "  + d",
                          "    ^", "  line 1 differs in what is masked, too"));
}

}  // namespace
}  // namespace devhost
