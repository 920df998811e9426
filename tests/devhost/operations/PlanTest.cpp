// With the built modules.
#include "devhost/operations/Plan.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>

#include "devhost/preview/Preview.h"
#include "tests/devhost/operations/Kitchen.h"

namespace devhost {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

using APlan = AKitchen;

std::vector<std::string> RulesOf(const std::vector<Finding>& findings) {
  std::vector<std::string> rules;
  rules.reserve(findings.size());
  for (const Finding& finding : findings) {
    rules.push_back(finding.rule);
  }
  return rules;
}

TEST_F(APlan, ShowsTheDifferenceAndTheSettingsAndChangesNothing) {
  const Plan plan = PlanChange(change);
  EXPECT_EQ(plan.verdict, Plan::Verdict::Change);
  EXPECT_THAT(plan.difference, AllOf(HasSubstr("\n+sysName  kitchen\n"), HasSubstr("\n+rocommunity  *****\n")));
  ASSERT_EQ(plan.settings.size(), 2U);
  EXPECT_EQ(plan.settings[0].name, "snmpCommunityReadSetting");
  EXPECT_EQ(plan.settings[0].before, "");
  EXPECT_EQ(plan.settings[0].after, "*****");
  EXPECT_EQ(plan.settings[1].after, "kitchen");
  EXPECT_EQ(File(), "# by hand\n");
  EXPECT_FALSE(fs::exists(change.target.snapshotFolder));
}

TEST_F(APlan, StopsAtAnErrorInTheSettingsUnlessItsRuleIsAccepted) {
  SetSettings("<snmpSysContactSetting># nobody</snmpSysContactSetting>");
  const Plan stopped = PlanChange(change);
  EXPECT_EQ(stopped.verdict, Plan::Verdict::Stop);
  EXPECT_THAT(RulesOf(stopped.findings), Contains("value-begins-with-hash"));
  EXPECT_THAT(stopped.messages, Contains(HasSubstr("because of value-begins-with-hash")));
  EXPECT_EQ(ApplyNow().verdict, Applied::Verdict::Stopped);
  EXPECT_EQ(File(), "# by hand\n");
  EXPECT_THAT(Snapshots(), IsEmpty());

  change.accepted = {"value-begins-with-hash"};
  EXPECT_EQ(PlanChange(change).verdict, Plan::Verdict::Change);
}

TEST_F(APlan, IsNotStoppedByAWarning) {
  SetSettings("<snmpCommunityReadSetting>public</snmpCommunityReadSetting>");
  const Plan plan = PlanChange(change);
  EXPECT_THAT(RulesOf(plan.findings), Contains("well-known-community"));
  EXPECT_EQ(plan.verdict, Plan::Verdict::Change);
}

TEST_F(APlan, SaysWhichForeignLineWillWinOverTheSection) {
  folder.Write("kitchen/snmpd.conf", "# by hand\nsysName elsewhere\n");
  const Plan plan = PlanChange(change);
  EXPECT_EQ(plan.verdict, Plan::Verdict::Change);
  ASSERT_THAT(RulesOf(plan.findings), ElementsAre("overrides-section"));
  const Finding& finding = plan.findings.front();
  EXPECT_EQ(finding.severity, Severity::Warning);
  EXPECT_EQ(finding.file, "snmpd.conf of kitchen after SetDeviceState");
  ASSERT_EQ(ApplyChange(change, plan, kNow).verdict, Applied::Verdict::Done);
  std::istringstream lines(File());
  std::string line;
  for (std::size_t i = 0; i < finding.line; ++i) {
    std::getline(lines, line);
  }
  EXPECT_EQ(line, "sysName elsewhere");
  EXPECT_EQ(PlanChange(change).verdict, Plan::Verdict::Nothing);
  EXPECT_THAT(RulesOf(PlanChange(change).findings), ElementsAre("overrides-section"));
}

TEST_F(APlan, SaysWhichLineOfAnIncludedFileWillWinOverTheSection) {
  folder.Write("kitchen/snmpd.conf", "includeFile part.conf\n");
  const std::string part = folder.Write("kitchen/part.conf", "sysName elsewhere\n");
  const Plan plan = PlanChange(change);
  EXPECT_EQ(plan.verdict, Plan::Verdict::Change);
  EXPECT_THAT(plan.findings, Contains(AllOf(Field(&Finding::rule, "overrides-section"), Field(&Finding::file, part),
                                            Field(&Finding::severity, Severity::Warning))));
}

// The settings alone let nobody in.
TEST_F(APlan, KnowsWhoIsLetInByTheRestOfTheFile) {
  SetSettings("<snmpSysNameSetting>kitchen</snmpSysNameSetting>");
  const auto warns = Contains(Field(&Finding::rule, "no-access"));
  EXPECT_THAT(PlanChange(change).findings, warns);
  folder.Write("kitchen/part.conf", "rocommunity hidden2\n");
  for (const char* const text : {"rocommunity hidden2\n", "includeFile part.conf\n", "includeDir /nonexistent\n"}) {
    folder.Write("kitchen/snmpd.conf", text);
    EXPECT_THAT(PlanChange(change).findings, Not(warns)) << text;
  }
}

TEST_F(APlan, StopsAtAnElementThatTheAgentWouldMisread) {
  KeepStates();
  for (const char* const wrong :
       {"<snmpEnabledSeting>true</snmpEnabledSeting>", "<snmpEnabledSetting>TRUE</snmpEnabledSetting>"}) {
    SetSettings(wrong);
    EXPECT_EQ(PlanChange(change).verdict, Plan::Verdict::Stop) << wrong;
    EXPECT_EQ(ApplyNow().verdict, Applied::Verdict::Stopped) << wrong;
  }
  EXPECT_EQ(File(), "# by hand\n");
}

TEST_F(APlan, StopsAtMissingSettingsThatTheDeviceHolds) {
  EXPECT_THAT(RulesOf(PlanChange(change).findings), Not(Contains("setting-missing")));
  ASSERT_EQ(ApplyNow().verdict, Applied::Verdict::Done);
  const std::string before = File();
  const std::string community = "<snmpCommunityReadSetting>hidden1</snmpCommunityReadSetting>";
  SetElement(community);
  const Plan plan = PlanChange(change);
  ASSERT_THAT(RulesOf(plan.findings), ElementsAre("setting-missing"));
  EXPECT_THAT(plan.findings[0].reason, testing::EndsWith(": snmpSysNameSetting (emptied)"));
  EXPECT_EQ(plan.verdict, Plan::Verdict::Stop);
  EXPECT_THAT(plan.messages, Contains(HasSubstr("because of setting-missing")));
  EXPECT_EQ(ApplyNow().verdict, Applied::Verdict::Stopped);
  EXPECT_EQ(File(), before);

  SetElement(community + "<snmpSysNameSetting/>");
  EXPECT_EQ(PlanChange(change).verdict, Plan::Verdict::Change);
  SetElement(community);
  change.accepted = {"setting-missing"};
  EXPECT_EQ(PlanChange(change).verdict, Plan::Verdict::Change);
}

TEST_F(APlan, StopsWhereTheFileWouldLoseText) {
  folder.Write("kitchen/snmpd.conf", "# by hand\n# Halvoren Section Start\n# Halvoren Section End\n");
  EXPECT_EQ(PlanChange(change).verdict, Plan::Verdict::Stop);
  change.accepted = {"text-above-section"};
  EXPECT_EQ(PlanChange(change).verdict, Plan::Verdict::Change);
}

// Whoever reads a pipe waits for its other end for five seconds.
TEST_F(APlan, DoesNotWaitForAPipeInThePlaceOfTheFile) {
  std::filesystem::remove(folder.Path("kitchen/snmpd.conf"));
  ASSERT_EQ(::mkfifo(folder.Path("kitchen/snmpd.conf").c_str(), 0600), 0);
  std::chrono::steady_clock::duration time = std::chrono::hours(1);
  // A busy machine may need that long for other reasons, but not each time.
  for (int i = 0; i < 5 && time >= std::chrono::seconds(4); ++i) {
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(PlanChange(change).verdict, Plan::Verdict::Stop);
    time = std::chrono::steady_clock::now() - begin;
  }
  EXPECT_LT(time, std::chrono::seconds(4));
}

TEST_F(APlan, StopsWhereTheAgentWouldRefuse) {
  fs::remove(folder.Path("kitchen/snmpd.conf"));
  fs::create_directory(folder.Path("kitchen/snmpd.conf"));
  const Plan plan = PlanChange(change);
  EXPECT_EQ(plan.verdict, Plan::Verdict::Stop);
  EXPECT_THAT(plan.messages.back(), HasSubstr("SetDeviceState would answer <ReadFail/>"));
}

}  // namespace
}  // namespace devhost
