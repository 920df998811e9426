// What the rules assume about the agent, compared with the agent's own writer, merge and reader.
#include <gtest/gtest.h>

#include "config/ManagedSection.h"
#include "config/SectionMerge.h"
#include "config/SectionWriter.h"
#include "devhost/commands/Findings.h"
#include "devhost/xml/XmlReader.h"
#include "host/H7XML.h"
#include "tests/devhost/check/Examples.h"
#include "tests/devhost/check/Held.h"

namespace devhost {
namespace {

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

TEST(ASaneSection, ThatAnotherEditorSavedIsStillSeenAsTheAgents) {
  managed_section::Settings settings;
  settings.communityRead = "reader";
  settings.sysName = "box";
  std::string text = "\xEF\xBB\xBF";
  for (const char c : managed_section::Write(managed_section::FixedTexts(), settings, "now")) {
    text += c == '\n' ? "\r\n" : std::string(1, c);
  }
  EXPECT_TRUE(LinesFound("text-above-section", text).empty());
  EXPECT_EQ(LinesFound("byte-order-mark", text), std::vector<std::size_t>{1});
  EXPECT_EQ(managed_section::Merge("NEW SECTION\n", text + "\r\nrouser  boss\n"), "NEW SECTION\n\nrouser  boss\n");
  EXPECT_EQ(LinesFound("text-above-section", "\xEF\xBB\xBFsysServices  72\n" + text).size(), 1u);
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

TEST(TheReader, UsesTheFirstKeywordItKnows) {
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

TEST(TheReader, PassesBytesThatTheToolCannotGet) {
  const std::string contact = Held("sysContact  M\xFCller").Value("sysContact");
  EXPECT_EQ(contact, "M\xFCller");
  const auto sent = H7XML::CreateXmlNode("snmpSysContactSetting", contact);
  EXPECT_EQ(XmlText(*sent, XmlStyle::Compact), "<snmpSysContactSetting>M\xEF\xBF\xBDller</snmpSysContactSetting>");
}

TEST(TheReader, DoesNotJoinLines) {
  Held held("sysContact  Ada\\\nsysName  box");
  EXPECT_EQ(held.Value("sysContact"), "Ada\\");
  EXPECT_EQ(held.Value("sysName"), "box");
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
