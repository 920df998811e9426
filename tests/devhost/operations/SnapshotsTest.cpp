#include "devhost/operations/Snapshots.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
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
    for (const Snapshot& snapshot : ReadSnapshots(path, 12)) {
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
  std::string OpenError() const {
    return ErrorOf([this] { SnapshotFolder(path, 12); });
  }

  const testsupport::ScratchFolder folder;
  const std::string path = folder.Path("snapshots");
  const DeviceCopy before{std::string("a\0b\xff\r\n", 6), "<managedDevice/>\n"};
  const DeviceCopy after{"", "<managedDevice><deviceId>12</deviceId></managedDevice>\n"};
};

TEST_F(SnapshotsOfADevice, AreNoneWithoutAFolderAndMakeNone) {
  EXPECT_THAT(ReadSnapshots(path, 12), IsEmpty());
  EXPECT_FALSE(fs::exists(path));
}

TEST_F(SnapshotsOfADevice, ComeBackByteForByte) {
  {
    SnapshotFolder snapshots(path, 12);
    EXPECT_EQ(snapshots.Begin("undo 3", "kitchen", before, kNow), 1U);
    EXPECT_EQ(snapshots.Begin("apply", "kitchen", after, kNow + 1), 2U);
    snapshots.Finish(1, after);
  }
  const std::vector<Snapshot> read = ReadSnapshots(path, 12);
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
  EXPECT_THAT(ReadSnapshots(path, 12), IsEmpty());
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
  EXPECT_THAT(ReadError(), HasSubstr("other users can write it"));
}

TEST_F(SnapshotsOfADevice, SayWhatIsMissing) {
  SnapshotFolder(path, 12).Begin("apply", "kitchen", before, kNow);
  fs::remove(path + "/driver-12/1/before.xml");
  EXPECT_THAT(ReadError(), HasSubstr("driver-12/1\": its file before.xml is missing"));
}

}  // namespace
}  // namespace devhost
