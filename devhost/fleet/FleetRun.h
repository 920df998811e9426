#ifndef DEVHOST_FLEET_FLEET_RUN_H
#define DEVHOST_FLEET_FLEET_RUN_H

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace devhost {

// What is to be done with one device: a program that is run for it.
struct FleetTask {
  std::vector<std::string> words;  // the program, a path, then its arguments
  std::string input;               // what it gets as standard input
  std::string alone;               // of tasks that hold the same text here, one runs at a time; "" for any number
  bool isDone = false;             // by an earlier run: it is not run
};

// How the program of one device has ended.
struct FleetEnd {
  int exitStatus = 0;    // of a program that ended by itself
  int signal = 0;        // that ended it, or 0
  bool isLate = false;   // ended at the deadline
  bool tooLong = false;  // ended because it wrote too much
  std::string output;    // standard output and standard error
};

// What has become of one device.
struct FleetResult {
  enum class Kind {
    Good,         // all is as it should be
    Differs,      // what was looked for was found: something would change, has drifted and so on
    Failed,       // nobody knows, or it was not done
    Interrupted,  // it was ended by a signal to this program, at whatever point it was
    NotStarted    // a wave before had failed, or a signal came
  };

  Kind kind = Kind::NotStarted;
  std::string verdict;  // one word
  std::string reason;   // on one line; "" when there is nothing to say
  std::string answer;   // a JSON object; "" when there is none
  std::chrono::milliseconds time = {};
};

// How many run at once, for how long, and in which waves.
struct FleetLimits {
  std::size_t jobs = 1;
  std::chrono::milliseconds deadline = std::chrono::minutes(5);  // for one device
  std::vector<std::size_t> waves;  // how many tasks have had their turn after each, the last one all of them
  bool stopsAtFailure = false;     // no other task is started once one has failed
};

// Understands the end of a program; it sets kind, verdict, reason and answer.
using JudgeEnd = std::function<FleetResult(const FleetEnd& end)>;
// Hears of a task that has come to its end, `number` counted from 0, in `wave`, counted from 1.
using TellResult = std::function<void(std::size_t number, std::size_t wave, const FleetResult& result)>;

// What has become of all of them.
struct FleetOutcome {
  std::vector<FleetResult> results;  // by the number of the task
  int signal = 0;                    // that has ended the run before its time, or 0
};

// Runs the program of each task, several at a time, each as a KeptProcess, so nothing of them is left when this returns or
// when this process is killed. Where one has failed and that stops the run, what runs is brought to its end. SIGINT, SIGTERM
// and SIGHUP end all programs that run, and no other one is started; `signal` has it then, and the process goes on.
//
// `tell` may throw: then all programs that run are ended, and the exception passes.
FleetOutcome RunFleet(const std::vector<FleetTask>& tasks, const FleetLimits& limits, const JudgeEnd& judge,
                      const TellResult& tell);

}  // namespace devhost

#endif
