#include "devhost/engine/EndNote.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

#include "tests/devhost/support/HostFixture.h"

namespace devhost {
namespace {

using testing::ExitedWithCode;

const char kExit[] =
    "^devhost: the process was ended during command \"Exit\" of driver 5 \"rude5\"; drivers return from every call\n$";

TEST(AProcessThatEndsDuringACall, NamesTheCallAndHasAFailedStatus) {
  EXPECT_EXIT(
      {
        const EndNote note("command \"Exit\" of driver 5 \"rude5\"");
        std::exit(0);
      },
      ExitedWithCode(1), kExit);
}

TEST(AProcessThatEndsDuringACall, NamesTheInnermostOne) {
  EXPECT_EXIT(
      {
        const EndNote outer("stop");
        const EndNote note("command \"Exit\" of driver 5 \"rude5\"");
        std::exit(0);
      },
      ExitedWithCode(1), kExit);
}

TEST(AProcessThatEndsDuringACall, NamesNoneThatHasEnded) {
  EXPECT_EXIT(
      {
        const EndNote note("command \"Exit\" of driver 5 \"rude5\"");
        { const EndNote inner("creation"); }
        std::exit(0);
      },
      ExitedWithCode(1), kExit);
}

TEST(AProcessThatEndsAfterACall, SaysNothing) {
  EXPECT_EXIT(
      {
        { const EndNote note("creation"); }
        std::exit(3);
      },
      ExitedWithCode(3), "^$");
}

TEST(AProcessThatIsTerminatedDuringACall, NamesTheInnermostOneBeforeTheHandlerOfBefore) {
  EXPECT_EXIT(
      {
        std::set_terminate([] {
          std::fputs("handler of before\n", stderr);
          std::_Exit(7);
        });
        const EndNote outer("stop");
        const EndNote note("destruction of driver 5 \"rude5\"");
        std::terminate();
      },
      ExitedWithCode(7),
      "^devhost: the process was terminated during destruction of driver 5 \"rude5\"; .*\nhandler of before\n$");
}

TEST(AProcessThatIsTerminatedAfterACall, IsInTheHandsOfTheHandlerOfBefore) {
  const std::terminate_handler before = std::get_terminate();
  {
    const EndNote outer("stop");
    const EndNote note("creation");
    EXPECT_NE(std::get_terminate(), before);
  }
  EXPECT_EQ(std::get_terminate(), before);
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

}  // namespace
}  // namespace devhost
