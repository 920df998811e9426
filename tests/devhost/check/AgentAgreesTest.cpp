// What the rules believe of the agent, held together with the agent's own writer, merge and reader.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "config/ManagedSection.h"
#include "config/SectionMerge.h"
#include "config/SectionReader.h"
#include "config/SectionWriter.h"
#include "devhost/check/SettingsText.h"
#include "devhost/commands/Findings.h"
#include "device/SNMPDevice.h"
#include "tests/devhost/check/Examples.h"
#include "tests/support/Journal.h"
#include "tests/support/RecordingDevice.h"

namespace devhost {
namespace {

constexpr int kTexts = 20000;

class Random {
 public:
  // Pieces of a list, one behind the other.
  std::string Text(const std::vector<std::string>& pieces, std::size_t most) {
    std::string text;
    for (std::size_t count = Below(most + 1); count != 0; --count) {
      text += pieces[Below(pieces.size())];
    }
    return text;
  }

 private:
  std::size_t Below(std::size_t limit) { return std::uniform_int_distribution<std::size_t>(0, limit - 1)(m_engine); }
  std::mt19937 m_engine{1};
};

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
  Random random;
  for (int count = 0; count != kTexts; ++count) {
    const std::string text = random.Text(FilePieces(), 16);
    ASSERT_EQ(Kept(text), managed_section::Merge("", text)) << testing::PrintToString(text);
  }
}

TEST(TheLayout, SeesTheLinesInsideThatTheReaderSees) {
  Random random;
  for (int count = 0; count != kTexts; ++count) {
    const std::string text = random.Text(FilePieces(), 16);
    std::string inside;
    ForEachLine(text, [&inside](const ConfigLine& line) { inside += line.IsInside() ? std::string(line.text) + "\n" : ""; });
    std::string read = managed_section::LinesInside(text);
    if (!read.empty() && read.back() != '\n') {
      read += '\n';
    }
    ASSERT_EQ(inside, read) << testing::PrintToString(text);
  }
}

// What the agent's record and its device hold after the agent has read the lines of a section.
struct Held {
  explicit Held(const std::string& lines) : device(7, journal), record(7, &device) {
    managed_section::Fill("# Halvoren Section Start\n" + lines + "\n# Halvoren Section End\n", record);
  }
  std::string Value(const std::string& keyword) {
    return keyword == "rocommunity"     ? device.GetCommunityReadSetting()
           : keyword == "rwcommunity"   ? device.GetCommunityWriteSetting()
           : keyword == "agentXTimeout" ? record.GetAgentXTimeout()
           : keyword == "sysContact"    ? device.GetSysContactSetting()
           : keyword == "sysLocation"   ? device.GetSysLocationSetting()
           : keyword == "sysName"       ? device.GetSysNameSetting()
                                        : "";
  }
  Journal journal;
  testsupport::RecordingDevice device;
  SNMPDevice record;
};

TEST(ALineOfASection, IsReadBackAsTheAgentReadsIt) {
  const std::vector<std::string> pieces = {" ",           "  ",          "\t",
                                           "\"",          "\r",          "x",
                                           "two words",   "#",           "162",
                                           "h",           "sysName",     "trap2sink",
                                           "rocommunity", "rwcommunity", "agentXTimeout",
                                           "sysContact",  "sysLocation", "agentXRetries"};
  Random random;
  for (int count = 0; count != kTexts; ++count) {
    const std::string line = random.Text(pieces, 8);
    const ReadBack read = ReadLineBack(line);
    Held held(line);
    for (const char* keyword : {"rocommunity", "rwcommunity", "sysContact", "sysLocation", "sysName"}) {
      ASSERT_EQ(held.Value(keyword), read.keyword == keyword ? read.value : "") << testing::PrintToString(line);
    }
    const bool setsTimeout = read.keyword == "agentXTimeout" && read.sets;
    ASSERT_EQ(held.Value("agentXTimeout"), setsTimeout ? read.value : "6") << testing::PrintToString(line);
    const std::vector<TrapTarget> traps = held.device.GetTrapTargetsSetting();
    ASSERT_EQ(traps.size(), read.kind == ReadBack::Kind::Trap ? 1u : 0u) << testing::PrintToString(line);
    if (!traps.empty()) {
      ASSERT_EQ(traps[0].target + "|" + traps[0].community + "|" + traps[0].port,
                read.target + "|" + read.community + "|" + read.port)
          << testing::PrintToString(line);
    }
  }
}

// The lines of a text that are settings of the user's.
std::string SettingLines(const std::string& section) {
  std::istringstream lines(section);
  std::string found;
  for (std::string line; std::getline(lines, line);) {
    const ReadBack read = ReadLineBack(line);
    const bool isUsers = read.kind == ReadBack::Kind::Word || read.kind == ReadBack::Kind::Trap;
    found += isUsers && line.front() != '#' ? line + "\n" : "";
  }
  return found;
}

TEST(SettingsThatAreAdvisedOn, BecomeTheLinesThatTheAgentWrites) {
  managed_section::Settings settings;
  settings.communityRead = "two words";
  settings.communityWrite = "writer";
  settings.sysContact = "Ada, ground floor";
  settings.sysLocation = "Kitchen";
  settings.sysName = "box";
  settings.trapTargets = {{"192.0.2.5", "trap words", "162"}, {"nms.example", "", ""}, {"h", "c", ""}, {"", "", "9"}};
  const XmlElement root = ReadXml(
      "<managedDevice><snmpSysNameSetting>box</snmpSysNameSetting>"
      "<snmpCommunityReadSetting>two words</snmpCommunityReadSetting>"
      "<snmpCommunityWriteSetting>writer</snmpCommunityWriteSetting>"
      "<snmpSysContactSetting>Ada, ground floor</snmpSysContactSetting>"
      "<snmpSysLocationSetting>Kitchen</snmpSysLocationSetting><snmpTrapTargets>"
      "<trapTarget><target>192.0.2.5</target><community>trap words</community><port>162</port></trapTarget>"
      "<trapTarget><target>nms.example</target><community/><port/></trapTarget>"
      "<other><target>h</target><community>c</community></other><trapTarget><port>9</port></trapTarget>"
      "</snmpTrapTargets></managedDevice>");
  const std::string written = managed_section::Write(managed_section::FixedTexts(), settings, "now");
  EXPECT_EQ(RenderSettings(root).text, "# Halvoren Section Start\n" + SettingLines(written) + "# Halvoren Section End\n");
}

TEST(SettingsThatAreAdvisedOn, HaveNoLinesWhenTheyAreEmptyLikeThoseThatTheAgentWrites) {
  const std::string written = managed_section::Write(managed_section::FixedTexts(), {}, "now");
  EXPECT_EQ(RenderSettings(ReadXml("<any><snmpSysNameSetting/></any>")).text,
            "# Halvoren Section Start\n" + SettingLines(written) + "# Halvoren Section End\n");
}

TEST(ASaneSection, HasNoFindings) {
  managed_section::Settings settings;
  settings.communityRead = "reader";
  settings.communityWrite = "writer";
  settings.agentXTimeout = "6";
  settings.agentXRetries = "2";
  settings.sysContact = "Ada, ground floor";
  settings.sysName = "it's the \"box\" #1";
  settings.trapTargets = {{"192.0.2.5", "", ""}};
  const std::string section = managed_section::Write(managed_section::FixedTexts(), settings, "now");
  std::string found;
  for (const Finding& finding : Judged(managed_section::Merge(section, "extend  greeting  /bin/echo hello\n"))) {
    found += FindingText(finding);
  }
  EXPECT_EQ(found, "");
}

TEST(ASaneSection, WithCarriageReturnsIsStillSeenAsTheAgents) {
  managed_section::Settings settings;
  settings.communityRead = "reader";
  settings.agentXTimeout = "6";
  settings.agentXRetries = "2";
  std::string text;
  for (const char c : managed_section::Write(managed_section::FixedTexts(), settings, "now")) {
    text += c == '\n' ? "\r\n" : std::string(1, c);
  }
  for (const char* rule : {"text-above-section", "line-after-trailer"}) {
    EXPECT_TRUE(LinesFound(rule, text).empty()) << rule;
  }
}

// Rule by rule, with the examples: the next write does what the finding says.

std::string NextWrite(const std::string& text) {
  return managed_section::Merge("NEW SECTION\n", text);
}

bool Holds(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST(TheNextWrite, KeepsASectionWithoutEndBelow) {
  EXPECT_TRUE(Holds(NextWrite(Example("start-marker-without-end")), "sysName  old\n"));
  EXPECT_FALSE(Holds(NextWrite(NearMiss("start-marker-without-end")), "sysName  old\n"));
}

TEST(TheNextWrite, KeepsAFileWithAnEndMarkerAlone) {
  EXPECT_EQ(NextWrite(Example("end-marker-without-start")), "NEW SECTION\n\n" + Example("end-marker-without-start"));
}

TEST(TheNextWrite, DropsWhatIsAboveReversedMarkersAndKeepsTheSection) {
  const std::string text = NextWrite(Example("markers-reversed"));
  EXPECT_FALSE(Holds(text, "sysServices"));
  EXPECT_TRUE(Holds(text, "sysName  old\n"));
}

TEST(TheNextWrite, KeepsASecondSectionAndItsCommunities) {
  for (const char* rule : {"start-marker-again", "old-community"}) {
    EXPECT_TRUE(Holds(NextWrite(Example(rule)), "rocommunity  former\n")) << rule;
  }
}

TEST(TheNextWrite, KeepsWhatIsBelowTheFirstOfTwoEndMarkers) {
  EXPECT_EQ(NextWrite(Example("end-marker-again")), "NEW SECTION\n\n# Halvoren Section End\n");
}

TEST(TheNextWrite, EndsTheOldSectionAtAMarkerInAValue) {
  const std::string text = NextWrite(Example("marker-in-text"));
  EXPECT_EQ(text, "NEW SECTION\n\n# Halvoren Section End\n\n");
  EXPECT_EQ(Held("sysContact  whoever edits Halvoren Section End\nsysName  box").Value("sysName"), "");
}

TEST(TheNextWrite, DropsTextAboveTheSection) {
  EXPECT_FALSE(Holds(NextWrite(Example("text-above-section")), "greeting"));
  EXPECT_TRUE(Holds(NextWrite(NearMiss("text-above-section")), "greeting"));
}

TEST(TheNextWrite, DropsLinesDirectlyBelowTheTrailer) {
  EXPECT_EQ(NextWrite(Example("line-after-trailer")), "NEW SECTION\n\nextend  other  /bin/echo kept\n");
  EXPECT_TRUE(Holds(NextWrite(NearMiss("line-after-trailer")), "# A note on the next line.\nextend  greeting"));
}

TEST(TheNextWrite, DropsForeignLinesOfTheSection) {
  EXPECT_FALSE(Holds(NextWrite(Example("foreign-line-in-section")), "greeting"));
  EXPECT_EQ(Held("syscontact  Ada").Value("sysContact"), "");
}

TEST(TheReader, DoesNotTakeTheRetries) {
  Held held("agentXRetries  5");
  EXPECT_EQ(held.record.GetAgentXRetries(), "2");
}

TEST(TheReader, TakesACommentForASetting) {
  EXPECT_EQ(Held("# sysName is the box under the stairs").Value("sysName"), "#  is the box under the stairs");
}

TEST(TheReader, GoesByTheFirstKeywordItKnows) {
  Held held("sysName  the sysContact desk\nrocommunity6  six");
  EXPECT_EQ(held.Value("sysName"), "");
  EXPECT_EQ(held.Value("sysContact"), "sysName  the  desk");
  EXPECT_EQ(held.Value("rocommunity"), "rocommunity6  six");
}

TEST(TheReader, LosesTheKeywordInAValue) {
  EXPECT_EQ(Held("sysName  box sysName two").Value("sysName"), "box  two");
}

TEST(TheReader, CutsAtSpacesAlone) {
  EXPECT_EQ(Held("rocommunity\treader").Value("rocommunity"), "rocommunity\treader");
  EXPECT_EQ(Held("agentXTimeout\t5").Value("agentXTimeout"), "6");
  EXPECT_EQ(Held(" agentXTimeout 5").Value("agentXTimeout"), "agentXTimeout");
}

TEST(TheReader, KeepsACarriageReturnOfAnAgentXValue) {
  EXPECT_EQ(Held("agentXTimeout  6\r").Value("agentXTimeout"), "6\r");
}

TEST(TheReader, TakesTheFirstOfTwo) {
  EXPECT_EQ(Held("sysName  one\nsysName  two").Value("sysName"), "one");
}

TEST(TheReader, KeepsTheQuotesOfACommunityAndTheWriterQuotesThemAgain) {
  managed_section::Settings settings;
  settings.communityRead = Held("rocommunity  \"two words\"").Value("rocommunity");
  const std::string written = managed_section::Write(managed_section::FixedTexts(), settings, "now");
  EXPECT_TRUE(Holds(written, "rocommunity  \"\"two words\"\"\n"));
  EXPECT_EQ(LinesFound("community-in-pairs-of-quotes", written).size(), 1u);
}

TEST(TheReader, TakesTheTrapPortIntoTheCommunityAndTheDaemonWillRejectIt) {
  managed_section::Settings settings;
  settings.trapTargets = Held("trap2sink  127.0.0.1  trapper  10162").device.GetTrapTargetsSetting();
  const std::string written = managed_section::Write(managed_section::FixedTexts(), settings, "now");
  EXPECT_TRUE(Holds(written, "trap2sink  127.0.0.1  \"  trapper  10162\"\n"));
  EXPECT_EQ(LinesFound("trap-community-quoted", written).size(), 1u);
}

TEST(TheReader, TakesAllWordsForTheCommunity) {
  EXPECT_EQ(Held("rocommunity  two\twords.invalid").Value("rocommunity"), "two\twords.invalid");
}

}  // namespace
}  // namespace devhost
