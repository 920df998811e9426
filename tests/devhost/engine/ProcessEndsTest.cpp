// The functions that end a process, as drivers call them.
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "tests/devhost/engine/Deadly.h"

namespace devhost {
namespace {

using testing::AllOf;
using testing::AnyOf;
using testing::HasSubstr;
using testing::Not;

void ExpectEnd(const std::string& command, int status, const std::string& where) {
  const ProgramResult result = EndBy(command);
  EXPECT_THAT(result.output,
              AllOf(HasSubstr("devhost: the process was ended" + where + "; drivers return from every call\n"),
                    Not(HasSubstr("still here"))));
  EXPECT_EQ(result.exitStatus, status) << command;
  EXPECT_EQ(result.signal, 0);
}

TEST(ADriverThatEndsTheProcess, IsNamedWithTheCallAndNeverSucceeds) {
  for (const char* const way : {"Exit", "QuickExit", "UnderscoreExit", "UnderscoreBigExit"}) {
    ExpectEnd(way, 1, std::string(" during command \"") + way + "\" of driver 5 \"deadly5\"");
  }
  ExpectEnd("ExitWithSeven", 7, " during command \"ExitWithSeven\" of driver 5 \"deadly5\"");
}

TEST(ADriverThatEndsTheProcess, IsNamedWhenItsModuleIsLoaded) {
  ::setenv("DEADLY_WHEN_LOADED", "1", 1);
  ExpectEnd("Exit", 1, " during loading of driver 5 \"deadly5\"");
  ::unsetenv("DEADLY_WHEN_LOADED");
}

TEST(ADriverThatEndsTheProcess, IsNamedWhenItsModuleIsUnloaded) {
  const ProgramResult result = EndBy("ExitWhenUnloaded");
  EXPECT_THAT(result.output,
              HasSubstr("unload deadly5\ndevhost: the process was ended during unloading of driver 5 \"deadly5\"; "
                        "drivers return from every call\n"));
  EXPECT_EQ(result.exitStatus, 1);
}

#ifndef TESTS_UNDER_ADDRESS_SANITIZER  // whose own functions stand in front of these
TEST(ADriverThatEndsTheProcessWhileTheHostIsIdle, IsNamedAndNeverSucceeds) {
  for (const char* const way : {"Later:Exit", "Later:QuickExit", "Later:UnderscoreExit", "Later:UnderscoreBigExit"}) {
    ExpectEnd(way, 1, " by driver 5 \"deadly5\", outside of any call");
  }
}
#endif

TEST(ADriverThatMakesTheProcessADaemon, IsNamedAndNeverSucceeds) {
  const ProgramResult result = EndBy("Daemon");
  // The copy says so itself, unless the process that watches from outside has killed it before.
  EXPECT_THAT(result.output,
              AllOf(AnyOf(HasSubstr("was copied by fork during command \"Daemon\" of driver 5 \"deadly5\""),
                          HasSubstr("was ended behind the host's back")),
                    HasSubstr(" during command \"Daemon\" of driver 5 \"deadly5\"; drivers return from every call\n"),
                    Not(HasSubstr("still here"))));
  EXPECT_EQ(result.exitStatus, 1);
}

TEST(AChildOfADriver, MayEndAsItLikes) {
  const ProgramResult result = EndBy("ForkAndExit");
  EXPECT_THAT(result.output, AllOf(HasSubstr("still here"), Not(HasSubstr("the process was ended"))));
  EXPECT_EQ(result.exitStatus, 0);
}

TEST(AProcessWithoutAHost, EndsWithItsStatus) {
  EXPECT_EXIT(std::exit(0), testing::ExitedWithCode(0), "^$");
  EXPECT_EXIT(std::quick_exit(0), testing::ExitedWithCode(0), "^$");
  EXPECT_EXIT(::_exit(0), testing::ExitedWithCode(0), "^$");
  EXPECT_EXIT(std::_Exit(3), testing::ExitedWithCode(3), "^$");
  EXPECT_EXIT(std::abort(), testing::KilledBySignal(SIGABRT), "^$");
}

}  // namespace
}  // namespace devhost
