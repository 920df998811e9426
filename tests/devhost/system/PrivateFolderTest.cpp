#include "devhost/system/PrivateFolder.h"

#include <gtest/gtest.h>

#include <stdlib.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

#include "tests/devhost/support/TemporaryFiles.h"

namespace devhost {
namespace {

TEST(APrivateFolder, IsGoneAfterwardsWithAllThatIsInIt) {
  const TemporaryFiles files;
  {
    const PrivateFolder folder;
    const PrivateFolder another;
    EXPECT_NE(folder.Path(), another.Path());
    std::filesystem::create_directory(folder.Path() + "/device12");
    std::ofstream(folder.Path() + "/device12/snmpd.conf") << "sysName kitchen";
    EXPECT_FALSE(std::filesystem::is_empty(folder.Path()));
  }
  EXPECT_TRUE(files.Become(true));
}

TEST(APrivateFolder, ThatCannotBeMadeIsAnError) {
  const TemporaryFiles files;
  const std::string usual = std::getenv("TMPDIR");
  ::setenv("TMPDIR", "/proc/self", 1);
  EXPECT_THROW(const PrivateFolder folder, std::system_error);
  ::setenv("TMPDIR", usual.c_str(), 1);
}

}  // namespace
}  // namespace devhost
