// The ends of the process that none of its own code sees.
#include "devhost/engine/WatchedProcess.h"

#include <gmock/gmock.h>
#include <poll.h>
#include <pthread.h>
#include <pty.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "devhost/engine/EndNote.h"
#include "devhost/engine/EndWatch.h"
#include "tests/devhost/engine/Deadly.h"

namespace devhost {
namespace {

using testing::AllOf;
using testing::ExitedWithCode;
using testing::HasSubstr;
using testing::KilledBySignal;
using testing::Not;

constexpr char kBehind[] = "behind the host's back, by a system call or another program in its place";

std::string LineOf(const std::string& how, const std::string& command) {
  return "devhost: the process was ended " + how + " during command \"" + command +
         "\" of driver 5 \"deadly5\"; drivers return from every call\n";
}

TEST(ADriverThatEndsTheProcessBehindTheHostsBack, IsNamedAndNeverSucceeds) {
  for (const std::string way : {"Exec", "RawExit"}) {
    const ProgramResult result = EndBy(way);
    EXPECT_THAT(result.output, AllOf(HasSubstr(LineOf(kBehind, way)), Not(HasSubstr("still here"))));
    EXPECT_EQ(result.exitStatus, 1) << way;
  }
}

// The state of a process, as the system shows it: 'T' for one that is stopped.
char StateOf(pid_t process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/stat");
  const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  const std::size_t end = text.rfind(") ");
  return end == std::string::npos ? '?' : text[end + 2];
}

// Whether a signal was sent to the process that it has not taken yet.
bool HasPendingSignal(pid_t process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/status");
  const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  return text.find("\nShdPnd:\t0000000000000000\n") == std::string::npos;
}

// The child asks its parent, in the middle of the call and before it, and goes on when the line is there.
TEST(ACallThatHangs, IsNamedByTheWaitingProcessWhenThatIsAsked) {
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  const pid_t watcher = ::fork();
  if (watcher == 0) {
    ::dup2(ends[1], STDERR_FILENO);
    WatchedProcess::Begin();
    ::kill(::getppid(), WatchedProcess::kAsk);
    // The parent has looked before the call begins, and waits again.
    while (HasPendingSignal(::getppid()) || StateOf(::getppid()) != 'S') {
      ::usleep(1000);
    }
    const EndNote note("CopyFrom", "driver 7 \"kitchen\"");
    ::kill(::getppid(), WatchedProcess::kAsk);
    for (;;) {
      ::pause();
    }
  }
  ::close(ends[1]);
  char text[200] = "";
  struct pollfd said = {ends[0], POLLIN, 0};
  ASSERT_EQ(::poll(&said, 1, 60'000), 1);
  EXPECT_GT(::read(ends[0], text, sizeof text - 1), 0);
  EXPECT_STREQ(text, "devhost: CopyFrom of driver 7 \"kitchen\" has not returned\n");
  ::kill(watcher, SIGKILL);
  ::waitpid(watcher, nullptr, 0);
  ::close(ends[0]);
}

TEST(ADriverThatEndsTheProcessBehindTheHostsBack, IsNamedInInitialize) {
  ::setenv("DEADLY_IN_INITIALIZE", "1", 1);
  const ProgramResult result = EndBy("Exit");
  ::unsetenv("DEADLY_IN_INITIALIZE");
  EXPECT_THAT(result.output, HasSubstr(std::string(kBehind) + " during Initialize of driver 5 \"deadly5\""));
  EXPECT_EQ(result.exitStatus, 1);
}

TEST(ADriverThatEndsTheProcessBehindTheHostsBack, EndsItBetweenCallsWithoutSuccess) {
  const ProgramResult result = EndBy("Later:RawExit");
  EXPECT_THAT(result.output, HasSubstr("devhost: the process was ended " + std::string(kBehind) + ", outside of any call"));
  EXPECT_EQ(result.exitStatus, 1);
}

TEST(ADriverThatEndsTheProcessAfterTheHost, DoesNotChangeItsStatus) {
  for (const std::string way : {"ExitAtExit", "UnderscoreExitAtExit"}) {
    EXPECT_EQ(EndBy(way).exitStatus, 0) << way;
    const ProgramResult failed = EndBy(way, ":", "command Unknown\n");
    EXPECT_THAT(failed.output,
                HasSubstr("devhost: the process was ended " + std::string(kBehind) + ", outside of any call"));
    EXPECT_EQ(failed.exitStatus, 1) << way;
  }
}

TEST(ADriverThatRaisesASignal, IsNamed) {
  const std::vector<std::pair<std::string, int>> ways = {
      {"Kill", SIGKILL}, {"Alarm", SIGALRM}, {"Terminate", SIGTERM}, {"Trap", SIGTRAP}, {"User", SIGUSR1}};
  for (const auto& [way, signal] : ways) {
    const ProgramResult result = EndBy(way);
    EXPECT_THAT(result.output, HasSubstr(LineOf(std::string("by SIG") + ::sigabbrev_np(signal), way)));
    EXPECT_EQ(result.signal, signal) << way;
  }
}

TEST(ADriverThatClosesAllDescriptors, IsNamed) {
  const ProgramResult ended = EndBy("CloseAllAndExit");
  EXPECT_THAT(ended.output, HasSubstr(LineOf(kBehind, "CloseAllAndExit")));
  EXPECT_EQ(ended.exitStatus, 1);
  const ProgramResult crashed = EndBy("CloseAllAndSegv");
  EXPECT_THAT(crashed.output, HasSubstr(" during command \"CloseAllAndSegv\" of driver 5 \"deadly5\""));
  EXPECT_NE(crashed.exitStatus + crashed.signal, 0);
}

TEST(ADriverThatEndsTheThreadOfTheHost, IsNamedAndNeverSucceeds) {
  for (const std::string way : {"EndThread", "CancelThread"}) {
    const ProgramResult result = EndBy(way);
    EXPECT_THAT(result.output, HasSubstr("devhost: the process lost its thread during command \"" + way +
                                         "\" of driver 5 \"deadly5\", by pthread_exit or the like; "));
    EXPECT_EQ(result.exitStatus, 1) << way;
  }
}

TEST(AWatchedProcess, HasTheStatusThatItTells) {
  EXPECT_EXIT(
      {
        WatchedProcess::Begin();
        WatchedProcess::TellEnd(2);
        std::_Exit(2);
      },
      ExitedWithCode(2), "^$");
}

TEST(AWatchedProcess, KeepsAWorseStatusThatItGetsAfterThat) {
  EXPECT_EXIT(
      {
        WatchedProcess::Begin();
        WatchedProcess::TellEnd(0);
        std::_Exit(23);  // as a checker for leaks ends it
      },
      ExitedWithCode(23), "^$");
}

TEST(AWatchedProcess, HasTheStatusThatWasSetForDriversThatEndIt) {
  EXPECT_EXIT(
      {
        WatchedProcess::Begin();
        EndWatch::SetExitStatus(2);
        ::syscall(SYS_exit_group, 0);
      },
      ExitedWithCode(2), "behind the host's back, .*, outside of any call");
}

TEST(AWatchedProcess, EndsByTheSignalThatIsSentToIt) {
  EXPECT_EXIT(
      {
        const pid_t watcher = ::getpid();
        WatchedProcess::Begin();
        if (::fork() == 0) {
          ::kill(watcher, SIGTERM);  // as somebody else than the process that is watched
          std::_Exit(0);
        }
        for (;;) {
          ::pause();
        }
      },
      KilledBySignal(SIGTERM), "^$");
}

TEST(AWatchedProcess, SaysItsEndByASignalThatItSendsToItsGroup) {
  EXPECT_EXIT(
      {
        ::setpgid(0, 0);
        WatchedProcess::Begin();
        ::kill(0, SIGTERM);
        for (;;) {
          ::pause();
        }
      },
      KilledBySignal(SIGTERM), "the process was ended by SIGTERM, outside of any call");
}

TEST(AWatchedProcess, SaysItsEndByASignalThatItSendsToTheOneThatWatches) {
  EXPECT_EXIT(
      {
        WatchedProcess::Begin();
        ::kill(::getppid(), SIGTERM);
        for (;;) {
          ::pause();
        }
      },
      KilledBySignal(SIGTERM), "the process was ended by SIGTERM, outside of any call");
}

TEST(AWatchedProcess, GetsTheSignalsThatAreSentToIt) {
  EXPECT_EXIT(
      {
        const pid_t watcher = ::getpid();
        WatchedProcess::Begin();
        ::signal(SIGUSR1, [](int) { std::_Exit(5); });
        ::kill(watcher, SIGUSR1);
        for (;;) {
          ::pause();
        }
      },
      ExitedWithCode(5), "");
}

TEST(AWatchedProcess, DiesWithTheOneThatWatches) {
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  const pid_t watcher = ::fork();
  if (watcher == 0) {
    ::close(ends[0]);
    WatchedProcess::Begin();
    static_cast<void>(::write(ends[1], "x", 1) == 1);
    for (;;) {
      ::pause();
    }
  }
  ::close(ends[1]);
  char letter = 0;
  EXPECT_EQ(::read(ends[0], &letter, 1), 1);
  ::kill(watcher, SIGKILL);
  ::waitpid(watcher, nullptr, 0);
  // The end of the pipe is that of the child.
  EXPECT_EQ(::read(ends[0], &letter, 1), 0);
  ::close(ends[0]);
}

TEST(AWatchedProcess, StopsAndGoesOnTogetherWithTheOneThatWatches) {
  const pid_t watcher = ::fork();
  if (watcher == 0) {
    WatchedProcess::Begin();
    // The system ignores what a terminal sends to stop a process in a session that has no shell.
    ::raise(SIGSTOP);
    WatchedProcess::TellEnd(0);
    std::_Exit(0);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(watcher, &status, WUNTRACED), watcher);
  EXPECT_TRUE(WIFSTOPPED(status)) << status;
  ::kill(watcher, SIGCONT);
  ASSERT_EQ(::waitpid(watcher, &status, 0), watcher);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
}

// Whether the process comes into that state, or out of it, in the time that a busy machine needs.
bool Becomes(pid_t process, char state, bool isIn = true) {
  for (int i = 0; i != 6000; ++i) {
    if ((StateOf(process) == state) == isIn) {
      return true;
    }
    ::usleep(10000);
  }
  return false;
}

TEST(AWatchedProcess, LetsTheOneThatWatchesGoOnWhenItIsStoppedByItsId) {
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  const pid_t watcher = ::fork();
  if (watcher == 0) {
    WatchedProcess::Begin();
    const pid_t self = ::getpid();
    static_cast<void>(::write(ends[1], &self, sizeof self) == sizeof self);
    for (;;) {
      ::pause();
    }
  }
  pid_t watched = 0;
  ASSERT_EQ(::read(ends[0], &watched, sizeof watched), static_cast<ssize_t>(sizeof watched));
  for (int i = 0; i != 2; ++i) {
    ::kill(watched, SIGSTOP);
    EXPECT_TRUE(Becomes(watcher, 'T'));
    ::kill(watched, SIGCONT);
    EXPECT_TRUE(Becomes(watcher, 'T', false));
  }
  EXPECT_TRUE(Becomes(watched, 'S') && Becomes(watcher, 'S')) << "they wake each other";
  ::kill(watcher, SIGTERM);
  ::kill(watcher, SIGCONT);
  int status = 0;
  ASSERT_EQ(::waitpid(watcher, &status, 0), watcher);
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM) << status;
  ::close(ends[0]);
  ::close(ends[1]);
}

bool HasEcho() {
  struct termios modes = {};
  return ::tcgetattr(STDIN_FILENO, &modes) == 0 && (modes.c_lflag & ECHO) != 0;
}

// How a terminal is left by a watched process that switches echo off. 0 stands for "with echo".
int StatusAfterEchoIsOff(bool isTold) {
  int terminal = -1;
  const pid_t session = ::forkpty(&terminal, nullptr, nullptr, nullptr);
  if (session == 0) {
    // A terminal whose session ends is of no use, so this process looks at it and another one is watched.
    const pid_t watcher = ::fork();
    if (watcher == 0) {
      WatchedProcess::Begin();
      struct termios modes = {};
      ::tcgetattr(STDIN_FILENO, &modes);
      modes.c_lflag &= ~static_cast<tcflag_t>(ECHO | ICANON | ISIG);
      ::tcsetattr(STDIN_FILENO, TCSANOW, &modes);
      if (isTold) {
        WatchedProcess::TellEnd(0);
      }
      ::syscall(SYS_exit_group, HasEcho() ? 9 : 0);
    }
    int status = 0;
    const bool hasEnded = ::waitpid(watcher, &status, 0) == watcher && WIFEXITED(status);
    const bool isRight = hasEnded && WEXITSTATUS(status) == (isTold ? 0 : 1);
    ::syscall(SYS_exit_group, !isRight ? 2 : HasEcho() ? 0 : 1);
  }
  int status = 0;
  EXPECT_EQ(::waitpid(session, &status, 0), session);
  ::close(terminal);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(AWatchedProcess, LeavesTheTerminalAsItWasWhenItEndsEarly) {
  EXPECT_EQ(StatusAfterEchoIsOff(false), 0);
}

TEST(AWatchedProcess, LeavesTheTerminalAsItHasSetItWhenItsWorkIsDone) {
  EXPECT_EQ(StatusAfterEchoIsOff(true), 1);
}

TEST(AWatchedProcess, LearnsTheEndWhereEndsOfChildrenAreIgnored) {
  EXPECT_EXIT(
      {
        ::signal(SIGCHLD, SIG_IGN);
        WatchedProcess::Begin();
        std::_Exit(::signal(SIGCHLD, SIG_DFL) == SIG_IGN ? 4 : 5);
      },
      ExitedWithCode(4), "");
}

TEST(AChildOfAWatchedProcess, DoesNotSayItsEnd) {
  EXPECT_EXIT(
      {
        WatchedProcess::Begin();
        const EndNote note("command \"Fork\"", "driver 5 \"deadly5\"");
        const pid_t child = ::fork();
        if (child == 0) {
          const EndNote inner("creation", "driver 6 \"copy6\"");
          WatchedProcess::TellEnd(0);
          ::syscall(SYS_exit_group, 0);
        }
        ::waitpid(child, nullptr, 0);
        ::syscall(SYS_exit_group, 0);
      },
      ExitedWithCode(1), " during command \"Fork\" of driver 5 \"deadly5\"");
}

TEST(AProcessThatIsDebugged, IsNotWatched) {
  EXPECT_EXIT(
      {
        const pid_t self = ::getpid();
        int ends[2];
        static_cast<void>(::pipe(ends) == 0);
        const pid_t debugger = ::fork();
        if (debugger == 0) {
          ::ptrace(PTRACE_SEIZE, self, nullptr, nullptr);
          static_cast<void>(::write(ends[1], "x", 1) == 1);
          int status = 0;
          while (::waitpid(self, &status, 0) == self && !WIFEXITED(status)) {
            ::ptrace(PTRACE_CONT, self, nullptr, nullptr);
          }
          std::_Exit(0);
        }
        ::prctl(PR_SET_PTRACER, debugger);
        char letter = 0;
        static_cast<void>(::read(ends[0], &letter, 1) == 1);
        WatchedProcess::Begin();
        std::_Exit(::getpid() == self ? 6 : 7);
      },
      ExitedWithCode(6), "");
}

}  // namespace
}  // namespace devhost
