// The programs that run on the controller, here run by the shells of this machine.

#include "drivers/sshsnmpd/RemoteScripts.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <set>
#include <string>

#include "drivers/common/FileStatus.h"
#include "drivers/sshsnmpd/SshStatus.h"
#include "tests/drivers/support/AccessList.h"
#include "tests/drivers/support/TemporaryFolder.h"
#include "tests/module/Shell.h"

namespace {

using Names = std::set<std::string>;

// In the place of "sh", that shell.
int RunProgram(const std::string& shell, drivers::SshResult& result, const std::vector<std::string>& program,
               const std::string& input) {
  const std::vector<std::string> arguments(program.begin() + 1, program.end());
  const ShellResult ended = RunInShell(shell + " " + drivers::QuoteWords(arguments) + " <" + drivers::QuoteWords({input}));
  result.exitStatus = ended.status;
  result.errors = ended.output;
  return drivers::StatusOfProgram(result);
}

class TheProgramThatReplaces : public testing::TestWithParam<const char*> {
 protected:
  int Replace(const std::string& given, const std::string& text, const std::string& expected) {
    m_outside.Write("input", given);
    drivers::SshResult result;
    return RunProgram(GetParam(), result,
                      drivers::ReplaceProgram(m_folder.Path("snmpd.conf"), "0123", text.size(), expected.size()),
                      m_outside.Path("input"));
  }

  TemporaryFolder m_folder;
  TemporaryFolder m_outside;
};

TEST_P(TheProgramThatReplaces, LeavesTheOldFileWhereverItsInputIsCut) {
  const std::string text = "new text\nof two lines\n";
  const std::string expected = "old text\n";
  m_folder.Write("snmpd.conf", expected);
  for (std::size_t size = 0; size != (text + expected).size(); ++size) {
    EXPECT_EQ(drivers::FileStatusOfErrno(EIO), Replace((text + expected).substr(0, size), text, expected)) << size;
    EXPECT_EQ(expected, m_folder.Read("snmpd.conf")) << size;
    EXPECT_EQ(Names{"snmpd.conf"}, m_folder.Names()) << size;
  }
  EXPECT_EQ(0, Replace(text + expected, text, expected));
  EXPECT_EQ(text, m_folder.Read("snmpd.conf"));
  EXPECT_EQ(Names{"snmpd.conf"}, m_folder.Names());
}

TEST_P(TheProgramThatReplaces, TakesNoMoreInputThanItWasPromised) {
  m_folder.Write("snmpd.conf", "old");
  EXPECT_EQ(drivers::FileStatusOfErrno(EIO), Replace("newold and more", "new", "old"));
  EXPECT_EQ("old", m_folder.Read("snmpd.conf"));
}

TEST_P(TheProgramThatReplaces, KeepsAFileWithAnAccessList) {
  m_folder.Write("snmpd.conf", "old");
  if (!GiveAccessList(m_folder.Path("snmpd.conf"), AccessList::OfFile)) {
    GTEST_SKIP() << "this file system has no access lists";
  }
  EXPECT_EQ(drivers::FileStatusOfErrno(EPERM), Replace("newold", "new", "old"));
  EXPECT_EQ("old", m_folder.Read("snmpd.conf"));
  EXPECT_TRUE(HasAccessList(m_folder.Path("snmpd.conf")));
  EXPECT_EQ(Names{"snmpd.conf"}, m_folder.Names());
}

TEST_P(TheProgramThatReplaces, GivesNoFileTheAccessListOfItsFolder) {
  m_folder.Write("snmpd.conf", "old");
  if (!GiveAccessList(m_folder.Path(), AccessList::ForNewFiles)) {
    GTEST_SKIP() << "this file system has no access lists";
  }
  EXPECT_EQ(drivers::FileStatusOfErrno(EPERM), Replace("newold", "new", "old"));
  EXPECT_EQ("old", m_folder.Read("snmpd.conf"));
  EXPECT_EQ(Names{"snmpd.conf"}, m_folder.Names());
  std::filesystem::remove(m_folder.Path("snmpd.conf"));
  EXPECT_EQ(drivers::FileStatusOfErrno(EPERM), Replace("new", "new", ""));
  EXPECT_EQ(Names(), m_folder.Names());
}

INSTANTIATE_TEST_SUITE_P(Shells, TheProgramThatReplaces, testing::Values("dash", "bash", "'busybox' sh"));

TEST(AQuotedWord, ReachesTheProgramAsItIs) {
  for (const char* const word : {"", "a b", "it's", "''", "$HOME", "`id`", "a\nb", "\\", "*", "-n", "\xff"}) {
    EXPECT_EQ(word, RunInShell("printf %s " + drivers::QuoteWords({word})).output);
  }
  EXPECT_EQ("'a' 'b'", drivers::QuoteWords({"a", "b"}));
}

TEST(AStatusOfAProgram, ComesFromItsExitStatusOrItsComplaint) {
  const auto status = [](int exitStatus, const std::string& errors) {
    return drivers::StatusOfProgram({exitStatus, "", errors});
  };
  EXPECT_EQ(0, status(0, "a warning"));
  EXPECT_EQ(drivers::kFileIsSymbolicLink, status(41, ""));
  EXPECT_EQ(drivers::kFileIsNotRegular, status(42, ""));
  EXPECT_EQ(drivers::kFileWasChanged, status(43, ""));
  EXPECT_EQ(drivers::FileStatusOfErrno(EFBIG), status(44, ""));
  EXPECT_EQ(drivers::FileStatusOfErrno(ENOENT), status(45, ""));
  EXPECT_EQ(drivers::FileStatusOfErrno(EACCES), status(46, ""));
  EXPECT_EQ(drivers::FileStatusOfErrno(EIO), status(47, ""));
  EXPECT_EQ(drivers::FileStatusOfErrno(EPERM), status(48, ""));
  EXPECT_EQ(drivers::FileStatusOfErrno(ENOSPC), status(1, "cat: write error: No space left on device\n"));
  EXPECT_EQ(drivers::FileStatusOfErrno(EROFS), status(1, "sh: 5: cannot create /x: Read-only file system\n"));
  EXPECT_EQ(drivers::kControllerUnfit, status(127, "sh: 1: cmp: not found\n"));
  EXPECT_EQ(drivers::kControllerUnfit, status(-1, ""));
}

}  // namespace
