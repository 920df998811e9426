// What the rules of MarkerRules.cpp find beside their examples.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "config/ManagedSection.h"
#include "config/SectionWriter.h"
#include "tests/devhost/check/Examples.h"

namespace devhost {
namespace {

TEST(ALineBelowASection, ThatTheSectionDoesNotHoldWillWin) {
  const std::string section = "# Halvoren Section Start\nrocommunity  reader\nsysName  box\n# Halvoren Section End\n\n";
  EXPECT_EQ(LinesFound("will-override-section", section + "sysContact  Bob\nsysName  other\n"), std::vector<std::size_t>{6});
  EXPECT_EQ(LinesFound("overrides-section", section + "sysContact  Bob\nsysName  other\n"), std::vector<std::size_t>{7});
}

TEST(ALineBelowASection, ThatSaysTheSameInOtherWordsIsNotFound) {
  const std::string text =
      "# Halvoren Section Start\nrocommunity  reader\nmaster  agentx\nsysObjectID  1.3.6.1.4.1.32473\n"
      "# Halvoren Section End\n\nmaster  yes\nmaster  on\nmaster  all\nsysObjectID  .1.3.6.1.4.1.32473\n";
  EXPECT_TRUE(Judged(text).empty());
  EXPECT_EQ(LinesFound("overrides-section", text + "master  no\n"), std::vector<std::size_t>{11});
}

TEST(ALineBelowASection, OverridesTheAgentXTimeout) {
  const std::string section = "# Halvoren Section Start\nrocommunity  reader\nagentXTimeout  6\n# Halvoren Section End\n\n";
  EXPECT_EQ(LinesFound("overrides-section", section + "agentXTimeout  9\n"), std::vector<std::size_t>{6});
  EXPECT_TRUE(LinesFound("overrides-section", section + "agentXTimeout  6\nagentXTimeout  x\n").empty());
}

TEST(ALineBelowASection, OverridesTheAgentXRetries) {
  const std::string section = "# Halvoren Section Start\nrocommunity  reader\nagentXRetries  2\n# Halvoren Section End\n\n";
  EXPECT_EQ(LinesFound("overrides-section", section + "agentXRetries  5\n"), std::vector<std::size_t>{6});
  EXPECT_TRUE(LinesFound("overrides-section", section + "agentxretries 2\n").empty());
  EXPECT_EQ(LinesFound("will-override-section", "agentXRetries  2\nagentXRetries  5\n"), std::vector<std::size_t>{2});
}

// Of the three that are left out, the daemon uses every line.
TEST(ALineBelowASection, IsComparedWithEachSettingThatTheAgentWrites) {
  managed_section::Settings settings;
  settings.agentXTimeout = "6";
  settings.agentXRetries = "2";
  settings.sysContact = settings.sysLocation = settings.sysName = "here";
  const std::string section = managed_section::Write(managed_section::FixedTexts(), settings, "now") + "\n";
  const auto below = static_cast<std::size_t>(std::count(section.begin(), section.end(), '\n')) + 1;
  std::set<std::string> compared;
  ForEachLine(section, [&](const ConfigLine& line) {
    if (line.setting) {
      const std::string& keyword = line.setting->keyword;
      const std::string other = keyword == "sysobjectid" ? "1.3.6.1.4.1.1\n" : "9\n";
      const char* const rule = keyword == "includealldisks" ? "first-disk-line-wins" : "overrides-section";
      EXPECT_EQ(LinesFound(rule, section + keyword + " " + other), std::vector<std::size_t>{below}) << keyword;
      compared.insert(keyword);
    }
  });
  EXPECT_EQ(compared, std::set<std::string>({"master", "agentxtimeout", "agentxretries", "agentxsocket", "includealldisks",
                                             "sysobjectid", "sysservices", "syscontact", "syslocation", "sysname"}));
}

TEST(ALineBelowASection, ThatTheDaemonRejectsOverridesNothing) {
  const std::string section = "# Halvoren Section Start\nrocommunity  reader\nsysName  box\n# Halvoren Section End\n\n";
  EXPECT_TRUE(LinesFound("overrides-section", section + "sysName\nsysName  #\n").empty());
}

TEST(AnEndMarkerAboveTheStartMarker, IsFoundWithTheSectionThatItSpoils) {
  const std::vector<Finding> findings = Judged("rocommunity  r\n# Halvoren Section End\n# Halvoren Section Start\n");
  const auto found = std::find_if(findings.begin(), findings.end(),
                                  [](const Finding& finding) { return finding.rule == "markers-reversed"; });
  ASSERT_NE(found, findings.end());
  EXPECT_EQ(found->line, 2u);
  EXPECT_NE(found->reason.find("start marker of line 3"), std::string::npos) << found->reason;
}
}  // namespace
}  // namespace devhost
