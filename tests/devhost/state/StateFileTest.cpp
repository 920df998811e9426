#include "devhost/state/StateFile.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "devhost/state/StateStore.h"
#include "devhost/system/FileDescriptor.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

namespace fs = std::filesystem;

// Lets files grow no further than this.
class FullDisk {
 public:
  explicit FullDisk(rlim_t size) : m_handler(::signal(SIGXFSZ, SIG_IGN)) {
    ::getrlimit(RLIMIT_FSIZE, &m_was);
    const struct rlimit limit = {size, m_was.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FullDisk() {
    ::setrlimit(RLIMIT_FSIZE, &m_was);
    ::signal(SIGXFSZ, m_handler);
  }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;

 private:
  void (*m_handler)(int);
  struct rlimit m_was = {};
};

class AStateFile : public testing::Test {
 protected:
  // What is thrown, or "".
  template <class Action>
  static std::string ErrorOf(Action action) {
    try {
      action();
    } catch (const StateError& error) {
      return error.what();
    }
    return "";
  }
  std::string ErrorOfReading() const {
    return ErrorOf([this] { ReadStateFile(open.Get(), "a"); });
  }

  const testsupport::ScratchFolder folder;
  const FileDescriptor open{::open(folder.Path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
};

TEST_F(AStateFile, IsReadWholeOrIsNotThere) {
  EXPECT_EQ(ReadStateFile(open.Get(), "a"), std::nullopt);
  folder.Write("a", "");
  EXPECT_EQ(ReadStateFile(open.Get(), "a"), "");
  folder.Write("a", "text\n");
  EXPECT_EQ(ReadStateFile(open.Get(), "a"), "text\n");
}

TEST_F(AStateFile, IsNotReadThroughALink) {
  folder.Write("mine", "precious");
  fs::create_symlink("mine", folder.Path("a"));
  EXPECT_EQ(ErrorOfReading(), "it is a symbolic link");
  fs::remove(folder.Path("mine"));
  EXPECT_EQ(ErrorOfReading(), "it is a symbolic link");
}

TEST_F(AStateFile, IsNotAFolder) {
  folder.Write("a/inside", "x");
  EXPECT_EQ(ErrorOfReading(), "Is a directory");
}

TEST_F(AStateFile, IsNotAPipeThatItsReaderWouldWaitFor) {
  ASSERT_EQ(::mkfifo(folder.Path("a").c_str(), 0600), 0);
  EXPECT_EQ(ErrorOfReading(), "it is not a regular file");
}

TEST_F(AStateFile, IsForItsOwnerAlone) {
  ReplaceStateFile(open.Get(), "a", "new");
  EXPECT_EQ(folder.Read("a"), "new");
  EXPECT_EQ(fs::status(folder.Path("a")).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(AStateFile, TakesThePlaceOfWhatAKilledHostHasLeft) {
  folder.Write("a.new", "half a sta");
  ReplaceStateFile(open.Get(), "a", "new");
  EXPECT_EQ(folder.Read("a"), "new");
  EXPECT_FALSE(fs::exists(folder.Path("a.new")));
}

TEST_F(AStateFile, IsNotWrittenThroughALinkThatSomebodyElseHasPutThere) {
  folder.Write("mine", "precious");
  fs::create_symlink("mine", folder.Path("a.new"));
  fs::create_symlink("mine", folder.Path("a"));
  ReplaceStateFile(open.Get(), "a", "new");
  EXPECT_EQ(folder.Read("mine"), "precious");
  EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(folder.Path("a"))));
}

TEST_F(AStateFile, StaysTheOldOneWhenTheDiskIsFull) {
  folder.Write("a", "old");
  {
    const FullDisk disk(100);
    EXPECT_EQ(ErrorOf([this] { ReplaceStateFile(open.Get(), "a", std::string(1000, 'x')); }),
              "it cannot be written: File too large");
  }
  EXPECT_EQ(folder.Read("a"), "old");
  EXPECT_FALSE(fs::exists(folder.Path("a.new")));
}

TEST_F(AStateFile, IsRemovedWhenItIsThere) {
  folder.Write("a", "old");
  RemoveStateFile(open.Get(), "a");
  EXPECT_FALSE(fs::exists(folder.Path("a")));
  EXPECT_NO_THROW(RemoveStateFile(open.Get(), "a"));
  folder.Write("b/inside", "x");
  EXPECT_EQ(ErrorOf([this] { RemoveStateFile(open.Get(), "b"); }), "it cannot be removed: Is a directory");
}

TEST_F(AStateFile, IsPutAsideUnderANameOfItsOwn) {
  for (const char* const name : {"a.damaged", "a.damaged-2", "a.damaged-3"}) {
    folder.Write("a", name);
    EXPECT_EQ(PutStateFileAside(open.Get(), "a"), name);
    EXPECT_EQ(folder.Read(name), name);
  }
  EXPECT_EQ(ErrorOf([this] { PutStateFileAside(open.Get(), "a"); }), "it cannot be put aside: No such file or directory");
}

}  // namespace
}  // namespace devhost
