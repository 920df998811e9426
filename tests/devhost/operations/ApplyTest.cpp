// With the built modules.
#include "devhost/operations/Apply.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <functional>
#include <sstream>

#include "devhost/engine/Host.h"
#include "devhost/operations/History.h"
#include "devhost/preview/Preview.h"
#include "devhost/state/StateFolder.h"
#include "tests/devhost/operations/Kitchen.h"
#include "tests/devhost/support/ChangedVariable.h"

namespace devhost {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

using AnAppliedChange = AKitchen;

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

// It is in the plan, and costs a program.
TEST_F(AnAppliedChange, LooksForNoDifferenceAgain) {
  const Plan plan = PlanChange(change);
  EXPECT_NE(plan.difference, "");
  const ChangedVariable noPrograms("PATH", folder.Path());  // none could look for one
  EXPECT_EQ(ApplyChange(change, plan, kNow).verdict, Applied::Verdict::Done);
}

// What the plan has asked is not asked again, but the driver is loaded anew to see what it keeps.
class AChangeInOneLife : public AKitchen {
 protected:
  void UseOddDevice(const std::string& more = "") {
    folder.Write("kitchen/snmpd.conf", "# by hand\n");
    fs::remove(folder.Path("journal"));
    change.target.chosen.device = {12, "kitchen", TEST_MODULE_FOLDER "/odd_device.so",
                                   "<config file='" + folder.Path("kitchen/snmpd.conf") + "' journal='" +
                                       folder.Path("journal") + "' announce='AgentAvailable' " + more + "/>"};
  }
  long Count(const std::string& call) const {
    std::istringstream journal(folder.Read("journal"));
    long count = 0;
    for (std::string line; std::getline(journal, line);) {
      count += line.find("." + call) != std::string::npos || line.rfind(call, 0) == 0 ? 1 : 0;
    }
    return count;
  }
  Applied PlanAndApply(const std::function<void()>& between = [] {}) {
    DeviceLife life(change.target.chosen.agent, change.target.chosen.device);
    const Plan plan = PlanChange(change, life);
    between();
    return ApplyChange(change, plan, kNow, life);
  }
};

TEST_F(AChangeInOneLife, ReadsTheFileForPlanListChangeAndLook) {
  UseOddDevice();
  EXPECT_EQ(PlanAndApply().verdict, Applied::Verdict::Done);
  EXPECT_EQ(Count("CopyFrom"), 4);
  EXPECT_EQ(Count("CopyTo"), 1);
  EXPECT_EQ(Count("Initialize"), 2);
  UseOddDevice();
  EXPECT_EQ(ApplyNow().verdict, Applied::Verdict::Done);
  EXPECT_EQ(Count("CopyFrom"), 5) << "a plan of another life";
}

TEST_F(AChangeInOneLife, AsksADriverForItsFileAgainThatLearnsFromThere) {
  UseOddDevice("learns='yes'");
  SetSettings("<snmpSysContactSetting>learnt</snmpSysContactSetting>");
  EXPECT_EQ(PlanAndApply().verdict, Applied::Verdict::Done);
  EXPECT_EQ(Count("CopyFrom"), 5);
  ASSERT_EQ(Snapshots().size(), 1U);
  ASSERT_TRUE(Snapshots()[0].after);
  EXPECT_THAT(Snapshots()[0].after->settings, HasSubstr("<snmpSysContactSetting>learnt</snmpSysContactSetting>"));
  EXPECT_EQ(Snapshots()[0].after->settings, LookAtDevice(change.target).now.settings);
}

TEST_F(AChangeInOneLife, IsNotMadeWhenTheFileIsNotAsThePlanFoundIt) {
  UseOddDevice();
  const Applied applied = PlanAndApply([this] { folder.Write("kitchen/snmpd.conf", "# by hand, and again\n"); });
  EXPECT_EQ(applied.verdict, Applied::Verdict::Stopped);
  EXPECT_THAT(applied.messages, ElementsAre("kitchen was changed since the plan was made; look at it again"));
  EXPECT_EQ(Count("CopyTo"), 0);
  EXPECT_EQ(File(), "# by hand, and again\n");
  EXPECT_THAT(Snapshots(), IsEmpty());
}

// The agent reads the file when it lists the device, then the snapshot is written, then the agent reads the file again. The
// counts are those of the device's CopyFrom; one that is off line is asked for its file when the change is planned again.
TEST_F(AChangeInOneLife, IsNotMadeWhenTheFileIsEditedJustBeforeItIsReplaced) {
  for (const char* const device : {"editedBefore='3'", "editedBefore='4' copyFrom='-9'"}) {
    UseOddDevice(device);
    KeepStates();
    const Applied applied = PlanAndApply();
    EXPECT_EQ(applied.verdict, Applied::Verdict::Failed);
    EXPECT_THAT(applied.messages,
                Contains("the file of kitchen was changed meanwhile and was not written; look at it again"));
    EXPECT_EQ(Count("CopyTo"), 0);
    EXPECT_EQ(File(), "# by hand\n# meanwhile\n");
    EXPECT_EQ(LookIntoStateFolder(change.target.stateFolder, 12), "");
  }
}

TEST_F(AChangeInOneLife, IsNotMadeWhenTheFileIsEditedBeforeTheAgentListsTheDevice) {
  for (const char* const device : {"editedBefore='2'", "editedBefore='3' copyFrom='-9'"}) {
    UseOddDevice(device);
    const bool isOffLine = std::string(device).find("-9") != std::string::npos;
    const Applied applied = isOffLine ? PlanAndApply() : ApplyNow();  // a plan of another life has to be made again, too
    EXPECT_EQ(applied.verdict, Applied::Verdict::Stopped);
    EXPECT_THAT(applied.messages, ElementsAre("kitchen was changed since the plan was made; look at it again"));
    EXPECT_EQ(Count("CopyTo"), 0);
    EXPECT_EQ(File(), "# by hand\n# meanwhile\n");
    EXPECT_THAT(Snapshots(), IsEmpty());
  }
}

TEST_F(AChangeInOneLife, IsNotMadeWhenTheStateIsNotAsThePlanFoundIt) {
  UseOddDevice();
  KeepStates();
  const Applied applied = PlanAndApply([this] { StateFolder(change.target.stateFolder).Save(12, "<Odd>other</Odd>"); });
  EXPECT_EQ(applied.verdict, Applied::Verdict::Stopped);
  EXPECT_THAT(applied.messages, ElementsAre("kitchen was changed since the plan was made; look at it again"));
  EXPECT_EQ(Count("CopyTo"), 0);
  EXPECT_EQ(LookIntoStateFolder(change.target.stateFolder, 12), "<Odd>other</Odd>\n");
}

// Somebody may look at a plan for a long time.
TEST_F(AChangeInOneLife, IsNotMadeWhenTheDeviceHasGoneOffLineSinceItWasPlanned) {
  SetDevice("local_snmpd");
  KeepStates();
  ASSERT_EQ(ApplyNow().verdict, Applied::Verdict::Done);
  const std::string before = File();
  SetSettings("<snmpSysNameSetting>attic</snmpSysNameSetting>");
  const Applied applied = PlanAndApply([this] {
    std::string state = LookIntoStateFolder(change.target.stateFolder, 12);
    const std::string online = "online=\"true\"";
    ASSERT_NE(state.find(online), std::string::npos) << state;
    StateFolder(change.target.stateFolder).Save(12, state.replace(state.find(online), online.size(), "online=\"false\""));
  });
  EXPECT_EQ(applied.verdict, Applied::Verdict::Stopped);
  EXPECT_THAT(applied.messages,
              ElementsAre("kitchen could be reached when the plan was made, and cannot be now; look at it again"));
  EXPECT_EQ(File(), before);
}

TEST_F(AChangeInOneLife, SaysOnceWhatTheDriverSays) {
  UseOddDevice();
  EXPECT_THAT(PlanAndApply().messages, ElementsAre(HasSubstr("kitchen: asked for the file")));
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
  GoOffLine();
  const Plan plan = PlanChange(change);
  EXPECT_FALSE(plan.isReachable);
  const Applied applied = ApplyChange(change, plan, kNow);
  EXPECT_EQ(applied.verdict, Applied::Verdict::Waits);
  EXPECT_EQ(File(), "# by hand\n");
  const Plan same = PlanChange(change);
  EXPECT_EQ(same.verdict, Plan::Verdict::Nothing);
  const std::string waits =
      "a change of kitchen waits, which was made while it could not be reached: the next change or start of its daemon "
      "brings it to the device, unless somebody has changed the file there meanwhile";
  EXPECT_THAT(same.messages, Contains(waits));
  EXPECT_THAT(LookAtDevice(change.target).messages, ElementsAre(waits));
  change.edit = [](std::string& text) { text += "# more\n"; };
  const Plan edited = PlanChange(change);
  EXPECT_EQ(edited.verdict, Plan::Verdict::Stop);
  EXPECT_THAT(edited.messages.back(), HasSubstr("only changed on a device that can be reached"));
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
