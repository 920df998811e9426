// With the built modules.
#include "devhost/operations/History.h"

#include <gmock/gmock.h>

#include <filesystem>

#include "tests/devhost/operations/Kitchen.h"

namespace devhost {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

using ALookAtADevice = AKitchen;
using AnUndo = AKitchen;

TEST_F(ALookAtADevice, GivesItsFileAndItsEffectiveSettings) {
  ASSERT_EQ(ApplyNow().verdict, Applied::Verdict::Done);
  const DeviceLook look = LookAtDevice(change.target);
  EXPECT_EQ(look.problem, "");
  EXPECT_TRUE(look.isReachable);
  EXPECT_EQ(look.now.file, File());
  EXPECT_THAT(look.now.settings, HasSubstr("<snmpSysNameSetting>kitchen</snmpSysNameSetting>"));
}

TEST_F(ALookAtADevice, SaysWhyTheDeviceDoesNotAnswer) {
  fs::remove(folder.Path("kitchen/snmpd.conf"));
  fs::create_directory(folder.Path("kitchen/snmpd.conf"));
  const DeviceLook look = LookAtDevice(change.target);
  EXPECT_THAT(look.problem, HasSubstr("CopyFrom of kitchen gave -2"));
  EXPECT_EQ(look.now.settings, "");
}

TEST(ADifferenceOfCopies, IsMaskedAfterItWasFound) {
  const DeviceCopy before{"rocommunity hidden1\n",
                          "<managedDevice><snmpCommunityReadSetting>hidden1</snmpCommunityReadSetting></managedDevice>"};
  const DeviceCopy after{"rocommunity hidden2\n",
                         "<managedDevice><snmpCommunityReadSetting>hidden2</snmpCommunityReadSetting></managedDevice>"};
  const CopyDifference difference = CompareCopies({"old", before}, {"new", after}, false);
  EXPECT_EQ(difference.file, "--- old\n+++ new\n@@ -1 +1 @@\n-rocommunity *****\n+rocommunity *****\n");
  ASSERT_EQ(difference.settings.size(), 1U);
  EXPECT_EQ(difference.settings[0].before + difference.settings[0].after, "**********");
  EXPECT_FALSE(difference.IsNone());
  EXPECT_THAT(CompareCopies({"old", before}, {"new", after}, true).file, HasSubstr("hidden1"));
  EXPECT_TRUE(CompareCopies({"old", before}, {"new", before}, false).IsNone());
}

TEST(Snapshots, AreFoundByNumberAndTheYoungestWithout) {
  SnapshotList snapshots;
  snapshots.snapshots.resize(2);
  snapshots.snapshots[0].number = 3;
  snapshots.snapshots[1].number = 4;
  EXPECT_EQ(FindSnapshot(snapshots, 3).number, 3U);
  EXPECT_EQ(FindSnapshot(snapshots, 0).number, 4U);
  EXPECT_THROW(FindSnapshot(snapshots, 5), SnapshotError);
  EXPECT_THROW(FindSnapshot({}, 0), SnapshotError);
}

TEST(Snapshots, ThatAreDamagedAreNotFoundAndNotReplacedByOlderOnes) {
  SnapshotList snapshots;
  snapshots.snapshots.resize(1);
  snapshots.snapshots[0].number = 3;
  snapshots.damaged = {{4, "4 is damaged"}};
  EXPECT_EQ(FindSnapshot(snapshots, 3).number, 3U);
  for (const unsigned long number : {0UL, 4UL}) {
    try {
      FindSnapshot(snapshots, number);
      ADD_FAILURE() << number;
    } catch (const SnapshotError& error) {
      EXPECT_STREQ(error.what(), "4 is damaged");
    }
  }
}

TEST_F(AnUndo, PutsTheSettingsBackThroughTheAgent) {
  ASSERT_EQ(ApplyNow().verdict, Applied::Verdict::Done);
  const std::string wanted = File();
  SetSettings(
      "<snmpCommunityReadSetting>hidden2</snmpCommunityReadSetting><snmpSysContactSetting>Ada</snmpSysContactSetting>");
  ASSERT_EQ(ApplyNow().verdict, Applied::Verdict::Done);

  const Change undo = UndoOf(Snapshots()[1], change.target);
  const Plan plan = PlanChange(undo);
  EXPECT_EQ(plan.verdict, Plan::Verdict::Change);
  EXPECT_EQ(NotPutBack(Snapshots()[1], plan, false), "");
  const Applied applied = ApplyChange(undo, plan, kNow);
  EXPECT_EQ(applied.verdict, Applied::Verdict::Done);
  EXPECT_THAT(File(),
              AllOf(HasSubstr("\nsysName  kitchen\n"), HasSubstr("\nrocommunity  hidden1\n"), Not(HasSubstr("Ada"))));
  ASSERT_EQ(Snapshots().size(), 3U);
  EXPECT_EQ(Snapshots()[2].operation, "undo 2");
}

TEST_F(AnUndo, CanBeUndone) {
  ASSERT_EQ(ApplyNow().verdict, Applied::Verdict::Done);
  SetSettings("<snmpSysNameSetting>attic</snmpSysNameSetting>");
  ASSERT_EQ(ApplyNow().verdict, Applied::Verdict::Done);
  for (const char* const name : {"kitchen", "attic", "kitchen"}) {
    const Change undo = UndoOf(Snapshots().back(), change.target);
    ASSERT_EQ(ApplyChange(undo, PlanChange(undo), kNow).verdict, Applied::Verdict::Done);
    EXPECT_THAT(File(), HasSubstr("\nsysName  " + std::string(name) + "\n"));
  }
}

// Whoever says the same again wants what is left of it, and not the opposite.
TEST_F(AnUndo, IsRepeatedAfterItsRestartHasFailed) {
  ASSERT_EQ(ApplyNow().verdict, Applied::Verdict::Done);
  SetSettings("<snmpSysNameSetting>attic</snmpSysNameSetting>");
  ASSERT_EQ(ApplyNow().verdict, Applied::Verdict::Done);
  const auto undo = [this](const std::string& restartCommand) {
    Change step = UndoOf(FindSnapshotToUndo(ReadSnapshots(change.target.snapshotFolder, 12), 0), change.target);
    step.restartCommand = {restartCommand};
    return ApplyChange(step, PlanChange(step), kNow).verdict;
  };
  EXPECT_EQ(undo("false"), Applied::Verdict::NotRestarted);
  EXPECT_EQ(undo("true"), Applied::Verdict::Restarted);
  EXPECT_THAT(File(), HasSubstr("\nsysName  kitchen\n"));
  EXPECT_EQ(undo("true"), Applied::Verdict::Done);  // it is whole now, so this one is of the undo
  EXPECT_THAT(File(), HasSubstr("\nsysName  attic\n"));
}

TEST_F(AnUndo, IsRepeatedAfterTheDriverHasRefusedIt) {
  ASSERT_EQ(ApplyNow().verdict, Applied::Verdict::Done);
  SetSettings("<snmpSysNameSetting>attic</snmpSysNameSetting>");
  ASSERT_EQ(ApplyNow().verdict, Applied::Verdict::Done);
  const Change refused = UndoOf(Snapshots().back(), change.target);
  fs::create_directory(folder.Path("kitchen/.snmpd.conf.new"));  // where the driver writes
  ASSERT_EQ(ApplyChange(refused, PlanChange(refused), kNow).verdict, Applied::Verdict::Failed);
  const SnapshotList list = ReadSnapshots(change.target.snapshotFolder, 12);
  EXPECT_EQ(FindSnapshot(list, 0).number, 3U);
  EXPECT_EQ(FindSnapshotToUndo(list, 0).number, 2U);
  EXPECT_EQ(FindSnapshotToUndo(list, 3).number, 3U) << "a number is meant as it stands";
}

TEST_F(AnUndo, SaysWhatTheAgentDoesNotPutBack) {
  ASSERT_EQ(ApplyNow().verdict, Applied::Verdict::Done);
  const Snapshot first = Snapshots()[0];
  const Plan plan = PlanChange(UndoOf(first, change.target));
  // The file had no section before the first change, and the agent does not remove one.
  EXPECT_THAT(NotPutBack(first, plan, false),
              AllOf(HasSubstr("\n-# Halvoren Section Start\n"), HasSubstr("\n # by hand\n")));
}

TEST_F(AnUndo, KeepsForeignLinesThatWereChangedSinceAndSaysSo) {
  ASSERT_EQ(ApplyNow().verdict, Applied::Verdict::Done);
  SetSettings("<snmpSysNameSetting>attic</snmpSysNameSetting>");
  ASSERT_EQ(ApplyNow().verdict, Applied::Verdict::Done);
  folder.Write("kitchen/snmpd.conf", File() + "# by hand, later\n");
  const Change undo = UndoOf(Snapshots()[1], change.target);
  const Plan plan = PlanChange(undo);
  EXPECT_THAT(NotPutBack(Snapshots()[1], plan, false), HasSubstr("\n-# by hand, later\n"));
  ASSERT_EQ(ApplyChange(undo, plan, kNow).verdict, Applied::Verdict::Done);
  EXPECT_THAT(File(), AllOf(HasSubstr("\nsysName  kitchen\n"), HasSubstr("\n# by hand, later\n")));
}

// A device that keeps no settings has its trap targets from the file, where the agent reads port and community as one.
TEST_F(AnUndo, PutsTrapTargetsBackAsTheyWere) {
  SetSettings(
      "<snmpTrapTargets><trapTarget><target>192.0.2.5</target><community>hidden</community><port>162</port></trapTarget>"
      "</snmpTrapTargets>");
  ASSERT_EQ(ApplyNow().verdict, Applied::Verdict::Done);
  const std::string wanted = File();
  SetSettings("<snmpSysNameSetting>attic</snmpSysNameSetting>");
  ASSERT_EQ(ApplyNow().verdict, Applied::Verdict::Done);
  ASSERT_THAT(File(), Not(HasSubstr("trap2sink")));
  const Change undo = UndoOf(Snapshots()[1], change.target);
  ASSERT_EQ(ApplyChange(undo, PlanChange(undo), kNow).verdict, Applied::Verdict::Done);
  EXPECT_THAT(File(), HasSubstr("\ntrap2sink  192.0.2.5  hidden  162\n"));
}

}  // namespace
}  // namespace devhost
