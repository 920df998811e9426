#include "devhost/system/RunProgram.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <thread>

#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using testing::HasSubstr;
using testing::StartsWith;
using testsupport::ScratchFolder;

ProgramRun Shell(const std::string& command) {
  ProgramRun run;
  run.words = {"sh", "-c", command};
  return run;
}

std::string Failure(const ProgramRun& run) {
  try {
    RunProgram(run);
  } catch (const ProgramError& error) {
    return error.what();
  }
  return "";
}

// Whether that process still does something: one that was killed may wait for somebody to reap it.
bool IsAlive(const std::string& pid) {
  try {
    const std::string stat = ScratchFolder::ReadFile("/proc/" + pid + "/stat");
    const std::size_t name = stat.rfind(')');
    return name == std::string::npos || (stat[name + 2] != 'Z' && stat[name + 2] != 'X');
  } catch (const std::runtime_error&) {
    return false;
  }
}

// A killed process may take a moment to be gone.
bool IsGone(const std::string& pid) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (IsAlive(pid) && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return !IsAlive(pid);
}

TEST(AProgram, GivesItsOutputAndErrorsInOrderAndItsStatus) {
  const ProgramResult result = RunProgram(Shell("echo one; echo two >&2; echo three; exit 7"));
  EXPECT_EQ(result.output, "one\ntwo\nthree\n");
  EXPECT_EQ(result.exitStatus, 7);
  EXPECT_EQ(result.signal, 0);
  EXPECT_FALSE(result.late || result.tooLong);
}

TEST(AProgram, TakesItsWordsAsTheyAre) {
  ProgramRun run;
  run.words = {"printf", "<%s>", "a b", "", "$HOME", "'\"\\", "\xff"};
  EXPECT_EQ(RunProgram(run).output, "<a b><><$HOME><'\"\\><\xff>");
}

TEST(AProgram, ReadsNothing) {
  EXPECT_EQ(RunProgram(Shell("cat; echo end")).output, "end\n");
}

TEST(AProgram, RunsInItsFolderWithItsVariables) {
  const ScratchFolder folder;
  folder.Write("text", "hello");
  ProgramRun run = Shell("cat text; printf '%s' \"-$NAME-$HOME\"");
  run.folder = folder.Path();
  run.environment = {{"NAME", "a=b"}, {"HOME", "/nowhere"}};
  EXPECT_EQ(RunProgram(run).output, "hello-a=b-/nowhere");
}

TEST(AProgram, InheritsTheVariablesThatTheRunDoesNotSet) {
  ProgramRun run = Shell("printf '%s' \"$PATH\"");
  run.environment = {{"PATH_", "x"}};
  EXPECT_EQ(RunProgram(run).output, ::getenv("PATH"));
}

TEST(AProgram, InheritsNoDescriptorButTheStandardOnes) {
  const int high = ::fcntl(0, F_DUPFD, 50);  // not closed by exec
  ASSERT_GE(high, 50);
  const ProgramResult result =
      RunProgram(Shell("for n in $(seq 0 99); do if [ -e /proc/$$/fd/$n ]; then echo $n; fi; done"));
  ::close(high);
  EXPECT_EQ(result.output, "0\n1\n2\n");
}

TEST(AProgram, StartsWithNoSignalIgnoredOrBlocked) {
  struct sigaction ignore = {};
  ignore.sa_handler = SIG_IGN;
  struct sigaction before = {};
  ::sigaction(SIGPIPE, &ignore, &before);
  sigset_t blocked;
  ::sigemptyset(&blocked);
  ::sigaddset(&blocked, SIGTERM);
  sigset_t maskBefore;
  ::pthread_sigmask(SIG_BLOCK, &blocked, &maskBefore);
  ProgramRun run;
  run.words = {"sed", "-n", "/^SigIgn\\|^SigBlk/s/.*\\(.\\{8\\}\\)$/\\1/p", "/proc/self/status"};  // signals 1 to 32
  const ProgramResult result = RunProgram(run);
  ::pthread_sigmask(SIG_SETMASK, &maskBefore, nullptr);
  ::sigaction(SIGPIPE, &before, nullptr);
  // The last one is the C library's own; it is left as it came.
  EXPECT_THAT(result.output, testing::MatchesRegex("00000000\n[08]0000000\n"));
}

TEST(AProgramThatIsKilled, TellsTheSignal) {
  const ProgramResult result = RunProgram(Shell("echo before; kill -SEGV $$"));
  EXPECT_EQ(result.signal, SIGSEGV);
  EXPECT_EQ(result.output, "before\n");
  EXPECT_FALSE(result.late);
}

TEST(AProgramThatTakesTooLong, IsKilledWithAllThatItStarted) {
  ProgramRun run = Shell("sleep 1000 & echo $!; wait");
  ProgramResult result;
  // On a busy machine, a short time may be over before the program has begun.
  for (run.deadline = std::chrono::milliseconds(200); result.output.empty() && run.deadline < std::chrono::minutes(1);
       run.deadline *= 2) {
    result = RunProgram(run);
    EXPECT_TRUE(result.late);
    EXPECT_EQ(result.signal, SIGKILL);
  }
  ASSERT_THAT(result.output, testing::MatchesRegex("[0-9]+\n"));
  EXPECT_TRUE(IsGone(result.output.substr(0, result.output.size() - 1)));
}

TEST(AProgramThatLeavesSomethingBehind, IsDoneWhenItEndsAndWhatItLeftIsKilled) {
  ProgramRun run = Shell("sleep 1000 & echo $!");
  run.deadline = std::chrono::minutes(4);  // longer than the test may take
  const ProgramResult result = RunProgram(run);
  EXPECT_FALSE(result.late);
  EXPECT_EQ(result.exitStatus, 0);
  ASSERT_THAT(result.output, testing::MatchesRegex("[0-9]+\n"));
  EXPECT_TRUE(IsGone(result.output.substr(0, result.output.size() - 1)));
}

TEST(AProgramThatClosesItsOutput, IsWaitedForAllTheSame) {
  const ScratchFolder folder;
  ProgramRun run = Shell("exec >/dev/null 2>&1; sleep 0.2; echo done > mark; exit 3");
  run.folder = folder.Path();
  EXPECT_EQ(RunProgram(run).exitStatus, 3);
  EXPECT_EQ(folder.Read("mark"), "done\n");
}

TEST(AProgramThatWritesTooMuch, IsKilledAndItsFirstWholeLinesKept) {
  ProgramRun run = Shell("while :; do echo 0123456789; done");
  run.longestOutput = 100000;
  const ProgramResult result = RunProgram(run);
  EXPECT_TRUE(result.tooLong);
  EXPECT_FALSE(result.late);
  EXPECT_EQ(result.output.size(), 99990U);
}

TEST(AProgramThatWritesAsMuchAsItMay, IsLeftAlone) {
  ProgramRun run = Shell("head -c 300000 /dev/zero");
  run.longestOutput = 300000;
  const ProgramResult result = RunProgram(run);
  EXPECT_FALSE(result.tooLong);
  EXPECT_EQ(result.output.size(), 300000U);
  EXPECT_EQ(result.exitStatus, 0);
}

TEST(AProgramThatHasEnded, LeavesNoZombieAndNoDescriptor) {
  const int before = ::dup(0);
  for (int i = 0; i != 20; ++i) {
    RunProgram(Shell(":"));
  }
  EXPECT_EQ(Failure({{"/proc/none/program"}, ""}), "cannot run \"/proc/none/program\": No such file or directory");
  const int after = ::dup(0);
  ::close(before);
  ::close(after);
  EXPECT_EQ(after, before + 1);
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
}

TEST(AProgramThatCannotBeStarted, SaysWhatAndWhy) {
  const ScratchFolder folder;
  const std::string text = folder.Write("text", "no program");
  EXPECT_EQ(Failure({{}, ""}), "there is no program \"\" in PATH, /usr/local/sbin, /usr/sbin or /sbin");
  EXPECT_EQ(Failure({{"no-such-program-at-all"}, ""}),
            "there is no program \"no-such-program-at-all\" in PATH, /usr/local/sbin, /usr/sbin or /sbin");
  EXPECT_EQ(Failure({{text}, ""}), "cannot run \"" + text + "\": Permission denied");
  ::chmod(text.c_str(), 0700);
  EXPECT_EQ(Failure({{text}, ""}), "cannot run \"" + text + "\": Exec format error");
  EXPECT_EQ(Failure({{"sh"}, folder.Path("gone")}),
            "cannot run a program in \"" + folder.Path("gone") + "\": No such file or directory");
  EXPECT_EQ(Failure({{"sh", std::string("a\0b", 3)}, ""}), "cannot run \"sh\": one of its words holds a NUL byte");
}

class ASearchForAProgram : public testing::Test {
 protected:
  ASearchForAProgram() : m_path(::getenv("PATH")) {}
  ~ASearchForAProgram() override { ::setenv("PATH", m_path.c_str(), 1); }

  std::string WriteProgram(const std::string& name, const std::string& text) const {
    const std::string path = m_folder.Write(name, text);
    ::chmod(path.c_str(), 0700);
    return path;
  }

  ScratchFolder m_folder;

 private:
  std::string m_path;
};

TEST_F(ASearchForAProgram, TakesTheFirstThatCanBeRunInThePath) {
  m_folder.Write("a/tool", "no program");
  m_folder.Write("b/tool/file", "a folder");
  const std::string tool = WriteProgram("c/tool", "#!/bin/sh\necho c\n");
  WriteProgram("d/tool", "#!/bin/sh\necho d\n");
  ::setenv("PATH",
           (m_folder.Path("a") + ":" + m_folder.Path("b") + ":" + m_folder.Path("c") + ":" + m_folder.Path("d")).c_str(), 1);
  EXPECT_EQ(FindProgram("tool"), tool);
  EXPECT_EQ(RunProgram({{"tool"}, ""}).output, "c\n");
}

TEST_F(ASearchForAProgram, GoesOnInTheFoldersForDaemons) {
  ::setenv("PATH", m_folder.Path().c_str(), 1);
  EXPECT_THAT(FindProgram("ldconfig"), StartsWith("/"));
  EXPECT_THAT(FindProgram("ldconfig"), HasSubstr("sbin/ldconfig"));
  EXPECT_EQ(FindProgram("no-such-program-at-all"), "");
  EXPECT_EQ(FindProgram(""), "");
}

TEST_F(ASearchForAProgram, LeavesANameWithASlashAlone) {
  WriteProgram("here", "#!/bin/sh\necho here\n");
  EXPECT_EQ(FindProgram("./here"), "./here");
  EXPECT_EQ(RunProgram({{"./here"}, m_folder.Path()}).output, "here\n");
}

}  // namespace
}  // namespace devhost
