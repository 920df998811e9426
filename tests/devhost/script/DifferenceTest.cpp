#include "devhost/app/Difference.h"

#include <gmock/gmock.h>

namespace devhost {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;

TEST(TwoShortTexts, AreShownWhole) {
  EXPECT_THAT(ExplainDifference("<Success/>", "<Fail/>"), ElementsAre("  expected: <Success/>", "  found:    <Fail/>"));
}

TEST(AnEmptyText, IsSaidToBeEmpty) {
  EXPECT_THAT(ExplainDifference("a", ""), ElementsAre("  expected: a", "  found:    (empty)"));
}

TEST(TwoLongTexts, AreShownFromTheFirstLineThatDiffers) {
  EXPECT_THAT(ExplainDifference("one\ntwo\nthree\nfour here\nfive\n", "one\ntwo\nthree\nfour there\nfive\n"),
              ElementsAre("  first difference in line 4, column 6 (- expected, + found):",  //
                          "    two",                                                        //
                          "    three",                                                      //
                          "  - four here",                                                  //
                          "  + four there",                                                 //
                          "         ^"));
}

TEST(TwoLongTexts, MayDifferInTheFirstLine) {
  EXPECT_THAT(ExplainDifference("one\n", "One\n"),
              ElementsAre("  first difference in line 1, column 1 (- expected, + found):", "  - one", "  + One", "    ^"));
}

TEST(TwoLongTexts, MayHaveEmptyLinesInFrontOfTheDifference) {
  EXPECT_THAT(ExplainDifference("\n\na\n", "\n\nb\n"),
              ElementsAre("  first difference in line 3, column 1 (- expected, + found):", "    ", "    ", "  - a", "  + b",
                          "    ^"));
}

TEST(ATextThatStops, IsSaidToEnd) {
  EXPECT_THAT(ExplainDifference("one\ntwo\n", "one\n"),
              ElementsAre("  first difference in line 2, column 1 (- expected, + found):", "    one", "  - two",
                          "  + (the text ends here)", "    ^"));
  EXPECT_THAT(ExplainDifference("one\n", "one"), ElementsAre("  first difference in line 1, column 4 (- expected, + found):",
                                                             "  - one", "  + one (the text ends here)", "       ^"));
}

TEST(ALongLine, IsShownAroundTheDifference) {
  const std::string same(5000, 'x');
  const std::vector<std::string> lines = ExplainDifference(same + "a" + same, same + "b" + same);
  ASSERT_THAT(lines, SizeIs(4));
  EXPECT_THAT(lines[0], HasSubstr("line 1, column 5001"));
  EXPECT_EQ(lines[1], "  - ..." + std::string(40, 'x') + "a" + std::string(59, 'x') + "...");
  EXPECT_EQ(lines[2], "  + ..." + std::string(40, 'x') + "b" + std::string(59, 'x') + "...");
  EXPECT_EQ(lines[3].size(), lines[1].find('a') + 1);
}

TEST(ADifference, ShowsNoControlCharacters) {
  for (const std::string& line : ExplainDifference("a\x1b[31m\nx\n", "a\x1b[31m\ny\n")) {
    EXPECT_EQ(line.find_first_of("\x1b\n"), std::string::npos) << line;
  }
}

TEST(ADifference, MarksTheColumnAlsoBehindCharactersThatAreShownAsSeveral) {
  const std::vector<std::string> lines = ExplainDifference("\t\ta\n", "\t\tb\n");
  ASSERT_THAT(lines, SizeIs(4));
  EXPECT_EQ(lines[1], "  - \\t\\ta");
  EXPECT_EQ(lines[3], "        ^");
}

}  // namespace
}  // namespace devhost
