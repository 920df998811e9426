#include "drivers/common/ConfigFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "drivers/common/FileStatus.h"
#include "tests/drivers/support/AccessList.h"
#include "tests/drivers/support/Child.h"
#include "tests/drivers/support/ScriptedFileCalls.h"
#include "tests/drivers/support/TemporaryFolder.h"

namespace {

using drivers::ConfigFile;
using drivers::FileStatusOfErrno;
using drivers::kFileIsNotRegular;
using drivers::kFileIsSymbolicLink;
using drivers::kFileWasChanged;

const std::set<std::string> kOnlyTheFile = {"snmpd.conf"};

mode_t ModeOf(const std::string& path) {
  struct stat attributes = {};
  EXPECT_EQ(0, ::stat(path.c_str(), &attributes)) << path;
  return attributes.st_mode & 07777;
}

// Sets the process's umask for one test.
class Umask {
 public:
  explicit Umask(mode_t mask) : m_former(::umask(mask)) {}
  ~Umask() { ::umask(m_former); }

 private:
  mode_t m_former;
};

TEST(AMissingFile, ReadsAsTheEmptyText) {
  const TemporaryFolder folder;
  std::string text = "left over";
  EXPECT_EQ(0, ConfigFile(folder.Path()).Read(text));
  EXPECT_EQ("", text);
  EXPECT_TRUE(folder.Names().empty());
}

TEST(AMissingFile, IsMadeForItsOwnerOnlyWhateverTheUmask) {
  for (const mode_t mask : {mode_t{0}, mode_t{077}, mode_t{0777}}) {
    const TemporaryFolder folder;
    const Umask umask(mask);
    EXPECT_EQ(0, ConfigFile(folder.Path()).Replace("rocommunity  public\n"));
    EXPECT_EQ("rocommunity  public\n", folder.Read("snmpd.conf"));
    EXPECT_EQ(mode_t{0600}, ModeOf(folder.Path("snmpd.conf")));
    EXPECT_EQ(kOnlyTheFile, folder.Names());
  }
}

TEST(AMissingFile, IsLeftToTheOwnerThatTheSystemGivesIt) {
  const TemporaryFolder folder;
  const auto calls = std::make_shared<ScriptedFileCalls>();
  EXPECT_EQ(0, ConfigFile(folder.Path(), calls).Replace("new"));
  EXPECT_TRUE(calls->owners.empty());
}

TEST(AMissingFolder, FailsBothWaysAndIsNotMade) {
  const TemporaryFolder folder;
  const ConfigFile file(folder.Path("kitchen"));
  std::string text = "kept";
  EXPECT_EQ(FileStatusOfErrno(ENOENT), file.Read(text));
  EXPECT_EQ("kept", text);
  EXPECT_EQ(FileStatusOfErrno(ENOENT), file.Replace("new"));
  EXPECT_TRUE(folder.Names().empty());
}

TEST(AFileInPlaceOfTheFolder, FailsBothWays) {
  const TemporaryFolder folder;
  folder.Write("kitchen", "");
  const ConfigFile file(folder.Path("kitchen"));
  std::string text;
  EXPECT_EQ(FileStatusOfErrno(ENOTDIR), file.Read(text));
  EXPECT_EQ(FileStatusOfErrno(ENOTDIR), file.Replace("new"));
}

TEST(AConfigFile, KeepsEveryByte) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) {
    all.push_back(static_cast<char>(byte));
  }
  const std::string texts[] = {
      "", "a", std::string("\0", 1), "one\r\ntwo\r\n", "no final line feed", all, std::string(3000000, 'x') + all};
  const TemporaryFolder folder;
  const ConfigFile file(folder.Path());
  for (const std::string& text : texts) {
    ASSERT_EQ(0, file.Replace(text));
    EXPECT_TRUE(folder.Read("snmpd.conf") == text) << text.size() << " bytes";
    std::string read = "left over";
    ASSERT_EQ(0, file.Read(read));
    EXPECT_TRUE(read == text) << text.size() << " bytes";
  }
}

TEST(AConfigFile, NamesItsPathWithOneSlash) {
  EXPECT_EQ("/a/b/snmpd.conf", ConfigFile("/a/b").GetPath());
  EXPECT_EQ("/a/b/snmpd.conf", ConfigFile("/a/b/").GetPath());
  EXPECT_EQ("/snmpd.conf", ConfigFile("/").GetPath());
}

TEST(AConfigFile, KeepsTheModeOfTheOldFile) {
  for (const mode_t mode : {mode_t{0600}, mode_t{0640}, mode_t{0444}, mode_t{0666}}) {
    const TemporaryFolder folder;
    folder.Write("snmpd.conf", "old");
    ASSERT_EQ(0, ::chmod(folder.Path("snmpd.conf").c_str(), mode));
    const Umask umask(077);
    EXPECT_EQ(0, ConfigFile(folder.Path()).Replace("new"));
    EXPECT_EQ(mode, ModeOf(folder.Path("snmpd.conf")));
  }
}

TEST(AConfigFile, KeepsTheOwnerOfTheOldFile) {
  const TemporaryFolder folder;
  folder.Write("snmpd.conf", "old");
  // Only root can give a file away; for others the old owner is the one that a new file gets, and the call is what shows.
  if (::geteuid() == 0) {
    ASSERT_EQ(0, ::chown(folder.Path("snmpd.conf").c_str(), 65534, 65533));
  }
  struct stat before = {};
  ASSERT_EQ(0, ::stat(folder.Path("snmpd.conf").c_str(), &before));
  const auto calls = std::make_shared<ScriptedFileCalls>();
  EXPECT_EQ(0, ConfigFile(folder.Path(), calls).Replace("new"));
  ASSERT_EQ(1U, calls->owners.size());
  EXPECT_EQ(std::make_pair(before.st_uid, before.st_gid), calls->owners[0]);
  struct stat after = {};
  ASSERT_EQ(0, ::stat(folder.Path("snmpd.conf").c_str(), &after));
  EXPECT_EQ(before.st_uid, after.st_uid);
  EXPECT_EQ(before.st_gid, after.st_gid);
  EXPECT_EQ("new", folder.Read("snmpd.conf"));
}

TEST(AConfigFile, IsReplacedWhereItHoldsWhatIsExpected) {
  const TemporaryFolder folder;
  const ConfigFile file(folder.Path());
  EXPECT_EQ(0, file.ReplaceExpected("", "first"));
  EXPECT_EQ(0, file.ReplaceExpected("first", "second"));
  EXPECT_EQ("second", folder.Read("snmpd.conf"));
  EXPECT_EQ(kOnlyTheFile, folder.Names());
}

TEST(AConfigFile, ThatSomebodyChangedIsNotReplaced) {
  for (const char* const expected : {"", "firs", "first\n", "First"}) {
    const TemporaryFolder folder;
    folder.Write("snmpd.conf", "first");
    EXPECT_EQ(kFileWasChanged, ConfigFile(folder.Path()).ReplaceExpected(expected, "second")) << expected;
    EXPECT_EQ("first", folder.Read("snmpd.conf"));
    EXPECT_EQ(kOnlyTheFile, folder.Names());
  }
}

TEST(AConfigFile, ThatHoldsTheNewTextAlreadyIsNoConflict) {
  const TemporaryFolder folder;
  folder.Write("snmpd.conf", "second");
  EXPECT_EQ(0, ConfigFile(folder.Path()).ReplaceExpected("first", "second"));
  EXPECT_EQ("second", folder.Read("snmpd.conf"));
}

TEST(AConfigFile, ThatSomebodyRemovedIsNotReplaced) {
  const TemporaryFolder folder;
  EXPECT_EQ(kFileWasChanged, ConfigFile(folder.Path()).ReplaceExpected("first", "second"));
  EXPECT_TRUE(folder.Names().empty());
}

TEST(AConfigFile, ThatCannotBeComparedIsNotReplaced) {
  const TemporaryFolder folder;
  folder.Write("snmpd.conf", "first");
  for (const char* const step : {"OpenForReading", "StatOpened", "Read"}) {
    const auto calls = std::make_shared<ScriptedFileCalls>();
    calls->script = [step](const std::string& name, std::size_t) { return name == step ? EIO : 0; };
    EXPECT_EQ(FileStatusOfErrno(EIO), ConfigFile(folder.Path(), calls).ReplaceExpected("first", "second")) << step;
    EXPECT_EQ("first", folder.Read("snmpd.conf"));
    std::filesystem::remove(folder.Path(".snmpd.conf.lock"));
    EXPECT_EQ(kOnlyTheFile, folder.Names());
  }
}

TEST(AConfigFile, ThatIsALinkIsReadOnDemandAndNeverReplaced) {
  const TemporaryFolder folder;
  folder.Write("elsewhere", "content");
  std::filesystem::create_symlink("elsewhere", folder.Path("snmpd.conf"));
  const ConfigFile file(folder.Path());
  std::string text = "kept";
  EXPECT_EQ(kFileIsSymbolicLink, file.Read(text));
  EXPECT_EQ("kept", text);
  EXPECT_EQ(0, file.Read(text, drivers::Links::Follow));
  EXPECT_EQ("content", text);
  EXPECT_EQ(kFileIsSymbolicLink, file.ReplaceExpected("content", "new"));
  EXPECT_EQ("content", folder.Read("elsewhere"));
}

TEST(AConfigFile, ThatIsALinkToNothingOrToAFolderIsRefusedAlsoOnDemand) {
  const TemporaryFolder folder;
  const ConfigFile file(folder.Path());
  std::string text = "kept";
  std::filesystem::create_symlink("elsewhere", folder.Path("snmpd.conf"));
  EXPECT_EQ(kFileIsSymbolicLink, file.Read(text, drivers::Links::Follow));
  std::filesystem::create_directory(folder.Path("elsewhere"));
  EXPECT_EQ(kFileIsNotRegular, file.Read(text, drivers::Links::Follow));
  EXPECT_EQ("kept", text);
}

TEST(AConfigFile, GoesThroughALinkedFolder) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder.Path("real"));
  std::filesystem::create_symlink("real", folder.Path("link"));
  EXPECT_EQ(0, ConfigFile(folder.Path("link")).Replace("new"));
  EXPECT_EQ("new", folder.Read("real/snmpd.conf"));
}

TEST(ASymbolicLink, IsRefusedBothWaysAndStaysWhatItIs) {
  const TemporaryFolder folder;
  folder.Write("other", "somebody else's");
  std::filesystem::create_symlink("other", folder.Path("snmpd.conf"));
  const ConfigFile file(folder.Path());
  std::string text = "kept";
  EXPECT_EQ(kFileIsSymbolicLink, file.Read(text));
  EXPECT_EQ("kept", text);
  EXPECT_EQ(kFileIsSymbolicLink, file.Replace("new"));
  EXPECT_TRUE(std::filesystem::is_symlink(folder.Path("snmpd.conf")));
  EXPECT_EQ("somebody else's", folder.Read("other"));
  EXPECT_EQ((std::set<std::string>{"other", "snmpd.conf"}), folder.Names());
}

TEST(ADanglingSymbolicLink, IsRefusedBothWaysToo) {
  const TemporaryFolder folder;
  std::filesystem::create_symlink("nowhere", folder.Path("snmpd.conf"));
  const ConfigFile file(folder.Path());
  std::string text;
  EXPECT_EQ(kFileIsSymbolicLink, file.Read(text));
  EXPECT_EQ(kFileIsSymbolicLink, file.Replace("new"));
  EXPECT_EQ(kOnlyTheFile, folder.Names());
}

TEST(ASymbolicLinkAsTemporaryFile, IsRemovedAndNotWrittenThrough) {
  const TemporaryFolder folder;
  folder.Write("other", "somebody else's");
  std::filesystem::create_symlink("other", folder.Path(".snmpd.conf.new"));
  EXPECT_EQ(0, ConfigFile(folder.Path()).Replace("new"));
  EXPECT_EQ("somebody else's", folder.Read("other"));
  EXPECT_EQ("new", folder.Read("snmpd.conf"));
}

TEST(APipeAsTemporaryFile, IsRemovedAndNobodyWaitsForIt) {
  const TemporaryFolder folder;
  ASSERT_EQ(0, ::mkfifo(folder.Path(".snmpd.conf.new").c_str(), 0600));
  EXPECT_EQ(0, ConfigFile(folder.Path()).Replace("new"));
  EXPECT_EQ("new", folder.Read("snmpd.conf"));
  EXPECT_EQ(kOnlyTheFile, folder.Names());
}

TEST(ATemporaryFileOfAnotherUser, IsReportedAndStays) {
  if (::geteuid() != 0) {
    GTEST_SKIP() << "only root can give a file to somebody else";
  }
  const TemporaryFolder folder;
  const uid_t other = 65534;
  folder.Write("snmpd.conf", "old");
  folder.Write(".snmpd.conf.new", "somebody else's");
  ASSERT_EQ(0, ::chown(folder.Path(".snmpd.conf.new").c_str(), other, other));
  EXPECT_EQ(drivers::kTemporaryOfAnotherUser, ConfigFile(folder.Path()).Replace("new"));
  EXPECT_EQ("old", folder.Read("snmpd.conf"));
  EXPECT_EQ("somebody else's", folder.Read(".snmpd.conf.new"));
  // A writer gives it to the owner of the file before it is complete.
  ASSERT_EQ(0, ::chown(folder.Path("snmpd.conf").c_str(), other, other));
  EXPECT_EQ(0, ConfigFile(folder.Path()).Replace("new"));
  EXPECT_EQ("new", folder.Read("snmpd.conf"));
  EXPECT_EQ(kOnlyTheFile, folder.Names());
}

TEST(AFolderOfThatName, IsRefusedBothWays) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder.Path("snmpd.conf"));
  const ConfigFile file(folder.Path());
  std::string text;
  EXPECT_EQ(kFileIsNotRegular, file.Read(text));
  EXPECT_EQ(kFileIsNotRegular, file.Replace("new"));
  EXPECT_EQ(kOnlyTheFile, folder.Names());
}

TEST(AFifoOfThatName, IsRefusedBothWaysWithoutWaiting) {
  const TemporaryFolder folder;
  ASSERT_EQ(0, ::mkfifo(folder.Path("snmpd.conf").c_str(), 0600));
  const ConfigFile file(folder.Path());
  std::string text;
  EXPECT_EQ(kFileIsNotRegular, file.Read(text));
  EXPECT_EQ(kFileIsNotRegular, file.Replace("new"));
}

TEST(ASocketOfThatName, IsRefusedBothWays) {
  const TemporaryFolder folder;
  const int made = ::mknod(folder.Path("snmpd.conf").c_str(), S_IFSOCK | 0600, 0);
  ASSERT_EQ(0, made);
  const ConfigFile file(folder.Path());
  std::string text;
  EXPECT_EQ(kFileIsNotRegular, file.Read(text));
  EXPECT_EQ(kFileIsNotRegular, file.Replace("new"));
}

TEST(AFileLargerThanTheLimit, IsRefusedWithoutReading) {
  const TemporaryFolder folder;
  folder.Write("snmpd.conf", "");
  ASSERT_EQ(0, ::truncate(folder.Path("snmpd.conf").c_str(), off_t{4} * 1024 * 1024 * 1024 * 1024));
  std::string text = "before";
  EXPECT_EQ(FileStatusOfErrno(EFBIG), ConfigFile(folder.Path()).Read(text));
  EXPECT_EQ("before", text);
}

TEST(ATextLargerThanTheLimit, IsNotWrittenBecauseItCouldNotBeReadAgain) {
  const TemporaryFolder folder;
  folder.Write("snmpd.conf", "old");
  std::string text(ConfigFile::kMaximumSize + 1, 'x');
  EXPECT_EQ(drivers::kTextTooLarge, ConfigFile(folder.Path()).Replace(text));
  EXPECT_EQ(drivers::kTextTooLarge, ConfigFile(folder.Path()).ReplaceExpected("old", text));
  EXPECT_EQ("old", folder.Read("snmpd.conf"));
  EXPECT_EQ(kOnlyTheFile, folder.Names());
  // One byte less gets as far as writing.
  text.pop_back();
  const auto calls = std::make_shared<ScriptedFileCalls>();
  calls->script = [](const std::string& name, std::size_t) { return name == "Write" ? ENOSPC : 0; };
  EXPECT_EQ(FileStatusOfErrno(ENOSPC), ConfigFile(folder.Path(), calls).Replace(text));
}

TEST(AFolderUnderTheTemporaryName, IsReportedAndStays) {
  const TemporaryFolder folder;
  folder.Write("snmpd.conf", "old");
  std::filesystem::create_directory(folder.Path(".snmpd.conf.new"));
  const int status = ConfigFile(folder.Path()).Replace("new");
  EXPECT_EQ(drivers::kFolderInTheWay, status);
  EXPECT_NE(std::string::npos, drivers::DescribeFileStatus(status).find(".snmpd.conf.new"));
  EXPECT_TRUE(std::filesystem::exists(folder.Path(".snmpd.conf.new")));
}

TEST(AFolderWithoutWritePermission, KeepsTheOldFile) {
  const TemporaryFolder folder;
  folder.Write("snmpd.conf", "old");
  ASSERT_EQ(0, ::chmod(folder.Path("snmpd.conf").c_str(), 0666));
  ASSERT_EQ(0, ::chmod(folder.Path().c_str(), 0555));
  const ConfigFile file(folder.Path());
  EXPECT_EQ(FileStatusOfErrno(EACCES), ResultAsOrdinaryUser([&file] { return file.Replace("new"); }));
  EXPECT_EQ("old", folder.Read("snmpd.conf"));
  EXPECT_EQ(kOnlyTheFile, folder.Names());
}

TEST(AFileWithoutReadPermission, IsNoEmptyText) {
  const TemporaryFolder folder;
  folder.Write("snmpd.conf", "secret");
  ASSERT_EQ(0, ::chmod(folder.Path("snmpd.conf").c_str(), 0));
  const ConfigFile file(folder.Path());
  EXPECT_EQ(FileStatusOfErrno(EACCES), ResultAsOrdinaryUser([&file] {
              std::string text;
              return file.Read(text);
            }));
}

TEST(AnOwnerThatCannotBeKept, LeavesTheOldFile) {
  const TemporaryFolder folder;
  folder.Write("snmpd.conf", "old");
  const auto calls = std::make_shared<ScriptedFileCalls>();
  calls->script = [](const std::string& name, std::size_t) { return name == "ChangeOwner" ? EPERM : 0; };
  EXPECT_EQ(FileStatusOfErrno(EPERM), ConfigFile(folder.Path(), calls).Replace("new"));
  EXPECT_EQ("old", folder.Read("snmpd.conf"));
  EXPECT_EQ(kOnlyTheFile, folder.Names());
}

class AnAccessList : public testing::Test {
 protected:
  AnAccessList() {
    m_folder.Write("snmpd.conf", "old");
    Give("snmpd.conf");
    Give("");
  }
  // To an ordinary user, who is this one or nobody.
  void Give(const std::string& name) const {
    const uid_t nobody = 65534;
    if (::geteuid() == 0) {
      EXPECT_EQ(0, ::chown(m_folder.Path(name).c_str(), nobody, nobody));
    }
  }
  std::string File() const { return m_folder.Path("snmpd.conf"); }
  // What both ways of replacing answer, to this user and to an ordinary one.
  std::set<std::optional<int>> Replace() const {
    const ConfigFile file(m_folder.Path());
    return {file.Replace("new"), file.ReplaceExpected("old", "new"),
            ResultAsOrdinaryUser([&] { return file.Replace("new"); }),
            ResultAsOrdinaryUser([&] { return file.ReplaceExpected("old", "new"); })};
  }

  TemporaryFolder m_folder;
};

TEST_F(AnAccessList, ThatSaysMoreThanTheModeKeepsTheOldFile) {
  if (!GiveAccessList(File(), AccessList::OfFile)) {
    GTEST_SKIP() << "this file system has no access lists";
  }
  EXPECT_EQ(std::set<std::optional<int>>{FileStatusOfErrno(EPERM)}, Replace());
  EXPECT_EQ("old", m_folder.Read("snmpd.conf"));
  EXPECT_TRUE(HasAccessList(File()));
  EXPECT_EQ(kOnlyTheFile, m_folder.Names());
}

TEST_F(AnAccessList, OfTheFolderIsNotThatOfTheNewFile) {
  if (!GiveAccessList(m_folder.Path(), AccessList::ForNewFiles)) {
    GTEST_SKIP() << "this file system has no access lists";
  }
  ASSERT_EQ(0, ::chmod(File().c_str(), 0640));
  EXPECT_EQ(std::set<std::optional<int>>{0}, Replace());
  EXPECT_EQ("new", m_folder.Read("snmpd.conf"));
  EXPECT_EQ(mode_t{0640}, ModeOf(File()));
  EXPECT_FALSE(HasAccessList(File()));
  std::filesystem::remove(File());
  EXPECT_EQ(0, ResultAsOrdinaryUser([&] { return ConfigFile(m_folder.Path()).Replace("new"); }));
  EXPECT_EQ(std::set<std::optional<int>>{0}, Replace());
  EXPECT_EQ(mode_t{0600}, ModeOf(File()));
  EXPECT_FALSE(HasAccessList(File()));
  EXPECT_EQ(kOnlyTheFile, m_folder.Names());
}

TEST_F(AnAccessList, ThatCannotBeReadOrRemovedKeepsTheOldFile) {
  const bool hasLists = GiveAccessList(m_folder.Path(), AccessList::ForNewFiles);
  for (const char* const step : {"AccessListSize", "RemoveAccessList"}) {
    const auto calls = std::make_shared<ScriptedFileCalls>();
    calls->script = [step](const std::string& name, std::size_t) { return name == step ? EIO : 0; };
    if (hasLists || std::string(step) == "AccessListSize") {
      EXPECT_EQ(FileStatusOfErrno(EIO), ConfigFile(m_folder.Path(), calls).Replace("new")) << step;
    }
    EXPECT_EQ("old", m_folder.Read("snmpd.conf"));
    EXPECT_EQ(kOnlyTheFile, m_folder.Names());
  }
}

TEST_F(AnAccessList, ThatTheSystemDoesNotKnowIsNone) {
  for (const int error : {ENODATA, EOPNOTSUPP}) {
    const auto calls = std::make_shared<ScriptedFileCalls>();
    calls->script = [error](const std::string& name, std::size_t) { return name == "AccessListSize" ? error : 0; };
    EXPECT_EQ(0, ConfigFile(m_folder.Path(), calls).Replace("new"));
  }
}

TEST(ASecondWriter, FailsAtOnceWhileTheFirstIsAtWork) {
  const TemporaryFolder folder;
  const ConfigFile second(folder.Path());
  int statusOfSecond = 0;
  const auto calls = std::make_shared<ScriptedFileCalls>();
  calls->script = [&](const std::string& name, std::size_t) {
    if (name == "Write") {
      statusOfSecond = second.Replace("second");
    }
    return 0;
  };
  EXPECT_EQ(0, ConfigFile(folder.Path(), calls).Replace("first"));
  EXPECT_EQ(FileStatusOfErrno(EWOULDBLOCK), statusOfSecond);
  EXPECT_EQ("first", folder.Read("snmpd.conf"));
  EXPECT_EQ(0, second.Replace("second"));
  EXPECT_EQ("second", folder.Read("snmpd.conf"));
}

}  // namespace
