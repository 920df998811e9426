#include "devhost/check/Report.h"

#include <gtest/gtest.h>

#include "tests/devhost/check/Examples.h"

namespace devhost {
namespace {

TEST(AReport, GivesFindingsByLineAndNotesLast) {
  Report report("snmpd.conf", false);
  const auto add = [&report](Severity severity, std::size_t line, const char* reason) {
    report.Begin("some-rule", severity, line);
    report.Add(reason, "fix it");
  };
  add(Severity::Error, 3, "c");
  add(Severity::Note, 1, "note");
  add(Severity::Warning, 2, "a");
  add(Severity::Error, 2, "b");
  std::string reasons;
  for (const Finding& finding : report.Take()) {
    reasons += std::to_string(finding.line) + finding.reason + " ";
    EXPECT_EQ(finding.file, "snmpd.conf");
    EXPECT_EQ(finding.rule, "some-rule");
    EXPECT_EQ(finding.remedy, "fix it");
  }
  EXPECT_EQ(reasons, "2a 2b 3c 1note ");
}

TEST(AReport, NamesLinesAsItsUserWants) {
  Report report("snmpd.conf", false);
  EXPECT_EQ(report.LineName(7), "line 7");
  report.NameLines([](std::size_t line) { return "element " + std::to_string(line); });
  EXPECT_EQ(report.LineName(7), "element 7");
}

TEST(AReport, ShowsSecretsOnlyWhenAsked) {
  EXPECT_EQ(Report("snmpd.conf", false).Secret("reader"), "*****");
  EXPECT_EQ(Report("snmpd.conf", true).Secret("reader"), "\"reader\"");
}

TEST(AFileOfNothingButMistakes, IsReportedInBoundedSpace) {
  std::string text = "rocommunity  reader\n";
  for (int count = 0; count != 3000; ++count) {
    text += "trap2sink  host" + std::to_string(count) + "  162\n";
  }
  const std::vector<Finding> findings = Judged(text);
  ASSERT_EQ(findings.size(), Report::kMostOfOneRule + 1);
  EXPECT_EQ(findings.back().rule, "trap-port-as-community");
  EXPECT_EQ(findings.back().reason, "2000 more findings of this rule are not listed");
}

}  // namespace
}  // namespace devhost
