#include "devhost/fleet/FleetChild.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <string>
#include <system_error>
#include <thread>

namespace devhost {
namespace {

using Clock = FleetChild::Clock;

FleetTask Shell(const std::string& script, const std::string& input = "") {
  FleetTask task;
  task.words = {"/bin/sh", "-c", script};
  task.input = input;
  return task;
}

FleetEnd EndOf(const FleetTask& task, std::chrono::milliseconds deadline = std::chrono::seconds(60)) {
  FleetChild child(task, Clock::now() + deadline);
  std::optional<FleetEnd> end;
  while (!(end = child.Look())) {
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return *end;
}

TEST(AProgramOfAFleet, GetsItsInputAndGivesItsOutputAndStatus) {
  const FleetEnd end = EndOf(Shell("cat; echo more >&2; exit 3", "text\n"));
  EXPECT_EQ(end.output, "text\nmore\n");
  EXPECT_EQ(end.exitStatus, 3);
  EXPECT_EQ(end.signal, 0);
  EXPECT_FALSE(end.isLate);
}

TEST(AProgramOfAFleet, GivesAllOfALongOutput) {
  EXPECT_EQ(EndOf(Shell("head -c 3000000 /dev/zero")).output.size(), 3000000U);
}

TEST(AProgramOfAFleet, IsEndedWhenItPrintsTooMuch) {
  const FleetEnd end = EndOf(Shell("cat /dev/zero"));
  EXPECT_TRUE(end.tooLong);
  EXPECT_EQ(end.output.size(), std::size_t{16} * 1024 * 1024);
}

TEST(AProgramOfAFleet, IsEndedAtItsDeadline) {
  const FleetEnd end = EndOf(Shell("echo begun; exec sleep 1000"), std::chrono::milliseconds(300));
  EXPECT_TRUE(end.isLate);
  EXPECT_EQ(end.signal, SIGKILL);
}

TEST(AProgramOfAFleet, SaysBySignalHowItHasEnded) {
  EXPECT_EQ(EndOf(Shell("kill -TERM $$")).signal, SIGTERM);
}

TEST(AProgramOfAFleet, ThatIsNotThereIsAnError) {
  FleetTask task;
  task.words = {"/proc/none/program"};
  EXPECT_THROW(FleetChild(task, Clock::now()), std::system_error);
}

}  // namespace
}  // namespace devhost
