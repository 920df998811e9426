#include "devhost/fleet/FleetRecord.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using testing::HasSubstr;
using testing::Not;

class ARecord : public testing::Test {
 protected:
  std::string Refusal(bool resumes) const {
    try {
      const FleetRecord record(path, resumes);
    } catch (const RecordError& error) {
      return error.what();
    }
    return "";
  }

  const testsupport::ScratchFolder folder;
  const std::string path = folder.Path("record");
  const std::string key = FleetRecord::KeyOf("a project.xml", "kitchen", "<settings>hidden1</settings>");
};

TEST_F(ARecord, RemembersWhatIsDone) {
  {
    FleetRecord record(path, false);
    EXPECT_FALSE(record.Has(key));
    record.Add(key);
  }
  const FleetRecord record(path, true);
  EXPECT_TRUE(record.Has(key));
  EXPECT_FALSE(record.Has(FleetRecord::KeyOf("a project.xml", "attic", "<settings>hidden1</settings>")));
}

TEST_F(ARecord, KnowsThatSettingsHaveChanged) {
  FleetRecord record(path, false);
  record.Add(key);
  EXPECT_FALSE(record.Has(FleetRecord::KeyOf("a project.xml", "kitchen", "<settings>hidden2</settings>")));
}

TEST_F(ARecord, NamesAFolderThatIsMissing) {
  try {
    const FleetRecord record(folder.Path("nodir/record"), false);
    FAIL();
  } catch (const RecordError& error) {
    EXPECT_THAT(error.what(), HasSubstr("its folder is not there; allowed: a file in a folder that exists"));
  }
}

TEST_F(ARecord, HoldsNoSettingsAndIsForItsUserAlone) {
  const mode_t before = ::umask(0);
  FleetRecord(path, false).Add(key);
  ::umask(before);
  struct stat status = {};
  ::stat(path.c_str(), &status);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
  EXPECT_THAT(folder.Read("record"), Not(HasSubstr("hidden")));
}

TEST_F(ARecord, DoesNotCountALineThatWasTorn) {
  FleetRecord(path, false).Add(key);
  const std::string whole = folder.Read("record");
  folder.Write("record", whole + key.substr(0, 9));
  {
    FleetRecord record(path, true);
    EXPECT_FALSE(record.Has(key.substr(0, 9)));
    record.Add("another");
  }
  const FleetRecord record(path, true);
  EXPECT_TRUE(record.Has(key));
  EXPECT_TRUE(record.Has("another"));
}

TEST_F(ARecord, OfAnEarlierRunIsNotOverwritten) {
  FleetRecord(path, false).Add(key);
  EXPECT_THAT(Refusal(false), HasSubstr("an earlier run has not come to its end; allowed: --resume, or another file"));
  EXPECT_TRUE(FleetRecord(path, true).Has(key));
}

TEST_F(ARecord, ThatIsNotThereCannotBeResumed) {
  EXPECT_THAT(Refusal(true), HasSubstr("it is not there"));
}

TEST_F(ARecord, IsUsedByOneRunAtATime) {
  const FleetRecord record(path, false);
  EXPECT_THAT(Refusal(true), HasSubstr("another run is using it"));
}

TEST_F(ARecord, ThatIsSomethingElseIsRefused) {
  folder.Write("record", "a letter\n");
  ASSERT_EQ(::chmod(path.c_str(), 0600), 0);
  EXPECT_THAT(Refusal(true), HasSubstr("it is not a record of devhost fleet"));
  ASSERT_EQ(::chmod(path.c_str(), 0666), 0);
  EXPECT_THAT(Refusal(true), HasSubstr("others could have written it"));
  std::filesystem::remove(path);
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  EXPECT_THAT(Refusal(true), HasSubstr("it is not a file"));
}

TEST_F(ARecord, IsGoneWhenAllIsDone) {
  FleetRecord record(path, false);
  record.Remove();
  EXPECT_FALSE(std::filesystem::exists(path));
}

}  // namespace
}  // namespace devhost
