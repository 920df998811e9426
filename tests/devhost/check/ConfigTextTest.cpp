#include "devhost/check/ConfigText.h"

#include <gtest/gtest.h>

#include "config/SectionMerge.h"
#include "config/SectionReader.h"
#include "tests/devhost/check/RandomText.h"

namespace devhost {
namespace {

constexpr int kTexts = 20000;

const std::vector<std::string>& FilePieces() {
  static const std::vector<std::string> pieces = {"\n",
                                                  "\n",
                                                  "\n",
                                                  "#",
                                                  "# ",
                                                  " ",
                                                  "\r",
                                                  "x",
                                                  "sysName  box",
                                                  "# Halvoren Section Start\n",
                                                  "# Halvoren Section End\n",
                                                  "Halvoren Section Start",
                                                  "Halvoren Section End",
                                                  "#   SNMP Configuration Agent of Quentara.\n"};
  return pieces;
}

// What the next write keeps of a text, if the layout is right.
std::string Kept(const std::string& text) {
  const Layout layout = LayOut(text);
  if (!layout.IsReplaced()) {
    return "\n" + text;
  }
  // The line feed of the last line that is dropped stays.
  std::size_t at = 0;
  for (std::size_t line = 1; line != layout.firstKept && at != std::string::npos; ++line) {
    at = text.find('\n', line == 1 ? 0 : at + 1);
  }
  return at == std::string::npos || layout.droppedSetting == 0 ? "" : text.substr(at);
}

TEST(TheLayout, DropsWhatTheMergeDrops) {
  RandomText random;
  for (int count = 0; count != kTexts; ++count) {
    const std::string text = random.Next(FilePieces(), 16);
    ASSERT_EQ(Kept(text), managed_section::Merge("", text)) << testing::PrintToString(text);
  }
}

TEST(TheLayout, SeesTheLinesInsideThatTheReaderSees) {
  RandomText random;
  for (int count = 0; count != kTexts; ++count) {
    const std::string text = random.Next(FilePieces(), 16);
    std::string inside;
    ForEachLine(text, [&inside](const ConfigLine& line) { inside += line.IsInside() ? std::string(line.text) + "\n" : ""; });
    std::string read = managed_section::LinesInside(text);
    if (!read.empty() && read.back() != '\n') {
      read += '\n';
    }
    ASSERT_EQ(inside, read) << testing::PrintToString(text);
  }
}

TEST(TheLayout, HasTheHeaderAndTheTrailerOfTheAgent) {
  const std::string rule(75, '#');
  const Layout layout = LayOut("above\n" + rule +
                               "\n#\n# snmpd.conf\n#\n# Halvoren Section Start\n#\n# Halvoren Section End\n#\n"
                               "#   File contents within the \"Halvoren Section\" will be overwritten by the\n"
                               "#   SNMP Configuration Agent of Quentara.\n# mine\n\nkept\n");
  EXPECT_EQ(layout.header, 2u);
  EXPECT_EQ(layout.firstStart, 6u);
  EXPECT_EQ(layout.firstEnd, 8u);
  EXPECT_EQ(layout.trailer, 11u);
  EXPECT_EQ(layout.droppedSetting, 13u);
  EXPECT_EQ(layout.firstKept, 14u);
  EXPECT_EQ(layout.unclosed, 0u);
}

TEST(ALine, KnowsItsPlaceAndTheSectionAroundIt) {
  std::vector<std::string> seen;
  ForEachLine("a\nHalvoren Section Start\n#b\nHalvoren Section End\n", [&seen](const ConfigLine& line) {
    const char* const places[] = {"outside", "start", "inside", "end"};
    seen.push_back(std::to_string(line.number) + " " + places[static_cast<int>(line.place)] + " " +
                   std::to_string(line.section) + (line.IsComment() ? " comment" : ""));
  });
  EXPECT_EQ(seen, (std::vector<std::string>{"1 outside 0", "2 start 2", "3 inside 2 comment", "4 end 2", "0 outside 0"}));
}

TEST(ALine, IsCutIntoWordsUpToANulByte) {
  ForEachLine(std::string("sysName a\0b", 11), [](const ConfigLine& line) {
    if (line.number == 1) {
      ASSERT_TRUE(line.setting);
      EXPECT_EQ(line.setting->rest, "a");
      EXPECT_EQ(line.text.size(), 11u);
    }
  });
}

TEST(AText, IsTrimmedAtBothEnds) {
  EXPECT_EQ(TrimmedView(" \t\r\v\fa b\n "), "a b");
  EXPECT_EQ(TrimmedView(" \t"), "");
}

}  // namespace
}  // namespace devhost
