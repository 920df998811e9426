#include "devhost/engine/EndWatch.h"

#include <gmock/gmock.h>
#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <thread>

#include "devhost/engine/EndNote.h"
#include "tests/devhost/engine/Deadly.h"
#include "tests/devhost/support/HostFixture.h"

namespace devhost {
namespace {

using testing::AllOf;
using testing::ExitedWithCode;
using testing::HasSubstr;
using testing::Not;

const char kTitle[] = "driver 5 \"rude5\"";
const char kExit[] =
    "^devhost: the process was ended during command \"Exit\" of driver 5 \"rude5\"; drivers return from every call\n$";

// The line of the watch, with what a crash has done and where.
void ExpectCrash(const std::string& command, [[maybe_unused]] int signal, const std::string& line) {
  const ProgramResult result = EndBy(command);
  EXPECT_THAT(result.output, AllOf(HasSubstr("devhost: the process " + line + "\n"), Not(HasSubstr("still here")),
                                   Not(HasSubstr("what()"))));
#ifdef TESTS_UNDER_ADDRESS_SANITIZER
  EXPECT_NE(result.exitStatus + result.signal, 0);
#else
  EXPECT_EQ(result.signal, signal);
#endif
}

TEST(AProcessThatEndsDuringACall, NamesTheCallAndHasAFailedStatus) {
  EXPECT_EXIT(
      {
        const EndWatch watch;
        const EndNote note("command \"Exit\"", kTitle);
        std::exit(0);
      },
      ExitedWithCode(1), kExit);
}

TEST(AProcessThatEndsDuringACall, NamesTheInnermostOne) {
  EXPECT_EXIT(
      {
        const EndWatch watch;
        const EndNote outer("stop", kTitle);
        const EndNote note("command \"Exit\"", kTitle);
        std::exit(0);
      },
      ExitedWithCode(1), kExit);
}

TEST(AProcessThatEndsDuringACall, KeepsAStatusThatIsNot0) {
  EXPECT_EXIT(
      {
        const EndWatch watch;
        const EndNote note("command \"Exit\"", kTitle);
        std::exit(3);
      },
      ExitedWithCode(3), kExit);
}

TEST(AProcessThatEndsDuringACall, HasTheStatusThatWasSet) {
  EXPECT_EXIT(
      {
        EndWatch::SetExitStatus(2);
        const EndWatch watch;
        const EndNote note("command \"Exit\"", kTitle);
        std::exit(0);
      },
      ExitedWithCode(2), kExit);
}

TEST(AProcessThatEndsDuringACall, NamesNoneThatHasEnded) {
  EXPECT_EXIT(
      {
        const EndWatch watch;
        const EndNote note("command \"Exit\"", kTitle);
        { const EndNote inner("creation", kTitle); }
        std::exit(0);
      },
      ExitedWithCode(1), kExit);
}

TEST(AProcessThatEndsAfterACall, SaysNothing) {
  EXPECT_EXIT(
      {
        const EndWatch watch;
        { const EndNote note("creation", kTitle); }
        std::exit(0);
      },
      ExitedWithCode(0), "^$");
}

TEST(AProcessThatEndsAfterTheWatch, SaysNothing) {
  EXPECT_EXIT(
      {
        { const EndWatch watch; }
        const EndNote note("creation", kTitle);
        std::exit(0);
      },
      ExitedWithCode(0), "^$");
}

TEST(AForkedProcess, MayEndAsItLikes) {
  EXPECT_EXIT(
      {
        const EndWatch watch;
        const EndNote note("creation", kTitle);
        if (::fork() == 0) {
          std::exit(0);
        }
        { const EndNote inner("command \"Exit\"", kTitle); }
        ::_exit(3);
      },
      ExitedWithCode(3), "^devhost: the process was ended during creation of driver 5 \"rude5\"; .*\n$");
}

TEST(AProcessThatIsTerminatedDuringACall, NamesItBeforeTheHandlerOfBefore) {
  EXPECT_EXIT(
      {
        std::set_terminate([] {
          std::fputs("handler of before\n", stderr);
          std::_Exit(7);
        });
        const EndWatch watch;
        const EndNote outer("stop", kTitle);
        const EndNote note("destruction", kTitle);
        std::terminate();
      },
      ExitedWithCode(7),
      "^devhost: the process was terminated during destruction of driver 5 \"rude5\"; .*\nhandler of before\n$");
}

TEST(AProcessThatIsTerminatedAfterTheWatch, IsInTheHandsOfTheHandlerOfBefore) {
  const std::terminate_handler before = std::get_terminate();
  {
    const EndWatch watch;
    EXPECT_NE(std::get_terminate(), before);
  }
  EXPECT_EQ(std::get_terminate(), before);
}

TEST(AProcessThatCrashesAfterTheWatch, IsInTheHandsOfTheHandlerOfBefore) {
  struct sigaction before = {};
  struct sigaction during = {};
  struct sigaction after = {};
  ::sigaction(SIGSEGV, nullptr, &before);
  {
    const EndWatch watch;
    ::sigaction(SIGSEGV, nullptr, &during);
  }
  ::sigaction(SIGSEGV, nullptr, &after);
  EXPECT_NE(during.sa_sigaction, before.sa_sigaction);
  EXPECT_EQ(after.sa_sigaction, before.sa_sigaction);
}

TEST(ADriver, CannotEndTheProcessWithSuccess) {
  EXPECT_EXIT(
      {
        RecordingObserver observer;
        Host host(observer);
        host.Load(TestDriver(5, "rude"));
        host.Command(5, "Exit", {});
      },
      ExitedWithCode(1), kExit);
}

TEST(ADriver, EndsTheProcessWithItsNameWhenItsDestructorThrows) {
  EXPECT_DEATH(
      {
        RecordingObserver observer;
        Host host(observer);
        host.Load(TestDriver(5, "throws_in_destructor"));
        host.Stop();
      },
      "the process was terminated during destruction of driver 5 \"throws_in_destructor5\"");
}

TEST(ACrash, NamesTheCallAndKeepsItsSignal) {
  ExpectCrash("Segv", SIGSEGV,
              "crashed (SIGSEGV: an access to memory that is not there) during command \"Segv\" of driver 5 \"deadly5\"");
  ExpectCrash("Bus", SIGBUS,
              "crashed (SIGBUS: an access to memory that is not there) during command \"Bus\" of driver 5 \"deadly5\"");
  ExpectCrash("Fpe", SIGFPE, "crashed (SIGFPE: an impossible calculation) during command \"Fpe\" of driver 5 \"deadly5\"");
  ExpectCrash("Ill", SIGILL, "crashed (SIGILL: an impossible instruction) during command \"Ill\" of driver 5 \"deadly5\"");
  ExpectCrash("Abort", SIGABRT, "was aborted (SIGABRT) during command \"Abort\" of driver 5 \"deadly5\"");
}

TEST(ACrash, AtTheEndOfTheStackNamesTheCall) {
  ExpectCrash("Recurse", SIGSEGV,
              "crashed (SIGSEGV: an access to memory that is not there) during command \"Recurse\" of driver 5 \"deadly5\"");
}

TEST(ACrash, WhileTheHostIsIdleNamesTheDriverOfTheCode) {
  ExpectCrash("Later:Segv", SIGSEGV,
              "crashed (SIGSEGV: an access to memory that is not there) in the code of driver 5 \"deadly5\", outside of any "
              "call");
  ExpectCrash("Later:Abort", SIGABRT, "was aborted (SIGABRT) in the code of driver 5 \"deadly5\", outside of any call");
}

TEST(ACrash, OfASignalThatTheParentIgnoresOrBlocksNamesTheCall) {
  const ProgramResult result = EndBy("Bus", "trap '' BUS");
  EXPECT_THAT(result.output,
              AllOf(HasSubstr(" during command \"Bus\" of driver 5 \"deadly5\"\n"), Not(HasSubstr("still here"))));
  EXPECT_NE(result.exitStatus + result.signal, 0);
  EXPECT_EXIT(
      {
        sigset_t all;
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_SETMASK, &all, nullptr);
        const EndWatch watch;
        const EndNote note("command \"Bus\"", kTitle);
        ::raise(SIGILL);  // which no sanitizer takes
      },
      testing::KilledBySignal(SIGILL), " during command \"Bus\" of driver 5 \"rude5\"");
}

TEST(ACrash, WithStandardErrorClosedNamesTheCall) {
  const ProgramResult result = EndBy("Segv", "exec 2>&-");
  EXPECT_THAT(result.output, HasSubstr(" during command \"Segv\" of driver 5 \"deadly5\"\n"));
  EXPECT_NE(result.exitStatus + result.signal, 0);
  // A file of the driver's has the number of each output.
  ExpectCrash("CloseOutputsAndSegv", SIGSEGV,
              "crashed (SIGSEGV: an access to memory that is not there) during command \"CloseOutputsAndSegv\" of driver 5 "
              "\"deadly5\"");
}

#ifndef TESTS_UNDER_ADDRESS_SANITIZER  // whose own functions stand in front of these
TEST(ACrash, ThatADriverWouldHideNamesTheCall) {
  for (const char* const way : {"IgnoreAndSegv", "LeaveToTheSystemAndSegv", "HandleAndSegv"}) {
    ExpectCrash(way, SIGSEGV,
                "crashed (SIGSEGV: an access to memory that is not there) during command \"" + std::string(way) +
                    "\" of driver 5 \"deadly5\"");
  }
}
#endif

TEST(ACopyOfTheProcess, IsEndedWhenItReturnsFromACall) {
  const std::string line =
      "devhost: the process was copied by fork during command \"ForkAndReturn\" of driver 5 \"deadly5\", and the copy was "
      "ended; a child process does not return into the host\n";
  const std::string output = EndBy("ForkAndReturn").output;
  EXPECT_THAT(output, HasSubstr(line));
  EXPECT_EQ(output.find("still here"), output.rfind("still here"));
  EXPECT_THAT(output, HasSubstr("still here"));
}

TEST(ACopyOfTheProcess, DoesNotGoOnInItsPlace) {
  const ProgramResult result = EndBy("GoOnInAChild");
  EXPECT_THAT(result.output,
              AllOf(HasSubstr("was copied by fork during"), HasSubstr("was ended during"), Not(HasSubstr("still here"))));
  EXPECT_EQ(result.exitStatus, 1);
}

TEST(AnExceptionInAThread, NamesTheDriverThatThrew) {
  const std::string end = "; an exception must not leave a destructor or thread of a driver";
  ExpectCrash(
      "Throw", SIGABRT,
      "was terminated by driver 5 \"deadly5\", on a second thread, during command \"Throw\" of driver 5 \"deadly5\"" + end);
  ExpectCrash("Later:Throw", SIGABRT, "was terminated by driver 5 \"deadly5\", outside of any call" + end);
}

}  // namespace
}  // namespace devhost
