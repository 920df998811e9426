#include "devhost/check/Rules.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>

#include "devhost/commands/Findings.h"
#include "tests/devhost/check/Examples.h"

namespace devhost {
namespace {

constexpr char kGolden[] = CHECK_DATA_FOLDER "/findings.golden";

std::vector<std::string> LineRules() {
  std::vector<std::string> names;
  for (const Rule& rule : Rules()) {
    names.emplace_back(rule.name);
  }
  return names;
}

class ARule : public testing::TestWithParam<std::string> {};

TEST_P(ARule, FindsItsExample) {
  EXPECT_FALSE(LinesFound(GetParam(), Example(GetParam())).empty());
}

TEST_P(ARule, PassesOverItsNearMiss) {
  EXPECT_EQ(LinesFound(GetParam(), NearMiss(GetParam())), std::vector<std::size_t>());
}

INSTANTIATE_TEST_SUITE_P(Each, ARule, testing::ValuesIn(LineRules()), [](const testing::TestParamInfo<std::string>& rule) {
  std::string name;
  for (const char c : rule.param) {
    name += c == '-' ? '_' : c;
  }
  return name;
});

// Every reason and remedy, and what else is found in an example: looked at by a person, kept here.
TEST(TheExamples, GiveTheFindingsThatAPersonHasApproved) {
  std::string found;
  for (const std::string& rule : LineRules()) {
    for (const Finding& finding : Judged(Example(rule), rule + ".conf", true)) {
      found += FindingText(finding);
    }
  }
  if (std::getenv("UPDATE_GOLDENS") != nullptr) {
    std::ofstream(kGolden, std::ios::binary) << found;
  }
  EXPECT_EQ(found, testsupport::ScratchFolder::ReadFile(kGolden)) << "see " << kGolden;
}

TEST(TheExamples, AreOneAndANearMissForEachRule) {
  std::set<std::string> expected = {"findings.golden"};
  for (const std::string& rule : LineRules()) {
    expected.insert({rule + ".conf", rule + ".near.conf"});
  }
  std::set<std::string> found;
  for (const auto& entry : std::filesystem::directory_iterator(CHECK_DATA_FOLDER)) {
    found.insert(entry.path().filename().string());
  }
  EXPECT_EQ(found, expected);
}

// The table of docs/check-rules.md: a line for each rule, "| `name` | error | ...".
TEST(ThePageOfRules, TellsOfEachRuleAndNoOther) {
  std::istringstream page(testsupport::ScratchFolder::ReadFile(SOURCE_FOLDER "/docs/check-rules.md"));
  std::vector<std::string> told;
  for (std::string line; std::getline(page, line);) {
    if (line.rfind("| `", 0) == 0) {
      told.push_back(line.substr(3, line.find('`', 3) - 3));
    }
  }
  EXPECT_EQ(told, RuleNames());
}

TEST(ThePageOfRules, TellsTheSeverities) {
  const std::string page = testsupport::ScratchFolder::ReadFile(SOURCE_FOLDER "/docs/check-rules.md");
  for (const Rule& rule : Rules()) {
    const std::string start = std::string("| `") + rule.name + "` | " +
                              (rule.severity == Severity::Error     ? "error"
                               : rule.severity == Severity::Warning ? "warning"
                                                                    : "note") +
                              " |";
    EXPECT_NE(page.find(start), std::string::npos) << start;
  }
}

TEST(AFileWiderThanItsGroupMayRead, IsFound) {
  for (const unsigned mode : {0644U, 0660U, 0666U, 0604U, 0641U, 0750U}) {
    Report report("snmpd.conf", false);
    report.Begin(kFileModeRule, Severity::Warning);
    JudgeFileMode(mode, report);
    EXPECT_EQ(report.Take().size(), 1u) << std::oct << mode;
  }
}

TEST(AFileWiderThanItsGroupMayRead, IsToldOfByWhatOthersMayDo) {
  const std::pair<unsigned, std::string> expected[] = {
      {0644U, "the file's mode is 0644: others than its owner and group may read the communities"},
      {0660U, "the file's mode is 0660: others than its owner may change it"},
      {0602U, "the file's mode is 0602: others than its owner may change it"},
      {0750U, "the file's mode is 0750: nobody needs to execute it"}};
  for (const auto& [mode, reason] : expected) {
    Report report("snmpd.conf", false);
    report.Begin(kFileModeRule, Severity::Warning);
    JudgeFileMode(mode, report);
    EXPECT_EQ(report.Take().at(0).reason, reason);
  }
}

TEST(AFileThatItsGroupMayRead, IsNotFound) {
  for (const unsigned mode : {0640U, 0600U, 0400U, 0440U, 0100640U}) {
    Report report("snmpd.conf", false);
    report.Begin(kFileModeRule, Severity::Warning);
    JudgeFileMode(mode, report);
    EXPECT_TRUE(report.Take().empty()) << std::oct << mode;
  }
}

TEST(Communities, AreMaskedUnlessAskedFor) {
  const std::string text = "rocommunity  it's-secret\n";
  ASSERT_EQ(Judged(text).size(), 1u);
  EXPECT_EQ(Judged(text)[0].reason, "a quote or a backslash in the community: the daemon answers to ***** instead of *****");
  EXPECT_EQ(Judged(text, "snmpd.conf", true)[0].reason,
            "a quote or a backslash in the community: the daemon answers to \"it\" instead of \"it's-secret\"");
}

TEST(AFileOfNothingButMistakes, IsToldInBoundedSpace) {
  std::string text = "rocommunity  reader\n";
  for (int count = 0; count != 3000; ++count) {
    text += "trap2sink  host" + std::to_string(count) + "  162\n";
  }
  const std::vector<Finding> findings = Judged(text);
  ASSERT_EQ(findings.size(), Report::kMostOfOneRule + 1);
  EXPECT_EQ(findings.back().rule, "trap-port-as-community");
  EXPECT_EQ(findings.back().reason, "2000 more findings of this rule are not listed");
}

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

TEST(ATrapPortWithoutCommunity, IsFoundWhateverNumberItIs) {
  const std::string text = "rocommunity  reader\ntrap2sink  192.0.2.5  70000\n";
  EXPECT_EQ(LinesFound("trap-port-as-community", text), std::vector<std::size_t>{2});
}

TEST(AnEmptyText, LetsNobodyIn) {
  ASSERT_EQ(Judged("").size(), 1u);
  EXPECT_EQ(Judged("")[0].rule, "no-access");
}

}  // namespace
}  // namespace devhost
