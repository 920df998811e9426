// With the built modules.
#include "devhost/operations/Apply.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>

#include "devhost/engine/Host.h"
#include "devhost/preview/Preview.h"
#include "devhost/state/StateFolder.h"
#include "tests/devhost/operations/Kitchen.h"
#include "tests/devhost/support/RecordingObserver.h"

namespace devhost {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

using APlan = AKitchen;
using AnAppliedChange = AKitchen;

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

TEST_F(APlan, NamesTheMissingSettingsThatTheDeviceHolds) {
  EXPECT_THAT(RulesOf(PlanChange(change).findings), Not(Contains("setting-missing")));
  ASSERT_EQ(ApplyNow().verdict, Applied::Verdict::Done);
  SetSettings("<snmpCommunityReadSetting>hidden1</snmpCommunityReadSetting>");
  const Plan plan = PlanChange(change);
  ASSERT_THAT(RulesOf(plan.findings), ElementsAre("setting-missing"));
  EXPECT_THAT(plan.findings[0].reason, testing::EndsWith(": snmpSysNameSetting (emptied)"));
  EXPECT_EQ(plan.verdict, Plan::Verdict::Change);
}

TEST_F(APlan, StopsWhereTheFileWouldLoseText) {
  folder.Write("kitchen/snmpd.conf", "# by hand\n# Halvoren Section Start\n# Halvoren Section End\n");
  EXPECT_EQ(PlanChange(change).verdict, Plan::Verdict::Stop);
  change.accepted = {"text-above-section"};
  EXPECT_EQ(PlanChange(change).verdict, Plan::Verdict::Change);
}

TEST_F(APlan, StopsWhereTheAgentWouldRefuse) {
  fs::remove(folder.Path("kitchen/snmpd.conf"));
  fs::create_directory(folder.Path("kitchen/snmpd.conf"));
  const Plan plan = PlanChange(change);
  EXPECT_EQ(plan.verdict, Plan::Verdict::Stop);
  EXPECT_THAT(plan.messages.back(), HasSubstr("SetDeviceState would answer <ReadFail/>"));
}

TEST_F(AnAppliedChange, IsInTheFileAndWhatWasThereInTheSnapshot) {
  const Applied applied = ApplyNow();
  EXPECT_EQ(applied.verdict, Applied::Verdict::Done);
  EXPECT_EQ(applied.snapshot, 1U);
  EXPECT_THAT(applied.messages, IsEmpty());
  EXPECT_THAT(File(), AllOf(HasSubstr("\nsysName  kitchen\n"), HasSubstr("\n# by hand\n")));
  const std::vector<Snapshot> snapshots = Snapshots();
  ASSERT_EQ(snapshots.size(), 1U);
  EXPECT_EQ(snapshots[0].operation, "apply");
  EXPECT_EQ(snapshots[0].time, kNow);
  EXPECT_EQ(snapshots[0].before.file, "# by hand\n");
  EXPECT_THAT(snapshots[0].before.settings, HasSubstr("<snmpSysNameSetting/>"));
  ASSERT_TRUE(snapshots[0].after);
  EXPECT_EQ(snapshots[0].after->file, File());
  EXPECT_THAT(snapshots[0].after->settings, HasSubstr("<snmpSysNameSetting>kitchen</snmpSysNameSetting>"));
}

TEST_F(AnAppliedChange, IsNotMadeAgain) {
  SetSettings(
      "<snmpSysNameSetting>kitchen</snmpSysNameSetting><snmpTrapTargets><trapTarget><target>192.0.2.5</target>"
      "<community>hidden</community><port>162</port></trapTarget></snmpTrapTargets>");
  ASSERT_EQ(ApplyNow().verdict, Applied::Verdict::Done);
  const fs::file_time_type written = fs::last_write_time(folder.Path("kitchen/snmpd.conf"));
  const Plan plan = PlanChange(change);
  EXPECT_EQ(plan.verdict, Plan::Verdict::Nothing);
  EXPECT_THAT(plan.settings, IsEmpty());
  EXPECT_EQ(ApplyChange(change, plan, kNow).verdict, Applied::Verdict::Stopped);
  EXPECT_EQ(fs::last_write_time(folder.Path("kitchen/snmpd.conf")), written);
  EXPECT_EQ(Snapshots().size(), 1U);
}

// SetDeviceState alone would have the agent fill it from the file again, and the next change empty it.
TEST_F(AnAppliedChange, EmptiesASettingThatOnlyTheFileHolds) {
  for (const char* const module : {"simulated_device", "local_snmpd"}) {
    folder.Write("kitchen/snmpd.conf", "# Halvoren Section Start\nsysContact  Ada\n# Halvoren Section End\n");
    SetDevice(module);
    change.target.stateFolder = folder.Path(std::string("states of ") + module);
    EXPECT_EQ(ApplyNow().verdict, Applied::Verdict::Done);
    EXPECT_THAT(File(), AllOf(HasSubstr("\nsysName  kitchen\n"), Not(HasSubstr("Ada"))));
  }
}

// The project's file, or an editor, may change anything while somebody looks at a plan.
TEST_F(AnAppliedChange, IsNotMadeWhenTheFileIsNotAsThePlanFoundIt) {
  const Plan plan = PlanChange(change);
  folder.Write("kitchen/snmpd.conf", "# by hand, and again\n");
  const Applied applied = ApplyChange(change, plan, kNow);
  EXPECT_EQ(applied.verdict, Applied::Verdict::Stopped);
  EXPECT_THAT(applied.messages, ElementsAre("kitchen was changed since the plan was made; look at it again"));
  EXPECT_EQ(File(), "# by hand, and again\n");
  EXPECT_THAT(Snapshots(), IsEmpty());
}

TEST_F(AnAppliedChange, KeepsTheStateOfTheDeviceAndOfNobodyElse) {
  SetDevice("local_snmpd");
  KeepStates();
  SetSettings("<snmpEnabledSetting>true</snmpEnabledSetting><snmpSysNameSetting>kitchen</snmpSysNameSetting>");
  ASSERT_EQ(ApplyNow().verdict, Applied::Verdict::Done);
  EXPECT_TRUE(fs::exists(folder.Path("states/driver-12.xml")));
  EXPECT_FALSE(fs::exists(folder.Path("states/driver-1.xml")));
  EXPECT_EQ(PlanChange(change).verdict, Plan::Verdict::Nothing);
}

TEST_F(AnAppliedChange, MayBeOneOfASettingThatOnlyTheDeviceKeeps) {
  SetDevice("local_snmpd");
  KeepStates();
  ASSERT_EQ(ApplyNow().verdict, Applied::Verdict::Done);
  SetSettings(
      "<snmpEnabledSetting>true</snmpEnabledSetting><snmpCommunityReadSetting>hidden1</snmpCommunityReadSetting>"
      "<snmpSysNameSetting>kitchen</snmpSysNameSetting>");
  const Plan plan = PlanChange(change);
  EXPECT_EQ(plan.verdict, Plan::Verdict::Change);
  EXPECT_EQ(plan.difference, "");
  ASSERT_EQ(plan.settings.size(), 1U);
  EXPECT_EQ(plan.settings[0].name, "snmpEnabledSetting");
  EXPECT_EQ(ApplyNow().verdict, Applied::Verdict::Done);
  EXPECT_EQ(PlanChange(change).verdict, Plan::Verdict::Nothing);
}

TEST_F(AnAppliedChange, SaysWhatTheDriverDoesNotKeep) {
  KeepStates();
  SetSettings("<snmpEnabledSetting>true</snmpEnabledSetting><snmpSysNameSetting>kitchen</snmpSysNameSetting>");
  const Applied applied = ApplyNow();
  EXPECT_EQ(applied.verdict, Applied::Verdict::Done);
  EXPECT_THAT(applied.messages, ElementsAre("the driver does not keep these settings after its end: snmpEnabledSetting"));
}

TEST_F(AnAppliedChange, WaitsForADeviceThatIsOffLine) {
  SetDevice("local_snmpd");
  KeepStates();
  {
    RecordingObserver observer;
    StateFolder states(change.target.stateFolder);
    Host host(observer, &states);
    host.Load(change.target.chosen.agent);
    host.Load(change.target.chosen.device);
    host.Command(1, "GetDeviceList", {});
    host.Command(12, "SetOnline", {{"online", "false"}});
    host.Stop();
  }
  const Plan plan = PlanChange(change);
  EXPECT_FALSE(plan.isReachable);
  const Applied applied = ApplyChange(change, plan, kNow);
  EXPECT_EQ(applied.verdict, Applied::Verdict::Waits);
  EXPECT_EQ(File(), "# by hand\n");
  EXPECT_EQ(PlanChange(change).verdict, Plan::Verdict::Nothing);
}

TEST_F(AnAppliedChange, ThatFailsKeepsItsSnapshotWithoutAResult) {
  const Plan plan = PlanChange(change);
  fs::create_directory(folder.Path("kitchen/.snmpd.conf.new"));  // where the driver writes
  const Applied applied = ApplyChange(change, plan, kNow);
  EXPECT_EQ(applied.verdict, Applied::Verdict::Failed);
  EXPECT_THAT(applied.messages.back(), HasSubstr("SetDeviceState answered <WriteFail/>"));
  EXPECT_EQ(File(), "# by hand\n");
  ASSERT_EQ(Snapshots().size(), 1U);
  EXPECT_FALSE(Snapshots()[0].after);
}

TEST_F(AnAppliedChange, ShowsNoSecretsOfWhatDriversSay) {
  folder.Write("kitchen/snmpd.conf", "rocommunity hidden2\n");
  const Plan plan = PlanChange(change);
  fs::create_directory(folder.Path("kitchen/.snmpd.conf.new"));
  for (const std::string& message : ApplyChange(change, plan, kNow).messages) {
    EXPECT_THAT(message, Not(HasSubstr("hidden")));
  }
  EXPECT_THAT(plan.difference, Not(HasSubstr("hidden")));
  EXPECT_THAT(plan.before.file, HasSubstr("hidden2"));
}

TEST_F(AnAppliedChange, StopsWhereNoSnapshotCanBeKept) {
  const Plan plan = PlanChange(change);
  folder.Write("snapshots", "a file");
  EXPECT_THROW(ApplyChange(change, plan, kNow), SnapshotError);
  EXPECT_EQ(File(), "# by hand\n");
}

TEST_F(AnAppliedChange, StopsWhereAnotherHostHasTheStates) {
  KeepStates();
  const Plan plan = PlanChange(change);
  const StateFolder other(change.target.stateFolder);
  EXPECT_THROW(ApplyChange(change, plan, kNow), StateError);
  EXPECT_EQ(File(), "# by hand\n");
}

}  // namespace
}  // namespace devhost
