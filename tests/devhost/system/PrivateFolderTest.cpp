#include "devhost/system/PrivateFolder.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

namespace fs = std::filesystem;
using testsupport::ScratchFolder;

// Lets temporary files lie somewhere else.
class TemporaryPlace {
 public:
  explicit TemporaryPlace(const std::string& path) { ::setenv("TMPDIR", path.c_str(), 1); }
  ~TemporaryPlace() { ::unsetenv("TMPDIR"); }
  TemporaryPlace(const TemporaryPlace&) = delete;
  TemporaryPlace& operator=(const TemporaryPlace&) = delete;
};

TEST(APrivateFolder, IsForThisUserAloneAndGoesWithAllThatIsInIt) {
  const ScratchFolder scratch;
  const TemporaryPlace place(scratch.Path());
  {
    const PrivateFolder folder;
    EXPECT_EQ(fs::path(folder.Path()).parent_path(), scratch.Path());
    EXPECT_EQ(fs::status(folder.Path()).permissions(), fs::perms::owner_all);
    EXPECT_EQ(folder.Write("a", "text\n"), folder.PathOf("a"));
    EXPECT_EQ(ScratchFolder::ReadFile(folder.PathOf("a")), "text\n");
    EXPECT_EQ(fs::status(folder.PathOf("a")).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    fs::create_directories(folder.PathOf("b/c"));
  }
  EXPECT_TRUE(fs::is_empty(scratch.Path()));
}

TEST(APrivateFolder, LiesInTmpWhenTheNamedPlaceIsNoFolder) {
  const TemporaryPlace place("/nowhere");
  const PrivateFolder folder;
  EXPECT_EQ(fs::path(folder.Path()).parent_path(), "/tmp");
}

TEST(APrivateFolder, SaysWhereItCannotBeMade) {
  const TemporaryPlace place("/proc");
  try {
    const PrivateFolder folder;
    FAIL();
  } catch (const FolderError& error) {
    EXPECT_THAT(error.what(), testing::AllOf(testing::StartsWith("cannot make the temporary folder \"/proc/devhost-"),
                                             testing::EndsWith("; the environment variable TMPDIR may name another place")));
  }
}

TEST(APrivateFolder, SaysWhichFileCannotBeWritten) {
  const PrivateFolder folder;
  folder.Write("a", "");
  try {
    folder.Write("a", "again");
    FAIL();
  } catch (const FolderError& error) {
    EXPECT_EQ(error.what(), "cannot write the temporary file \"" + folder.PathOf("a") + "\": File exists");
  }
}

}  // namespace
}  // namespace devhost
