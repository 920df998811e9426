#include "devhost/operations/RestartCommand.h"

#include <gmock/gmock.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <thread>

#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

const testsupport::ScratchFolder folder;

TEST(ARestartCommand, RunsToItsEndWithoutAShell) {
  const std::string made = folder.Path("$HOME; made");
  EXPECT_EQ(RunRestartCommand({"touch", made}), "");
  EXPECT_EQ(::access(made.c_str(), F_OK), 0);
}

TEST(ARestartCommand, SaysHowItHasFailedAndWhatItPrintedLast) {
  EXPECT_EQ(RunRestartCommand({"sh", "-c", "echo first; echo last >&2; echo; exit 3"}), "it has ended with status 3: last");
  EXPECT_EQ(RunRestartCommand({"false"}), "it has ended with status 1");
  EXPECT_EQ(RunRestartCommand({"sh", "-c", "kill -9 $$"}), "signal 9 has ended it");
  EXPECT_EQ(RunRestartCommand({"no-such-program"}), "\"no-such-program\" is not in PATH");
  EXPECT_THAT(RunRestartCommand({folder.Path("")}), AllOf(StartsWith("\""), HasSubstr(" cannot be started: ")));
}

TEST(ARestartCommand, IsKilledAtItsDeadline) {
  EXPECT_THAT(RunRestartCommand({"sleep", "600"}, std::chrono::milliseconds(50)), EndsWith(" and was killed"));
}

TEST(ARestartCommand, HasNothingToRead) {
  EXPECT_EQ(RunRestartCommand({"sh", "-c", "test -z \"$(cat)\""}), "");
}

// A script of the system starts the daemon in the background, with the script's own output.
TEST(ARestartCommand, LeavesTheDaemonThatItStarts) {
  const std::string file = folder.Path("pid");
  ASSERT_EQ(RunRestartCommand({"sh", "-c", "sleep 600 & echo $! > '" + file + "'"}), "");
  const pid_t daemon = std::stoi(folder.Read("pid"));
  EXPECT_EQ(::kill(daemon, 0), 0);
  ::kill(daemon, SIGKILL);
}

}  // namespace
}  // namespace devhost
