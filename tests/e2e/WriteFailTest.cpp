// When a folder cannot be written to, the tool gets an error, and the old file stays intact and is served.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>
#include <vector>

#include "tests/e2e/RealSystem.h"
#include "tests/e2e/World.h"

namespace e2e {
namespace {

namespace fs = std::filesystem;

using AFullDisk = ARealSystem;
using AFolderWithoutWritePermission = ARealSystem;
using ASymbolicLink = ARealSystem;

Settings Named(const std::string& name) {
  Settings settings;
  settings.read = "public";
  settings.name = name;
  return settings;
}

// Fills the rest of a disk, until it is destroyed.
class Filler {
 public:
  explicit Filler(const std::string& folder) : m_path(folder + "/filler") {
    const int file = ::open(m_path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    const std::vector<char> block(4096, 'x');
    while (::write(file, block.data(), block.size()) > 0) {
    }
    ::close(file);
  }
  ~Filler() { fs::remove(m_path); }
  Filler(const Filler&) = delete;
  Filler& operator=(const Filler&) = delete;

 private:
  const std::string m_path;
};

TEST_F(AFullDisk, LeavesTheOldFileWholeAndServed) {
  if (SmallDisk().empty()) {
    GTEST_SKIP() << "no small disk could be mounted here";
  }
  const std::string kitchen = SmallDisk() + "/kitchen";
  fs::create_directory(kitchen);
  LoadAgent();
  LoadDevice(kKitchen, kitchen);
  Serve(kKitchen, Named("kitchen"));
  const std::string before = testsupport::ScratchFolder::ReadFile(kitchen + "/snmpd.conf");
  {
    const Filler filler(SmallDisk());
    EXPECT_EQ(SetState(kKitchen, Named("pantry")), "<WriteFail/>");
    EXPECT_EQ(testsupport::ScratchFolder::ReadFile(kitchen + "/snmpd.conf"), before);
    EXPECT_FALSE(fs::exists(kitchen + "/.snmpd.conf.new"));
    EXPECT_TRUE(IsDirty(kKitchen));
    EXPECT_EQ(As("public").Get(kSysName).value, "kitchen");
  }
  EXPECT_EQ(SetState(kKitchen, Named("pantry")), "<Success/>");
  EXPECT_EQ(As("public").Get(kSysName).value, "pantry");
  RestartHost();
  fs::remove_all(kitchen);
}

TEST_F(AFolderWithoutWritePermission, LeavesTheOldFileWholeAndServed) {
  if (IsRoot()) {
    GTEST_SKIP() << "root may write into every folder";
  }
  Begin();
  Serve(kKitchen, Named("kitchen"));
  const std::string before = File(kKitchen);
  fs::permissions(folder.Path("kitchen"), fs::perms(0555));
  EXPECT_EQ(SetState(kKitchen, Named("pantry")), "<WriteFail/>");
  EXPECT_EQ(File(kKitchen), before);
  EXPECT_EQ(As("public").Get(kSysName).value, "kitchen");
  fs::permissions(folder.Path("kitchen"), fs::perms(0755));
  EXPECT_EQ(SetState(kKitchen, Named("pantry")), "<Success/>");
  EXPECT_EQ(As("public").Get(kSysName).value, "pantry");
}

TEST_F(ASymbolicLink, AsTheFileStaysALinkToTheOldText) {
  MakeDevice(kKitchen, "# unused\n");
  const std::string old = "rocommunity owner\nsysName by hand\n";
  const std::string target = folder.Write("elsewhere.conf", old);
  fs::remove(folder.Path("kitchen/snmpd.conf"));
  fs::create_symlink(target, folder.Path("kitchen/snmpd.conf"));
  LoadAgent();
  LoadDevice(kKitchen);
  EXPECT_EQ(SetState(kKitchen, Named("pantry")), "<WriteFail/>");
  EXPECT_TRUE(fs::is_symlink(folder.Path("kitchen/snmpd.conf")));
  EXPECT_EQ(testsupport::ScratchFolder::ReadFile(target), old);
  EXPECT_TRUE(IsDirty(kKitchen));
  ASSERT_EQ(Action(kKitchen, "StartMasterAgent"), "<Success/>");
  EXPECT_EQ(As("owner").Get(kSysName).value, "by hand");
}

}  // namespace
}  // namespace e2e
