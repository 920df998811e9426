// With the built modules.
#include "devhost/operations/FileTarget.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "devhost/operations/Drift.h"
#include "devhost/project/Project.h"
#include "tests/drivers/support/Child.h"
#include "tests/drivers/support/SmallDisk.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr std::int64_t kNow = 1790000000;

class AFile : public testing::Test {
 protected:
  AFile() { Name("kitchen"); }

  Target Of(const std::string& name) const { return TargetOfFile(folder.Path(name), MODULE_FOLDER); }
  void Name(const std::string& name) {
    change.settings = {
        "s.xml", "<managedDevice><snmpCommunityReadSetting>hidden</snmpCommunityReadSetting><snmpSysNameSetting>" + name +
                     "</snmpSysNameSetting><deviceId>1</deviceId></managedDevice>"};
  }
  Applied ApplyNow() {
    change.target = Of("etc/snmpd.conf");
    return ApplyChange(change, PlanChange(change), kNow);
  }
  // A restart command that adds a line to a file.
  std::vector<std::string> Noting(const std::string& name) const {
    return {"sh", "-c", "echo x >> '" + folder.Path(name) + "'"};
  }
  std::string Refusal(const std::string& name) const {
    try {
      Of(name);
    } catch (const FileError& error) {
      return error.what();
    }
    return "";
  }

  const testsupport::ScratchFolder folder;
  const std::string path = folder.Write("etc/snmpd.conf", "# by hand\n");
  Change change;
};

TEST_F(AFile, GetsSettingsWithoutAProject) {
  ::chmod(path.c_str(), 0604);
  ASSERT_EQ(ApplyNow().verdict, Applied::Verdict::Done);
  EXPECT_THAT(folder.Read("etc/snmpd.conf"), AllOf(HasSubstr("\nsysName  kitchen\n"), HasSubstr("\n# by hand\n")));
  EXPECT_EQ(fs::status(path).permissions(), fs::perms(0604));
  EXPECT_EQ(ReadSnapshots(path + ".snapshots", kFileDeviceId).snapshots.size(), 1U);
  EXPECT_EQ(FindDrift(change.target).verdict, Drift::Verdict::None);
  EXPECT_EQ(PlanChange(change).verdict, Plan::Verdict::Nothing);
}

TEST_F(AFile, LeavesNothingBesideItButSnapshots) {
  ASSERT_EQ(ApplyNow().verdict, Applied::Verdict::Done);
  for (const fs::directory_entry& entry : fs::directory_iterator(folder.Path("etc"))) {
    EXPECT_THAT(entry.path().filename().string(), testing::AnyOf("snmpd.conf", "snmpd.conf.snapshots", ".snmpd.conf.lock"));
  }
}

TEST_F(AFile, IsReachedThroughALinkedFolderButIsNotALink) {
  fs::create_directory_symlink("etc", folder.Path("link"));
  fs::create_directory(folder.Path("linked"));
  fs::create_symlink("../etc/snmpd.conf", folder.Path("linked/snmpd.conf"));
  EXPECT_EQ(Refusal("link/snmpd.conf"), "");
  EXPECT_THAT(Refusal("linked/snmpd.conf"),
              HasSubstr("it is a symbolic link to \"../etc/snmpd.conf\"; allowed: the file itself"));
}

TEST_F(AFile, HasToBeThereUnderItsName) {
  folder.Write("etc/other.conf", "");
  fs::create_directories(folder.Path("folder/snmpd.conf"));
  EXPECT_THAT(Refusal("etc/other.conf"), HasSubstr("allowed: snmpd.conf"));
  EXPECT_THAT(Refusal("nowhere/snmpd.conf"), HasSubstr("there is no such file"));
  EXPECT_THAT(Refusal("folder/snmpd.conf"), HasSubstr("it is not a regular file"));
  EXPECT_THROW(TargetOfFile(path, folder.Path("etc")), ProjectError);
}

TEST_F(AFile, IsNotChangedWhenSomebodyElseHasChangedIt) {
  change.target = Of("etc/snmpd.conf");
  const Plan plan = PlanChange(change);
  folder.Write("etc/snmpd.conf", "# by hand, later\n");
  const Applied applied = ApplyChange(change, plan, kNow);
  EXPECT_EQ(applied.verdict, Applied::Verdict::Stopped);
  EXPECT_THAT(applied.messages, ElementsAre(path + " was changed since the plan was made; look at it again"));
  EXPECT_EQ(folder.Read("etc/snmpd.conf"), "# by hand, later\n");
}

TEST_F(AFile, StaysAsItWasOnAFullDisk) {
  constexpr int kCannotMount = 1;
  Child child([this]() -> int {
    if (!MountSmallDisk(folder.Path("etc"))) {
      return kCannotMount;
    }
    folder.Write("etc/snmpd.conf", "# by hand\n");
    std::ofstream(folder.Path("etc/filler")) << std::string(100000, 'x') << std::flush;
    change.target = Of("etc/snmpd.conf");
    change.target.snapshotFolder = folder.Path("snapshots");
    const Applied applied = ApplyChange(change, PlanChange(change), kNow);
    std::string seen = applied.verdict == Applied::Verdict::Failed ? "failed\n" : "not failed\n";
    for (const std::string& message : applied.messages) {
      seen += message + "\n";
    }
    folder.Write("seen", seen + folder.Read("etc/snmpd.conf"));
    return 0;
  });
  if (child.Result() == kCannotMount) {
    GTEST_SKIP() << "no disk can be mounted here";
  }
  EXPECT_EQ(folder.Read("seen"), "failed\n" + path + ": SNMP device 1: cannot replace " + path +
                                     ": No space left on device (status -128)\n" + path +
                                     ": CopyTo returned -128, during command \"SetDeviceState\" of driver 2 "
                                     "\"agent\"\nSetDeviceState answered <WriteFail/>\n# by hand\n");
}

TEST_F(AFile, IsFollowedByTheRestartCommandWhenItHasChanged) {
  change.restartCommand = Noting("restarts");
  ASSERT_EQ(ApplyNow().verdict, Applied::Verdict::Done);
  EXPECT_EQ(ApplyNow().verdict, Applied::Verdict::Stopped);  // nothing to change
  EXPECT_EQ(folder.Read("restarts"), "x\n");

  Name("attic");
  change.restartCommand = {"sh", "-c", "echo rocommunity hidden; exit 3"};
  const Applied applied = ApplyNow();
  EXPECT_EQ(applied.verdict, Applied::Verdict::NotRestarted);
  EXPECT_EQ(applied.snapshot, 2U);
  ASSERT_EQ(applied.messages.size(), 1U);
  EXPECT_THAT(applied.messages[0],
              AllOf(HasSubstr("the file is changed, but the restart command has failed: it has ended with status 3: "),
                    Not(HasSubstr("hidden"))));
  EXPECT_THAT(folder.Read("etc/snmpd.conf"), HasSubstr("\nsysName  attic\n"));
}

TEST_F(AFile, GetsTheRestartThatIsDueWhenThereIsNothingToChange) {
  change.restartCommand = {"false"};
  ASSERT_EQ(ApplyNow().verdict, Applied::Verdict::NotRestarted);
  EXPECT_EQ(PlanChange(change).restartDue, 1U);

  change.restartCommand = {};
  const Applied untold = ApplyNow();
  EXPECT_EQ(untold.verdict, Applied::Verdict::NotRestarted);
  EXPECT_THAT(untold.messages,
              ElementsAre("the daemon has not been told of the change of snapshot 1: its restart command has "
                          "not succeeded; give one again"));

  change.restartCommand = Noting("restarts");
  const Applied late = ApplyNow();
  EXPECT_EQ(late.verdict, Applied::Verdict::Restarted);
  EXPECT_EQ(late.snapshot, 0U);
  EXPECT_EQ(folder.Read("restarts"), "x\n");
  EXPECT_EQ(ApplyNow().verdict, Applied::Verdict::Stopped);
  EXPECT_EQ(folder.Read("restarts"), "x\n");
}

TEST_F(AFile, GetsTheRestartThatIsDueAfterAnotherChange) {
  change.restartCommand = {"false"};
  ASSERT_EQ(ApplyNow().verdict, Applied::Verdict::NotRestarted);
  Name("attic");
  change.restartCommand = {};
  const Applied applied = ApplyNow();
  ASSERT_EQ(applied.verdict, Applied::Verdict::NotRestarted);
  EXPECT_EQ(applied.snapshot, 2U);
  EXPECT_THAT(applied.messages, ElementsAre("the daemon has not been told of the change of snapshot 1: its restart command "
                                            "has not succeeded; give one again"));
  EXPECT_EQ(ApplyNow().verdict, Applied::Verdict::NotRestarted);
}

TEST_F(AFile, NeedsNoRestartWhenTheDriverHasRefusedToReplaceIt) {
  ASSERT_EQ(ApplyNow().verdict, Applied::Verdict::Done);
  Name("attic");
  change.restartCommand = Noting("restarts");
  const std::string inTheWay = folder.Path("etc/.snmpd.conf.new");  // where the driver writes
  fs::create_directory(inTheWay);
  ASSERT_EQ(ApplyNow().verdict, Applied::Verdict::Failed);
  fs::remove(inTheWay);
  EXPECT_EQ(FindDrift(change.target).verdict, Drift::Verdict::None);
  Name("kitchen");
  EXPECT_EQ(PlanChange(change).restartDue, 0U);
}

TEST_F(AFile, StillNeedsTheRestartThatWasDueBeforeTheDriverRefusedToReplaceIt) {
  change.restartCommand = {"false"};
  ASSERT_EQ(ApplyNow().verdict, Applied::Verdict::NotRestarted);
  Name("attic");
  fs::create_directory(folder.Path("etc/.snmpd.conf.new"));
  ASSERT_EQ(ApplyNow().verdict, Applied::Verdict::Failed);
  EXPECT_EQ(FindDrift(change.target).verdict, Drift::Verdict::Some);
  Name("kitchen");
  EXPECT_EQ(PlanChange(change).restartDue, 2U);
}

TEST_F(AFile, IsNotSaidToNeedARestartThatNobodyAskedFor) {
  ASSERT_EQ(ApplyNow().verdict, Applied::Verdict::Done);
  change.restartCommand = Noting("restarts");
  EXPECT_EQ(ApplyNow().verdict, Applied::Verdict::Stopped);
  EXPECT_FALSE(fs::exists(folder.Path("restarts")));
}

TEST_F(AFile, GetsTheRestartThatAKilledProcessOwesIt) {
  Child child([this] {
    change.restartCommand = {"sh", "-c", "kill -9 $PPID"};
    ApplyNow();
    return 0;
  });
  ASSERT_EQ(child.Result(), std::nullopt);
  ASSERT_THAT(folder.Read("etc/snmpd.conf"), HasSubstr("\nsysName  kitchen\n"));
  change.restartCommand = Noting("restarts");
  EXPECT_EQ(ApplyNow().verdict, Applied::Verdict::Restarted);
  EXPECT_EQ(folder.Read("restarts"), "x\n");
}

TEST_F(AFile, IsFollowedByTheRestartCommandWhenItsSnapshotCannotBeFinished) {
  const std::string snapshot = path + ".snapshots/driver-1/1";
  change.restartCommand = Noting("restarts");
  change.edit = [&snapshot](std::string&) {
    if (fs::exists(snapshot)) {
      fs::create_directories(snapshot + "/after.conf/in-the-way");
    }
  };
  const Applied applied = ApplyNow();
  EXPECT_EQ(applied.verdict, Applied::Verdict::Failed);
  EXPECT_THAT(applied.messages,
              ElementsAre(HasSubstr("the change is made, but its snapshot is not finished: cannot use the snapshots in")));
  EXPECT_EQ(folder.Read("restarts"), "x\n");
  EXPECT_EQ(PlanChange(change).restartDue, 0U);
}

}  // namespace
}  // namespace devhost
