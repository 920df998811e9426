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
    for (const Finding& finding : Judged(Example(rule), rule + ".conf", true, CircumstancesOf(rule))) {
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
TEST(ThePageOfRules, DescribesEachRuleAndNoOther) {
  std::istringstream page(testsupport::ScratchFolder::ReadFile(SOURCE_FOLDER "/docs/check-rules.md"));
  std::vector<std::string> named;
  for (std::string line; std::getline(page, line);) {
    if (line.rfind("| `", 0) == 0) {
      named.push_back(line.substr(3, line.find('`', 3) - 3));
    }
  }
  EXPECT_EQ(named, RuleNames());
}

TEST(ThePageOfRules, NamesTheSeverities) {
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

}  // namespace
}  // namespace devhost
