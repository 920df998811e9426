#include "devhost/operations/Snapshots.h"

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>
#include <limits>
#include <string>

#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::int64_t kNow = 1790000000;
constexpr std::int64_t kDay = 24 * 60 * 60;

class SnapshotsOfADevice : public testing::Test {
 protected:
  std::vector<unsigned long> Numbers() const {
    std::vector<unsigned long> numbers;
    for (const Snapshot& snapshot : ReadSnapshots(path, 12).snapshots) {
      numbers.push_back(snapshot.number);
    }
    return numbers;
  }
  template <class Act>
  static std::string ErrorOf(const Act& act) {
    try {
      act();
    } catch (const SnapshotError& error) {
      return error.what();
    }
    return "";
  }
  std::string ReadError() const {
    return ErrorOf([this] { ReadSnapshots(path, 12); });
  }
  // The problems of the damaged ones.
  std::vector<std::string> Problems() const {
    std::vector<std::string> problems;
    for (const DamagedSnapshot& damaged : ReadSnapshots(path, 12).damaged) {
      problems.push_back(damaged.problem);
    }
    return problems;
  }
  std::string OpenError() const {
    return ErrorOf([this] { SnapshotFolder(path, 12); });
  }

  const testsupport::ScratchFolder folder;
  const std::string path = folder.Path("snapshots");
  const DeviceCopy before{std::string("a\0b\xff\r\n", 6), "<managedDevice/>\n"};
  const DeviceCopy after{"", "<managedDevice><deviceId>12</deviceId></managedDevice>\n"};
};

TEST_F(SnapshotsOfADevice, AreNoneWithoutAFolderAndMakeNone) {
  EXPECT_THAT(Numbers(), IsEmpty());
  EXPECT_FALSE(fs::exists(path));
}

TEST_F(SnapshotsOfADevice, ComeBackByteForByte) {
  {
    SnapshotFolder snapshots(path, 12);
    EXPECT_EQ(snapshots.Begin("undo 3", "kitchen", before, kNow), 1U);
    EXPECT_EQ(snapshots.Begin("apply", "kitchen", after, kNow + 1), 2U);
    snapshots.Finish(1, after);
  }
  const std::vector<Snapshot> read = ReadSnapshots(path, 12).snapshots;
  ASSERT_EQ(read.size(), 2U);
  EXPECT_EQ(read[0].number, 1U);
  EXPECT_EQ(read[0].operation, "undo 3");
  EXPECT_EQ(read[0].time, kNow);
  EXPECT_EQ(read[0].before.file, before.file);
  EXPECT_EQ(read[0].before.settings, before.settings);
  ASSERT_TRUE(read[0].after);
  EXPECT_EQ(read[0].after->file, "");
  EXPECT_EQ(read[0].after->settings, after.settings);
  EXPECT_FALSE(read[1].after);
}

TEST_F(SnapshotsOfADevice, AreForThisUserAloneWhateverTheUmask) {
  const mode_t mask = ::umask(0);
  SnapshotFolder(path, 12).Begin("apply", "kitchen", before, kNow);
  ::umask(0777);
  SnapshotFolder(folder.Path("others"), 12).Begin("apply", "kitchen", before, kNow);
  ::umask(mask);
  for (const std::string& root : {path, folder.Path("others")}) {
    EXPECT_EQ(fs::status(root).permissions(), fs::perms::owner_all);
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root)) {
      const fs::perms open = entry.status().permissions() & (fs::perms::group_all | fs::perms::others_all);
      EXPECT_EQ(open, fs::perms::none) << entry.path();
    }
  }
}

TEST_F(SnapshotsOfADevice, AreApartFromThoseOfOtherDevices) {
  SnapshotFolder kitchen(path, 12);
  kitchen.Begin("apply", "kitchen", before, kNow);
  SnapshotFolder hall(path, 13);
  EXPECT_EQ(hall.Begin("apply", "hall", before, kNow), 1U);
  EXPECT_THAT(Numbers(), ElementsAre(1U));
}

TEST_F(SnapshotsOfADevice, AreInUseByOneAtATime) {
  const SnapshotFolder first(path, 12);
  EXPECT_THAT(OpenError(), HasSubstr("another devhost is at work on this device"));
  EXPECT_THAT(Numbers(), IsEmpty());
}

TEST_F(SnapshotsOfADevice, AreRefusedWhereTheirLockIsSomethingElse) {
  { const SnapshotFolder made(path, 12); }
  const std::string lock = path + "/driver-12/lock";
  fs::remove(lock);
  ASSERT_EQ(::mkfifo(lock.c_str(), 0600), 0);
  EXPECT_THAT(OpenError(), HasSubstr("its file \"lock\" is not a file; allowed: a file with no other name, or none"));
  EXPECT_TRUE(fs::is_fifo(lock));
  fs::remove(lock);
  const std::string precious = folder.Write("precious", "kept");
  fs::create_symlink(precious, lock);
  EXPECT_THAT(OpenError(), HasSubstr("its file \"lock\" is a symbolic link"));
  fs::remove(lock);
  fs::create_hard_link(precious, lock);
  EXPECT_THAT(OpenError(), HasSubstr("its file \"lock\" has a second name (a hard link)"));
  fs::remove(lock);
  fs::create_directory(lock);
  EXPECT_THAT(OpenError(), HasSubstr("its file \"lock\" is a folder"));
  fs::remove(lock);
  EXPECT_EQ(OpenError(), "");
}

TEST_F(SnapshotsOfADevice, HaveALimitOfNumberAndKeepTheirNumbers) {
  SnapshotFolder snapshots(path, 12, {3, 400 * kDay});
  for (int i = 0; i < 5; ++i) {
    snapshots.Begin("apply", "kitchen", before, kNow);
  }
  EXPECT_THAT(Numbers(), ElementsAre(3U, 4U, 5U));
}

TEST_F(SnapshotsOfADevice, HaveALimitOfAge) {
  SnapshotFolder snapshots(path, 12, {100, 2 * kDay});
  snapshots.Begin("apply", "kitchen", before, kNow);
  snapshots.Begin("apply", "kitchen", before, kNow + kDay);
  snapshots.Begin("apply", "kitchen", before, kNow + 2 * kDay);
  EXPECT_THAT(Numbers(), ElementsAre(1U, 2U, 3U));
  snapshots.Begin("apply", "kitchen", before, kNow + 2 * kDay + 1);
  EXPECT_THAT(Numbers(), ElementsAre(2U, 3U, 4U));
}

TEST_F(SnapshotsOfADevice, DoNotCountWhatAKilledProcessHasLeft) {
  SnapshotFolder snapshots(path, 12);
  snapshots.Begin("apply", "kitchen", before, kNow);
  fs::create_directories(path + "/driver-12/2.new/before.conf");
  EXPECT_THAT(Numbers(), ElementsAre(1U));
  EXPECT_EQ(snapshots.Begin("apply", "kitchen", before, kNow), 2U);
  EXPECT_THAT(Numbers(), ElementsAre(1U, 2U));
}

TEST_F(SnapshotsOfADevice, AreRefusedWhereOthersCanReadThem) {
  SnapshotFolder(path, 12).Begin("apply", "kitchen", before, kNow);
  ::chmod(path.c_str(), 0750);
  EXPECT_THAT(ReadError(), HasSubstr("other users can look into the folder"));
  EXPECT_THAT(OpenError(), HasSubstr("allowed: mode 0700"));
}

TEST_F(SnapshotsOfADevice, AreRefusedWhereSomebodyElseCouldHaveWrittenThem) {
  SnapshotFolder(path, 12).Begin("apply", "kitchen", before, kNow);
  ::chmod((path + "/driver-12/1/before.conf").c_str(), 0622);
  EXPECT_THAT(Problems(), ElementsAre(HasSubstr("other users can write it")));
}

TEST_F(SnapshotsOfADevice, SayWhatIsMissing) {
  SnapshotFolder(path, 12).Begin("apply", "kitchen", before, kNow);
  fs::remove(path + "/driver-12/1/before.xml");
  EXPECT_THAT(Problems(), ElementsAre(HasSubstr("driver-12/1\" is damaged: its file before.xml is missing; ")));
}

TEST_F(SnapshotsOfADevice, AreRefusedWhereALaterVersionHasWrittenThem) {
  SnapshotFolder(path, 12).Begin("apply", "kitchen", before, kNow);
  const std::string about = folder.Write("snapshots/driver-12/1/about.xml", "<snapshot format='2' time='1'/>");
  ::chmod(about.c_str(), 0600);
  EXPECT_THAT(Problems(), ElementsAre(HasSubstr("it has the format \"2\", and this version reads the format 1; ")));
}

TEST_F(SnapshotsOfADevice, DoNotShareTheDamageOfOne) {
  SnapshotFolder snapshots(path, 12);
  for (int i = 0; i < 3; ++i) {
    snapshots.Finish(snapshots.Begin("apply", "kitchen", before, kNow), after);
  }
  for (const char* const name : {"about.xml", "before.xml", "after.xml"}) {
    const std::string file = "snapshots/driver-12/2/" + std::string(name);
    const std::string whole = folder.Read(file);
    const std::string damaged = folder.Write(file, "<managedDevice>\n</manag");
    ::chmod(damaged.c_str(), 0600);
    EXPECT_THAT(Problems(), ElementsAre(testing::AllOf(HasSubstr("driver-12/2\" is damaged: its file " + std::string(name) +
                                                                 " is not well-formed XML in line 2: "),
                                                       HasSubstr("rename the folder to leave the snapshot out"))));
    EXPECT_THAT(Numbers(), ElementsAre(1U, 3U)) << name;
    folder.Write(file, whole);
  }
  EXPECT_THAT(Numbers(), ElementsAre(1U, 2U, 3U));
}

TEST_F(SnapshotsOfADevice, LeaveNothingOfOneThatCouldNotBeKept) {
  SnapshotFolder snapshots(path, 12);
  snapshots.Begin("apply", "kitchen", before, kNow);
  fs::create_directory(path + "/driver-12/2");  // seen as a snapshot, so the next is 3
  rlimit limit = {};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &limit), 0);
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  const rlimit small = {4096, limit.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
  const std::string error = ErrorOf([&] {
    snapshots.Begin("apply", "kitchen", {std::string(8192, '#'), before.settings}, kNow);
  });
  ::setrlimit(RLIMIT_FSIZE, &limit);
  std::signal(SIGXFSZ, handler);
  EXPECT_THAT(error, HasSubstr("it cannot be written: "));
  EXPECT_FALSE(fs::exists(path + "/driver-12/3.new"));
  EXPECT_FALSE(fs::exists(path + "/driver-12/3"));
}

TEST_F(SnapshotsOfADevice, AreNotKeptWhereNoNumberIsLeft) {
  SnapshotFolder snapshots(path, 12);
  fs::create_directory(path + "/driver-12/" + std::to_string(std::numeric_limits<unsigned long>::max()));
  EXPECT_THAT(ErrorOf([&] { snapshots.Begin("apply", "kitchen", before, kNow); }),
              HasSubstr(": no number is left after this one; rename the folder to leave the snapshot out"));
  EXPECT_FALSE(fs::exists(path + "/driver-12/0"));
}

}  // namespace
}  // namespace devhost
