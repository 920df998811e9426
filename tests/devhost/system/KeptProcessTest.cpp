#include "devhost/system/KeptProcess.h"

#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using std::chrono::milliseconds;
using testsupport::ScratchFolder;

const milliseconds kLong(30000);
const milliseconds kNow(0);

bool Eventually(const std::function<bool()>& condition) {
  const auto deadline = std::chrono::steady_clock::now() + kLong;
  while (!condition() && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(milliseconds(1));
  }
  return condition();
}

// Whether it still does something: one that has ended may wait for somebody to reap it.
bool IsAlive(pid_t process) {
  try {
    const std::string text = ScratchFolder::ReadFile("/proc/" + std::to_string(process) + "/stat");
    // One that ends while its file is read leaves no text.
    const std::size_t name = text.rfind(')');
    return name != std::string::npos && text.at(name + 2) != 'Z' && text.at(name + 2) != 'X';
  } catch (const std::runtime_error&) {
    return false;
  }
}

// With the mark by which the tests find what they have left.
std::vector<std::string> Environment() {
  const char* const mark = ::getenv("AGENT_TEST_RUN");
  return {"PATH=/usr/bin:/bin", "COLOUR=red", "AGENT_TEST_RUN=" + std::string(mark == nullptr ? "" : mark)};
}

class AKeptProcess : public testing::Test {
 protected:
  AKeptProcess()
      : m_directory(::open(m_folder.Path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)),
        m_output(::open(m_folder.Path("output").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600)) {}

  std::unique_ptr<KeptProcess> Start(const std::string& program, std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), program);
    return std::make_unique<KeptProcess>(
        ProcessImage{program, arguments, Environment(), m_directory.Get(), -1, m_output.Get(), true});
  }
  std::unique_ptr<KeptProcess> Shell(const std::string& script) const { return Start("/bin/sh", {"-c", script}); }

  // The output of a script, after its end.
  std::string Output(const std::string& script) const {
    const auto process = Shell(script);
    EXPECT_TRUE(process->WaitForEnd(kLong));
    EXPECT_EQ(process->WaitStatus(), 0);
    return m_folder.Read("output");
  }

  int ErrorOf(const std::string& program) const {
    try {
      Start(program, {});
      return 0;
    } catch (const std::system_error& error) {
      return error.code().value();
    }
  }

  // The processes whose ids the programs have written, after so many lines.
  std::vector<pid_t> Written(std::size_t lines) const {
    std::vector<pid_t> processes;
    EXPECT_TRUE(Eventually([&] {
      processes.clear();
      const std::string text = m_folder.Read("output");
      for (std::size_t at = 0, end = 0; (end = text.find('\n', at)) != std::string::npos; at = end + 1) {
        processes.push_back(std::stoi(text.substr(at, end - at)));
      }
      return processes.size() >= lines;
    }));
    return processes;
  }

  // A fork of this process that starts the script and waits for its end.
  pid_t Maker(const std::string& script) const {
    const pid_t maker = ::fork();
    if (maker == 0) {
      const auto process = Shell(script);
      process->WaitForEnd(kLong);
      ::_exit(0);
    }
    return maker;
  }

  ScratchFolder m_folder;
  FileDescriptor m_directory;
  FileDescriptor m_output;
};

// A shell, a child in its group, and one that has left group, session and parent.
const char kFamily[] = "sleep 1000 & echo $!; (setsid sh -c 'echo $$; exec sleep 1000' &); echo $$; wait";

TEST_F(AKeptProcess, RunsWithItsArgumentsEnvironmentAndFolder) {
  EXPECT_EQ(Output("echo $COLOUR $(pwd -P)"), "red " + m_folder.Path() + "\n");
}

TEST_F(AKeptProcess, WritesBothOutputsToItsFileAndReadsNothing) {
  EXPECT_EQ(Output("echo one; echo two >&2; cat"), "one\ntwo\n");
}

TEST_F(AKeptProcess, ReadsTheInputThatItIsGiven) {
  const FileDescriptor input(::open(m_folder.Write("input", "text\n").c_str(), O_RDONLY | O_CLOEXEC));
  KeptProcess process({"/bin/cat", {"cat", "-", "/proc/self/fd/0"}, {}, -1, input.Get(), m_output.Get()});
  EXPECT_TRUE(process.WaitForEnd(kLong));
  EXPECT_EQ(m_folder.Read("output"), "text\ntext\n");
}

TEST_F(AKeptProcess, HasNoSignalSettingsOfItsMaker) {
  sigset_t mask;
  sigset_t former;
  ::sigemptyset(&mask);
  ::sigaddset(&mask, SIGTERM);
  ::pthread_sigmask(SIG_BLOCK, &mask, &former);
  const auto formerHandler = ::signal(SIGHUP, SIG_IGN);
  // Without a shell, which would set some of this right itself. The lines: signals blocked, signals ignored.
  const auto process = Start("/bin/grep", {"-E", "Sig(Blk|Ign)", "/proc/self/status"});
  sigset_t now;
  ::pthread_sigmask(SIG_SETMASK, nullptr, &now);
  ::signal(SIGHUP, formerHandler);
  ::pthread_sigmask(SIG_SETMASK, &former, nullptr);
  EXPECT_TRUE(process->WaitForEnd(kLong));
  EXPECT_EQ(m_folder.Read("output"), "SigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n");
  EXPECT_EQ(::sigismember(&now, SIGTERM), 1);
  EXPECT_EQ(::sigismember(&now, SIGINT), 0);
}

TEST_F(AKeptProcess, HasNoDescriptorsOfItsMakerAndKeepsItsFilesToItself) {
  const FileDescriptor open(::open("/dev/null", O_RDONLY));
  // ls has one descriptor of its own, for the folder.
  EXPECT_EQ(Output("ls /proc/self/fd; umask"), "0\n1\n2\n3\n0077\n");
}

TEST_F(AKeptProcess, HasNoTerminal) {
  EXPECT_EQ(Output("(: </dev/tty) 2>/dev/null || echo none"), "none\n");
}

// A reader of the output would wait for a keeper that had it open.
TEST_F(AKeptProcess, IsKeptWithoutADescriptorOfItsMaker) {
  int ends[2];
  ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
  const FileDescriptor from(ends[0]);
  FileDescriptor to(ends[1]);
  const auto process = Shell("exec sleep 1000");
  to.Close();
  struct pollfd watched = {from.Get(), POLLIN, 0};
  EXPECT_EQ(::poll(&watched, 1, static_cast<int>(kLong.count())), 1);
  EXPECT_TRUE(IsAlive(process->Pid()));
}

TEST_F(AKeptProcess, SaysHowItEnded) {
  const auto ended = Shell("exit 3");
  EXPECT_TRUE(ended->WaitForEnd(kLong));
  EXPECT_EQ(WEXITSTATUS(ended->WaitStatus().value()), 3);
  const auto killed = Shell("exec sleep 1000");
  EXPECT_FALSE(killed->WaitForEnd(kNow));
  EXPECT_FALSE(killed->WaitStatus().has_value());
  killed->Signal(SIGTERM);
  EXPECT_TRUE(killed->WaitForEnd(kLong));
  EXPECT_EQ(WTERMSIG(killed->WaitStatus().value()), SIGTERM);
}

TEST_F(AKeptProcess, IsReapedAtOnceAndGetsNoSignalAfterThat) {
  const auto process = Shell("exit 0");
  EXPECT_TRUE(process->WaitForEnd(kLong));
  EXPECT_EQ(::kill(process->Pid(), 0), -1);
  EXPECT_EQ(errno, ESRCH);
  process->Signal(SIGKILL);
  EXPECT_EQ(process->WaitStatus(), 0);
}

TEST_F(AKeptProcess, SaysHowItEndedToAMakerThatIgnoresItsChildren) {
  const auto former = ::signal(SIGCHLD, SIG_IGN);
  const auto process = Shell("exit 3");
  EXPECT_TRUE(process->WaitForEnd(kLong));
  ::signal(SIGCHLD, former);
  EXPECT_EQ(WEXITSTATUS(process->WaitStatus().value_or(0)), 3);
}

TEST_F(AKeptProcess, IsKilledAndReapedWithItsObject) {
  auto process = Shell("trap '' TERM; while :; do sleep 1000; done");
  const pid_t pid = process->Pid();
  EXPECT_TRUE(IsAlive(pid));
  process.reset();
  EXPECT_EQ(::kill(pid, 0), -1);
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
}

TEST_F(AKeptProcess, TakesAllThatItStartedWithIt) {
  auto process = Shell(kFamily);
  const std::vector<pid_t> processes = Written(3);
  for (const pid_t started : processes) {
    EXPECT_TRUE(IsAlive(started));
  }
  process.reset();
  for (const pid_t started : processes) {
    EXPECT_EQ(::kill(started, 0), -1) << started;
  }
}

TEST_F(AKeptProcess, ThatEndsTakesAllThatItStartedWithIt) {
  const auto process = Shell(
      "sleep 1000 & echo $!; (setsid sh -c 'echo $$; exec sleep 1000' &); while [ $(wc -l < output) "
      "-lt 2 ]; do :; done; exit 5");
  EXPECT_TRUE(process->WaitForEnd(kLong));
  EXPECT_EQ(WEXITSTATUS(process->WaitStatus().value_or(0)), 5);
  for (const pid_t started : Written(2)) {
    EXPECT_EQ(::kill(started, 0), -1) << started;
  }
}

TEST_F(AKeptProcess, PassesASignalOnToItsGroup) {
  const auto process = Shell(
      "trap 'wait; exit 4' TERM; (trap 'echo child; exit' TERM; echo ready; while :; do sleep 0.01; done) & wait; exit 5");
  ASSERT_TRUE(Eventually([this] { return m_folder.Read("output") == "ready\n"; }));
  process->Signal(SIGTERM);
  EXPECT_TRUE(process->WaitForEnd(kLong));
  EXPECT_EQ(WEXITSTATUS(process->WaitStatus().value_or(0)), 4);
  EXPECT_NE(m_folder.Read("output").find("child\n"), std::string::npos);
}

TEST_F(AKeptProcess, LivesOnWhenTheThreadThatAskedForItEnds) {
  std::unique_ptr<KeptProcess> process;
  ASSERT_EQ(::mkfifo(m_folder.Path("pipe").c_str(), 0600), 0);
  std::thread([&] { process = Shell("read line < pipe; exit 7"); }).join();
  // It waits for a writer; a killed one would never read this.
  m_folder.Write("pipe", "go on\n");
  EXPECT_TRUE(process->WaitForEnd(kLong));
  EXPECT_EQ(WEXITSTATUS(process->WaitStatus().value_or(0)), 7);
}

class ADeadMaker : public AKeptProcess, public testing::WithParamInterface<int> {};

TEST_P(ADeadMaker, LeavesNothing) {
  const pid_t maker = Maker(kFamily);
  const std::vector<pid_t> processes = Written(3);
  ::kill(maker, GetParam());
  int status = 0;
  EXPECT_EQ(::waitpid(maker, &status, 0), maker);
  EXPECT_EQ(WTERMSIG(status), GetParam());
  for (const pid_t started : processes) {
    EXPECT_TRUE(Eventually([started] { return !IsAlive(started); })) << started;
  }
}

INSTANTIATE_TEST_SUITE_P(Signals, ADeadMaker, testing::Values(SIGHUP, SIGINT, SIGQUIT, SIGKILL, SIGPIPE, SIGTERM));

// As a driver's own fork does, which knows nothing of this.
TEST_F(AKeptProcess, DiesWithItsMakerAlsoWhenACopyOfItsSocketLivesOn) {
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  FileDescriptor from(ends[0]);
  FileDescriptor to(ends[1]);
  const pid_t maker = ::fork();
  if (maker == 0) {
    const auto process = Shell("echo $$; exec sleep 1000");
    const pid_t copy = ::fork();
    if (copy == 0) {
      to.Close();
      char end = 0;
      const ssize_t ignored = ::read(from.Get(), &end, 1);
      ::_exit(ignored == 0 ? 0 : 1);
    }
    process->WaitForEnd(kLong);
    ::_exit(0);
  }
  const pid_t started = Written(1).front();
  ::kill(maker, SIGKILL);
  EXPECT_EQ(::waitpid(maker, nullptr, 0), maker);
  EXPECT_TRUE(Eventually([started] { return !IsAlive(started); }));
}

// The system takes the death signal from a program that gets rights with its file.
TEST_F(AKeptProcess, DiesWithItsMakerAlsoWhenItsFileHasCapabilities) {
  if (::geteuid() != 0) {
    GTEST_SKIP() << "only root can give a file capabilities";
  }
  const std::string program = m_folder.Path("sleep");
  std::filesystem::copy_file("/bin/sleep", program);
  std::filesystem::permissions(m_folder.Path(), std::filesystem::perms(0755));
  vfs_cap_data data = {};
  data.magic_etc = VFS_CAP_REVISION_2 | VFS_CAP_FLAGS_EFFECTIVE;
  data.data[0].permitted = 1U << CAP_NET_BIND_SERVICE;
  if (::setxattr(program.c_str(), "security.capability", &data, XATTR_CAPS_SZ_2, 0) != 0) {
    GTEST_SKIP() << "files have no capabilities here";
  }
  const pid_t maker = ::fork();
  if (maker == 0) {
    const bool isNobody =
        ::setgroups(0, nullptr) == 0 && ::setresgid(65534, 65534, 65534) == 0 && ::setresuid(65534, 65534, 65534) == 0;
    const auto process = Start(program, {"1000"});
    const std::string pid = std::to_string(isNobody ? process->Pid() : 0) + "\n";
    const ssize_t written = ::write(m_output.Get(), pid.data(), pid.size());
    process->WaitForEnd(kLong);
    ::_exit(written > 0 ? 0 : 1);
  }
  const pid_t started = Written(1).front();
  ASSERT_NE(started, 0);
  EXPECT_TRUE(IsAlive(started));
  ::kill(maker, SIGKILL);
  EXPECT_EQ(::waitpid(maker, nullptr, 0), maker);
  EXPECT_TRUE(Eventually([started] { return !IsAlive(started); }));
}

// What the system says of a process: its parent.
pid_t ParentOf(pid_t process) {
  const std::string stat = ScratchFolder::ReadFile("/proc/" + std::to_string(process) + "/stat");
  return std::stoi(stat.substr(stat.rfind(')') + 4));
}

class AKilledKeeper : public AKeptProcess {
 protected:
  // Kills one keeper or both of a family's, together with the maker or alone. Nothing of the family may be left.
  void Kill(bool inner, bool outer, bool withMaker) {
    const pid_t maker = Maker(kFamily);
    const std::vector<pid_t> processes = Written(3);
    const pid_t innerKeeper = ParentOf(processes.back());
    const pid_t outerKeeper = ParentOf(innerKeeper);
    ASSERT_EQ(ParentOf(outerKeeper), maker);
    // None of those that are to be killed has time to see the end of another.
    std::vector<pid_t> killed;
    killed.reserve(3);
    for (const auto& [isMeant, process] : {std::pair(withMaker, maker), {inner, innerKeeper}, {outer, outerKeeper}}) {
      if (isMeant) {
        killed.push_back(process);
        ::kill(process, SIGSTOP);
      }
    }
    for (const pid_t process : killed) {
      ::kill(process, SIGKILL);
    }
    for (const pid_t started : processes) {
      EXPECT_TRUE(Eventually([started] { return !IsAlive(started); })) << started;
    }
    EXPECT_TRUE(Eventually([&] { return !IsAlive(innerKeeper) && !IsAlive(outerKeeper); }));
    ::kill(maker, SIGKILL);
    EXPECT_EQ(::waitpid(maker, nullptr, 0), maker);
  }
};

TEST_F(AKilledKeeper, LeavesNothing) {
  Kill(true, false, false);
}

TEST_F(AKilledKeeper, LeavesNothingWhenItIsTheOuterOne) {
  Kill(false, true, false);
}

TEST_F(AKilledKeeper, LeavesNothingWhenItsMakerIsKilledWithIt) {
  Kill(true, false, true);
}

TEST_F(AKilledKeeper, LeavesNothingWhenItIsTheOuterOneAndItsMakerIsKilledWithIt) {
  Kill(false, true, true);
}

TEST_F(AKilledKeeper, SaysNothingOfTheEndOfTheProgram) {
  const auto process = Shell("exec sleep 1000");
  ::kill(ParentOf(process->Pid()), SIGKILL);
  EXPECT_TRUE(process->WaitForEnd(kLong));
  EXPECT_FALSE(process->WaitStatus().has_value());
  EXPECT_EQ(::kill(process->Pid(), 0), -1);
}

// As `killall` does, and `pkill`.
TEST_F(AKeptProcess, HasKeepersWithANameOfTheirOwn) {
  const auto process = Shell("exec sleep 1000");
  const pid_t inner = ParentOf(process->Pid());
  for (const pid_t keeper : {inner, ParentOf(inner)}) {
    EXPECT_EQ(ScratchFolder::ReadFile("/proc/" + std::to_string(keeper) + "/comm"), "keeper\n");
  }
}

TEST_F(AKeptProcess, ThatCannotBeStartedSaysWhyAndLeavesNothing) {
  EXPECT_EQ(ErrorOf("/no/program"), ENOENT);
  const std::string text = m_folder.Write("text", "no program");
  EXPECT_EQ(ErrorOf(text), EACCES);
  ASSERT_EQ(::chmod(text.c_str(), 0755), 0);
  EXPECT_EQ(ErrorOf(text), ENOEXEC);
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
}

}  // namespace
}  // namespace devhost
