#include "drivers/common/WriterLock.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <functional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "drivers/common/ConfigFile.h"
#include "drivers/common/FileStatus.h"
#include "tests/drivers/support/Child.h"
#include "tests/drivers/support/ScriptedFileCalls.h"
#include "tests/drivers/support/TemporaryFolder.h"

namespace {

using drivers::FileCalls;
using drivers::FileDescriptor;
using drivers::FileStatusOfErrno;
using drivers::WriterLock;

class AWriterLock : public ::testing::Test {
 protected:
  std::string Path() const { return m_folder.Path(".snmpd.conf.lock"); }

  const TemporaryFolder m_folder;
  FileCalls m_calls;
  const FileDescriptor m_open{m_calls, m_calls.OpenFolder(m_folder.Path().c_str())};
};

TEST_F(AWriterLock, KeepsASecondWriterOutAndIsGoneWithTheFirst) {
  {
    WriterLock first(m_calls, m_open.Get());
    EXPECT_EQ(0, first.Take());
    struct stat attributes = {};
    EXPECT_EQ(0, ::stat(Path().c_str(), &attributes));
    EXPECT_EQ(mode_t{0600}, attributes.st_mode & 07777);
    WriterLock second(m_calls, m_open.Get());
    EXPECT_EQ(FileStatusOfErrno(EWOULDBLOCK), second.Take());
  }
  EXPECT_TRUE(m_folder.Names().empty());
}

// Another user can open the folder, and so lock it, as long as it is not closed to others.
TEST_F(AWriterLock, IsNotHeldUpByALockOnTheFolder) {
  const FileDescriptor other(m_calls, m_calls.OpenFolder(m_folder.Path().c_str()));
  ASSERT_EQ(0, ::flock(other.Get(), LOCK_EX));
  m_folder.Write("snmpd.conf", "old");
  EXPECT_EQ(0, drivers::ConfigFile(m_folder.Path()).Replace("new"));
  EXPECT_EQ(0, drivers::ConfigFile(m_folder.Path()).ReplaceExpected("new", "newer"));
  EXPECT_EQ("newer", m_folder.Read("snmpd.conf"));
}

TEST_F(AWriterLock, TakesOverWhatAKilledWriterLeft) {
  m_folder.Write(".snmpd.conf.lock", "");
  {
    WriterLock lock(m_calls, m_open.Get());
    EXPECT_EQ(0, lock.Take());
  }
  EXPECT_TRUE(m_folder.Names().empty());
}

TEST_F(AWriterLock, IsTakenAgainWhereTheFormerWriterRemovedItMeanwhile) {
  ScriptedFileCalls calls;
  int locks = 0;
  calls.script = [&](const std::string& name, std::size_t) {
    locks += name == "Lock" ? 1 : 0;
    if (name == "Lock" && locks < 3) {
      std::filesystem::remove(Path());
      if (locks == 2) {
        m_folder.Write(".snmpd.conf.lock", "the next one's");
      }
    }
    return 0;
  };
  WriterLock lock(calls, m_open.Get());
  EXPECT_EQ(0, lock.Take());
  EXPECT_EQ(3, locks);
  WriterLock second(m_calls, m_open.Get());
  EXPECT_EQ(FileStatusOfErrno(EWOULDBLOCK), second.Take());
}

TEST_F(AWriterLock, IsRefusedWhereItsNameIsThatOfSomethingElseAndLeavesItThere) {
  m_folder.Write("precious", "kept");
  const std::vector<std::function<void()>> makers = {
      [this] { std::filesystem::create_symlink("precious", Path()); },
      [this] { std::filesystem::create_symlink("nothing", Path()); }, [this] { std::filesystem::create_directory(Path()); },
      [this] { ASSERT_EQ(0, ::mkfifo(Path().c_str(), 0600)); },
      [this] {
        struct sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        Path().copy(address.sun_path, sizeof address.sun_path - 1);
        const FileDescriptor made(m_calls, ::socket(AF_UNIX, SOCK_STREAM, 0));
        const auto* const general = reinterpret_cast<const struct sockaddr*>(&address);
        ASSERT_EQ(0, ::bind(made.Get(), general, sizeof address));
      }};
  for (const std::function<void()>& make : makers) {
    make();
    EXPECT_EQ(drivers::kLockUnusable, WriterLock(m_calls, m_open.Get()).Take());
    EXPECT_EQ((std::set<std::string>{"precious", ".snmpd.conf.lock"}), m_folder.Names());
    std::filesystem::remove(Path());
  }
  EXPECT_EQ("kept", m_folder.Read("precious"));
}

TEST_F(AWriterLock, IsRefusedWhereItIsAnotherUsersFile) {
  m_folder.Write(".snmpd.conf.lock", "");
  ASSERT_EQ(0, ::chmod(Path().c_str(), 0));
  ASSERT_EQ(0, ::chmod(m_folder.Path().c_str(), 0777));
  EXPECT_EQ(drivers::kLockUnusable, ResultAsOrdinaryUser([this] { return WriterLock(m_calls, m_open.Get()).Take(); }));
}

TEST_F(AWriterLock, HasOneHolderAtATime) {
  std::atomic<int> holders{0};
  std::atomic<int> most{0};
  std::atomic<int> taken{0};
  std::vector<std::thread> writers;
  writers.reserve(4);
  for (int writer = 0; writer != 4; ++writer) {
    writers.emplace_back([&] {
      for (int round = 0; round != 5000; ++round) {
        WriterLock lock(m_calls, m_open.Get());
        if (lock.Take() == 0) {
          const int now = ++holders;
          most = now > most ? now : most.load();
          ++taken;
          --holders;
        }
      }
    });
  }
  for (std::thread& writer : writers) {
    writer.join();
  }
  EXPECT_EQ(1, most);
  EXPECT_GT(taken, 0);
  EXPECT_TRUE(m_folder.Names().empty());
}

}  // namespace
