#include "devhost/fleet/FleetRun.h"

#include <gmock/gmock.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>
#include <string>

#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::UnorderedElementsAre;
using Kind = FleetResult::Kind;

class AFleet : public testing::Test {
 protected:
  AFleet() { limits.jobs = 4; }

  void Add(const std::string& script) {
    FleetTask task;
    task.words = {"/bin/sh", "-c", script};
    tasks.push_back(task);
  }

  std::vector<Kind> Run() {
    if (limits.waves.empty()) {
      limits.waves = {tasks.size()};
    }
    outcome = RunFleet(tasks, limits, &Judge, [this](std::size_t number, std::size_t wave, const FleetResult&) {
      told.emplace_back(number, wave);
    });
    std::vector<Kind> kinds;
    kinds.reserve(outcome.results.size());
    for (const FleetResult& result : outcome.results) {
      kinds.push_back(result.kind);
    }
    return kinds;
  }

  static FleetResult Judge(const FleetEnd& end) {
    FleetResult result;
    result.kind = end.isLate || end.signal != 0 || end.exitStatus > 1 ? Kind::Failed
                  : end.exitStatus == 1                               ? Kind::Differs
                                                                      : Kind::Good;
    return result;
  }

  const testsupport::ScratchFolder folder;
  std::vector<FleetTask> tasks;
  FleetLimits limits;
  FleetOutcome outcome;
  std::vector<std::pair<std::size_t, std::size_t>> told;
};

TEST_F(AFleet, KeepsTheResultsOfAllWhenOneFails) {
  Add(":");
  Add("exit 2");
  Add("exit 1");
  Add("kill -KILL $$");
  Add(":");
  EXPECT_THAT(Run(), ElementsAre(Kind::Good, Kind::Failed, Kind::Differs, Kind::Failed, Kind::Good));
  EXPECT_EQ(told.size(), 5U);
}

TEST_F(AFleet, RunsAsManyAtATimeAsItMay) {
  limits.jobs = 3;
  for (int i = 0; i != 9; ++i) {
    // Each leaves a trace of how many ran with it: once three do, as the first ones wait to see, and a moment later.
    Add("cd " + folder.Path() +
        "; : >run.$$; n=0; until ls run.* | wc -l >seen.$$; [ \"$(cat seen.$$)\" -ge 3 ] || [ -e three ] || "
        "[ $((n += 1)) -gt 1000 ]; do sleep 0.01; done; echo 0 >three; sleep 0.1; ls run.* | wc -l >late.$$; rm run.$$");
  }
  EXPECT_THAT(Run(), Each(Kind::Good));
  std::size_t most = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder.Path())) {
    most = std::max(most, static_cast<std::size_t>(std::stoul(testsupport::ScratchFolder::ReadFile(entry.path()))));
  }
  EXPECT_EQ(most, 3U);
}

TEST_F(AFleet, RunsOneAtATimeOfThoseThatShareSomething) {
  for (int i = 0; i != 4; ++i) {
    Add("mkdir " + folder.Path("taken") + " && sleep 0.05 && rmdir " + folder.Path("taken"));
    tasks.back().alone = "state";
  }
  EXPECT_THAT(Run(), Each(Kind::Good));
}

TEST_F(AFleet, StopsWhereOneHasFailedAndBringsWhatRunsToItsEnd) {
  limits.stopsAtFailure = true;
  limits.jobs = 2;
  // The second one ends when the first one has failed, the third one would have begun then.
  Add("exit 2");
  Add("n=0; until [ $((n += 1)) -gt 50 ]; do sleep 0.01; done; : >" + folder.Path("ended"));
  Add(": >" + folder.Path("begun"));
  Add(":");
  limits.waves = {3, 4};
  EXPECT_THAT(Run(), ElementsAre(Kind::Failed, Kind::Good, Kind::NotStarted, Kind::NotStarted));
  EXPECT_THAT(told, UnorderedElementsAre(std::pair(0U, 1U), std::pair(1U, 1U)));
  EXPECT_TRUE(std::filesystem::exists(folder.Path("ended")));
  EXPECT_FALSE(std::filesystem::exists(folder.Path("begun")));
}

TEST_F(AFleet, GoesOnAfterAFailureWhereThatDoesNotStopIt) {
  Add("exit 2");
  Add(":");
  limits.waves = {1, 2};
  EXPECT_THAT(Run(), ElementsAre(Kind::Failed, Kind::Good));
}

TEST_F(AFleet, GoesOnAfterAWaveInWhichSomethingWasFound) {
  Add("exit 1");
  Add(":");
  limits.waves = {1, 2};
  EXPECT_THAT(Run(), ElementsAre(Kind::Differs, Kind::Good));
}

TEST_F(AFleet, LeavesOutWhatIsDone) {
  Add(": >" + folder.Path("ran"));
  tasks.back().isDone = true;
  EXPECT_THAT(Run(), ElementsAre(Kind::Good));
  EXPECT_EQ(outcome.results[0].verdict, "done-before");
  EXPECT_FALSE(std::filesystem::exists(folder.Path("ran")));
}

TEST_F(AFleet, EndsAProgramAtItsDeadline) {
  Add("exec sleep 1000");
  Add(":");
  std::vector<Kind> kinds(2, Kind::Failed);
  // On a busy machine, a short time may be over before the other program has ended.
  for (limits.deadline = std::chrono::milliseconds(300);
       kinds[1] == Kind::Failed && limits.deadline < std::chrono::minutes(1); limits.deadline *= 2) {
    kinds = Run();
    EXPECT_EQ(kinds[0], Kind::Failed);
  }
  EXPECT_EQ(kinds[1], Kind::Good);
}

TEST_F(AFleet, SaysThatAProgramCannotBeStarted) {
  FleetTask task;
  task.words = {"/proc/none/program"};
  tasks.push_back(task);
  EXPECT_THAT(Run(), ElementsAre(Kind::Failed));
  EXPECT_EQ(outcome.results[0].reason, "cannot be started: No such file or directory");
}

TEST_F(AFleet, EndsEverythingAtASignalAndSaysWhatWasNotDone) {
  Add(":");
  // Sends the signal once the one beside it runs.
  Add("until [ -e " + folder.Path("runs") + " ]; do sleep 0.01; done; kill -TERM " + std::to_string(::getpid()) +
      "; exec sleep 1000");
  Add(": >" + folder.Path("runs") + "; exec sleep 1000");
  Add(":");
  limits.waves = {1, 3, 4};
  EXPECT_THAT(Run(), ElementsAre(Kind::Good, Kind::Interrupted, Kind::Interrupted, Kind::NotStarted));
  EXPECT_EQ(outcome.signal, SIGTERM);
  // The process has not got it, and gets the next one as ever.
  struct sigaction action = {};
  ::sigaction(SIGTERM, nullptr, &action);
  EXPECT_EQ(action.sa_handler, SIG_DFL);
  sigset_t blocked;
  ::pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
  EXPECT_EQ(::sigismember(&blocked, SIGTERM), 0);
}

TEST_F(AFleet, EndsEverythingWhenNobodyCanBeTold) {
  Add(":");
  Add("exec sleep 1000");
  limits.waves = {2};
  EXPECT_THROW(RunFleet(tasks, limits, &Judge,
                        [](std::size_t, std::size_t, const FleetResult&) { throw std::runtime_error("full"); }),
               std::runtime_error);
}

}  // namespace
}  // namespace devhost
