#include "devhost/conform/PrivateFolder.h"

#include <gtest/gtest.h>

#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <thread>

#include "tests/devhost/conform/Conforming.h"

namespace devhost {
namespace {

// Where temporary files are for as long as one of these lives.
class TemporaryFiles {
 public:
  TemporaryFiles() : m_usual(std::getenv("TMPDIR") != nullptr ? std::getenv("TMPDIR") : "/tmp") {
    ::setenv("TMPDIR", m_folder.Path().c_str(), 1);
  }
  ~TemporaryFiles() { ::setenv("TMPDIR", m_usual.c_str(), 1); }
  TemporaryFiles(const TemporaryFiles&) = delete;
  TemporaryFiles& operator=(const TemporaryFiles&) = delete;

  // Waits for that.
  bool Become(bool empty) const {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (std::filesystem::is_empty(m_folder.Path()) != empty && std::chrono::steady_clock::now() < end) {
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return std::filesystem::is_empty(m_folder.Path()) == empty;
  }

 private:
  const testsupport::ScratchFolder m_folder;
  const std::string m_usual;
};

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

class ASignal : public testing::TestWithParam<int> {};

TEST_P(ASignal, ThatEndsTheProgramLeavesNoFolder) {
  const TemporaryFiles files;
  const std::string module = SkeletonModule("hangs");
  const pid_t program = ::fork();
  ASSERT_GE(program, 0);
  if (program == 0) {
#ifdef CONFORM_EMULATOR
    ::execlp(CONFORM_EMULATOR, CONFORM_EMULATOR, DEVHOST_PROGRAM, "conform", "--runner", CONFORM_EMULATOR, "--only",
             "settings-kept", "--output", "/dev/null", module.c_str(), static_cast<char*>(nullptr));
#else
    ::execl(DEVHOST_PROGRAM, DEVHOST_PROGRAM, "conform", "--only", "settings-kept", "--output", "/dev/null", module.c_str(),
            static_cast<char*>(nullptr));
#endif
    ::_exit(127);
  }
  const bool hasFolder = files.Become(false);
  // Some time, so that there is a driver at work.
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  ::kill(program, GetParam());
  int status = 0;
  ::waitpid(program, &status, 0);
  EXPECT_TRUE(hasFolder);
  EXPECT_EQ(WTERMSIG(status), GetParam());
  EXPECT_TRUE(files.Become(true));
}

INSTANTIATE_TEST_SUITE_P(OfEachKind, ASignal, testing::Values(SIGINT, SIGTERM, SIGHUP, SIGKILL));

}  // namespace
}  // namespace devhost
