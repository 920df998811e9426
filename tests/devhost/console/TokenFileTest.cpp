#include "devhost/console/TokenFile.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <filesystem>
#include <stdexcept>

#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

unsigned ModeOf(const std::string& path) {
  struct stat status = {};
  return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
}

TEST(ATokenFile, IsForItsOwnerAloneAndGoesWithItsObject) {
  const testsupport::ScratchFolder folder;
  {
    const TokenFile file(folder.Path("token"), "text\n");
    EXPECT_EQ(folder.Read("token"), "text\n");
    EXPECT_EQ(ModeOf(folder.Path("token")), 0600U);
  }
  EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

std::string WhyNotMade(const std::string& path) {
  try {
    const TokenFile file(path, "new");
    return "";
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

TEST(ATokenFile, TakesThePlaceOfNoFileThatIsThere) {
  const testsupport::ScratchFolder folder;
  folder.Write("token", "somebody's work");
  EXPECT_EQ(WhyNotMade(folder.Path("token")),
            "cannot write \"" + folder.Path("token") +
                "\": there is a file of that name already, perhaps of a console that was killed; remove it, or name another "
                "one");
  EXPECT_EQ(folder.Read("token"), "somebody's work");
}

TEST(ATokenFile, TakesThePlaceOfNoLinkThatLiesThere) {
  const testsupport::ScratchFolder folder;
  folder.Write("target", "old");
  for (const char* const target : {"target", "nothing"}) {
    std::filesystem::create_symlink(target, folder.Path("token"));
    EXPECT_NE(WhyNotMade(folder.Path("token")), "") << target;
    EXPECT_TRUE(std::filesystem::is_symlink(folder.Path("token"))) << target;
    std::filesystem::remove(folder.Path("token"));
  }
  EXPECT_EQ(folder.Read("target"), "old");
  EXPECT_FALSE(std::filesystem::exists(folder.Path("nothing")));
}

TEST(ATokenFile, LeavesAFileThatHasTakenItsPlace) {
  const testsupport::ScratchFolder folder;
  {
    const TokenFile file(folder.Path("token"), "text");
    std::filesystem::remove(folder.Path("token"));
    folder.Write("token", "somebody's work");
  }
  EXPECT_EQ(folder.Read("token"), "somebody's work");
}

TEST(ATokenFile, ThatCannotBeWrittenIsNotLeftBehind) {
  const testsupport::ScratchFolder folder;
  struct rlimit before = {};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
  struct rlimit none = before;
  none.rlim_cur = 0;
  const auto handler = ::signal(SIGXFSZ, SIG_IGN);
  ::setrlimit(RLIMIT_FSIZE, &none);
  const std::string reason = WhyNotMade(folder.Path("token"));
  ::setrlimit(RLIMIT_FSIZE, &before);
  ::signal(SIGXFSZ, handler);
  EXPECT_NE(reason, "");
  EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

TEST(ATokenFile, ThatCannotBeMadeIsAnErrorThatNamesIt) {
  try {
    const TokenFile file("/no/such/folder/token", "text");
    FAIL();
  } catch (const std::runtime_error& error) {
    EXPECT_NE(std::string(error.what()).find("/no/such/folder/token"), std::string::npos) << error.what();
  }
}

}  // namespace
}  // namespace devhost
