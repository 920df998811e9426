#include "drivers/localsnmpd/DaemonFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "tests/drivers/support/Child.h"
#include "tests/drivers/support/TemporaryFolder.h"

namespace {

using drivers::DaemonFolder;

const char kInUse[] = "/daemon is in use by another device; give each device a folder of its own";

TEST(ADaemonsFolder, IsNeverGivenUpForAMoment) {
  const TemporaryFolder folder;
  DaemonFolder first(folder.Path());
  DaemonFolder second(folder.Path());
  ASSERT_EQ("", first.Prepare());
  const devhost::FileDescriptor lock(::open(folder.Path("daemon/lock").c_str(), O_RDONLY | O_CLOEXEC));
  struct stat attributes = {};
  ASSERT_EQ(0, ::fstat(lock.Get(), &attributes));
  EXPECT_EQ(mode_t{0600}, attributes.st_mode & 07777);
  for (int time = 0; time < 3; ++time) {
    // Whoever waits for the lock gets it as soon as it is given up, were it for a moment.
    const pid_t waiting = ::fork();
    if (waiting == 0) {
      ::alarm(1);
      const devhost::FileDescriptor own(::open(folder.Path("daemon/lock").c_str(), O_RDONLY | O_CLOEXEC));
      ::_exit(::flock(own.Get(), LOCK_EX) == 0 ? 1 : 2);
    }
    ::usleep(100000);
    EXPECT_EQ("", first.Prepare());
    int status = 0;
    EXPECT_EQ(waiting, ::waitpid(waiting, &status, 0));
    EXPECT_TRUE(WIFSIGNALED(status)) << status;
    EXPECT_EQ(folder.Path() + kInUse, second.Prepare());
  }
}

TEST(ADaemonsFolder, IsNotHeldUpByALockOnTheFolderItself) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder.Path("daemon"));
  const devhost::FileDescriptor other(::open(folder.Path("daemon").c_str(), O_RDONLY | O_CLOEXEC));
  ASSERT_EQ(0, ::flock(other.Get(), LOCK_EX));
  EXPECT_EQ("", DaemonFolder(folder.Path()).Prepare());
}

TEST(ADaemonsFolder, ThatWasReplacedIsLockedAnew) {
  const TemporaryFolder folder;
  DaemonFolder first(folder.Path());
  ASSERT_EQ("", first.Prepare());
  std::filesystem::remove_all(folder.Path("daemon"));
  ASSERT_EQ("", first.Prepare());
  EXPECT_EQ(folder.Path() + kInUse, DaemonFolder(folder.Path()).Prepare());
}

TEST(ADaemonsFolder, TakesNothingButAFileForItsLockOrItsData) {
  const TemporaryFolder folder;
  folder.Write("precious", "kept");
  std::filesystem::create_directory(folder.Path("daemon"));
  const std::string lock = folder.Path("daemon/lock");
  const std::vector<std::function<void()>> makers = {
      [&] { std::filesystem::create_symlink(folder.Path("precious"), lock); },
      [&] { std::filesystem::create_directory(lock); },
      [&] { ASSERT_EQ(0, ::mkfifo(lock.c_str(), 0600)); },
  };
  for (const std::function<void()>& make : makers) {
    make();
    EXPECT_EQ(lock + " is not a regular file; remove it, it is made anew", DaemonFolder(folder.Path()).Prepare());
    std::filesystem::remove(lock);
  }
  DaemonFolder daemon(folder.Path());
  ASSERT_EQ("", daemon.Prepare());
  folder.Write("stored", "engineBoots 3\noldEngineID 0x80001f88801e\n");
  std::filesystem::create_symlink(folder.Path("stored"), folder.Path("daemon/data/snmpd.conf"));
  EXPECT_EQ("", daemon.KeepData());
  EXPECT_FALSE(std::filesystem::exists(folder.Path("daemon/kept/snmpd.conf")));
}

TEST(ADaemonsData, IsKeptInPartAndStaysWhenTheDaemonStoredNoneAfterwards) {
  const TemporaryFolder folder;
  DaemonFolder daemon(folder.Path());
  ASSERT_EQ("", daemon.Prepare());
  EXPECT_EQ("", daemon.KeepData());
  const std::string engine = "engineBoots 3\noldEngineID 0x80001f88801e\n";
  folder.Write("daemon/data/snmpd.conf", "psyscontact x\nextend x /bin/true\n" + engine);
  EXPECT_EQ("", daemon.KeepData());
  EXPECT_EQ(engine + "psyscontact x\n", folder.Read("daemon/kept/snmpd.conf"));
  folder.Write("daemon/data/snmpd.conf", "");
  EXPECT_EQ("", daemon.KeepData());
  EXPECT_EQ(engine + "psyscontact x\n", folder.Read("daemon/kept/snmpd.conf"));
}

TEST(ADaemonsData, StaysWhenTheNextCannotBeWritten) {
  const TemporaryFolder folder;
  DaemonFolder daemon(folder.Path());
  ASSERT_EQ("", daemon.Prepare());
  const std::string engine = "engineBoots 3\noldEngineID 0x80001f88801e\n";
  folder.Write("daemon/data/snmpd.conf", engine);
  ASSERT_EQ("", daemon.KeepData());
  folder.Write("daemon/data/snmpd.conf", engine + "psyscontact x\n");
  Child child([&] {
    ::signal(SIGXFSZ, SIG_IGN);
    const struct rlimit limit = {10, 10};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    return daemon.KeepData() == "cannot write " + folder.Path("daemon/kept/snmpd.conf") + ": File too large" ? 0 : 1;
  });
  EXPECT_EQ(0, child.Result());
  EXPECT_EQ(engine, folder.Read("daemon/kept/snmpd.conf"));
  EXPECT_FALSE(std::filesystem::exists(folder.Path("daemon/kept/snmpd.conf.new")));
}

class ADaemonsLog : public testing::Test {
 protected:
  ADaemonsLog() { EXPECT_EQ("", m_daemon.Prepare()); }

  void Write(const std::string& text) const {
    EXPECT_EQ(static_cast<ssize_t>(text.size()), ::write(m_daemon.GetLog().Get(), text.data(), text.size()));
  }

  const TemporaryFolder m_folder;
  DaemonFolder m_daemon{m_folder.Path()};
};

TEST_F(ADaemonsLog, IsReadWholeAndHasNoName) {
  Write("first\n");
  Write("no line feed");
  EXPECT_EQ("first\nno line feed", m_daemon.ReadLog());
  EXPECT_FALSE(std::filesystem::exists(m_folder.Path("daemon/log")));
}

TEST_F(ADaemonsLog, IsEmptyAtTheNextStart) {
  Write("first\n");
  ASSERT_EQ("", m_daemon.Prepare());
  EXPECT_EQ("", m_daemon.ReadLog());
}

// Half of a secret would be shown.
TEST_F(ADaemonsLog, IsReadUpToItsLastWholeLineWhenItIsLong) {
  const std::string start(1000000, 'a');
  Write(start + "\n" + std::string(100000, 'b') + "\n");
  EXPECT_EQ(start + "\n", m_daemon.ReadLog());
}

TEST_F(ADaemonsLog, ThatIsOneLongLineIsNotRead) {
  Write(std::string(2000000, 'c'));
  EXPECT_EQ("", m_daemon.ReadLog());
}

}  // namespace
