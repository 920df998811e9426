// Group "fuzz": random sessions of the tool, and the shortest script that fails like one of them.
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iterator>

#include "devhost/conform/Bench.h"
#include "devhost/conform/Check.h"
#include "devhost/conform/ToolSession.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kSteps = 40;
// At least, and one session more: whoever gives sessions more time has a slow machine, or the patience.
constexpr std::chrono::milliseconds kShrinking = std::chrono::seconds(10);
constexpr char kFinding[] = "finding";

// One thing that the tool does.
struct Step {
  enum class Kind { Set, Manage, GiveUp, List };
  Kind kind;
  ToolSettings settings;  // of Set
};
using Steps = std::vector<Step>;

Steps RandomSteps(Trial& trial) {
  Steps steps;
  steps.reserve(kSteps);
  while (steps.size() != kSteps) {
    const auto die = trial.random() % 8;
    steps.push_back({die < 3    ? Step::Kind::Set
                     : die == 3 ? Step::Kind::Manage
                     : die == 4 ? Step::Kind::GiveUp
                                : Step::Kind::List,
                     {}});
    if (steps.back().kind == Step::Kind::Set) {
      steps.back().settings = RandomToolSettings(trial, 1 + trial.random() % 5);
    }
  }
  return steps;
}

void Do(ToolSession& session, const Step& step) {
  switch (step.kind) {
    case Step::Kind::Set:
      return session.Set(step.settings);
    case Step::Kind::Manage:
      return session.Manage(true);
    case Step::Kind::GiveUp:
      return session.Manage(false);
    case Step::Kind::List:
      return session.ExpectList();
  }
}

void PlayHere(Trial& trial, const Steps& steps) {
  Bench bench(trial);
  ToolSession session(bench);
  for (const Step& step : steps) {
    Do(session, step);
  }
  bench.Stop();
}

// Plays a session in a process of its own, which a device may crash. What went wrong, or "". Whoever waits for this process
// sees a call that hangs; slow ones may take their time.
std::string Play(Trial& trial, const Steps& steps) {
  const std::string finding = trial.folder + "/" + kFinding;
  std::ofstream(finding, std::ios::trunc).close();
  const pid_t process = ::fork();
  if (process == 0) {
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    ::dup2(nowhere, STDOUT_FILENO);
    ::dup2(nowhere, STDERR_FILENO);
    try {
      PlayHere(trial, steps);
    } catch (const Violation& violation) {
      std::ofstream(finding) << violation.what();
    } catch (const std::exception&) {
      // Another check is about that.
    }
    ::_exit(0);
  }
  int status = 0;
  if (process < 0 || ::waitpid(process, &status, 0) != process) {
    throw std::runtime_error("a session cannot be played: there is no process for it");
  }
  if (WIFSIGNALED(status)) {
    return "the process was ended by signal " + std::to_string(WTERMSIG(status));
  }
  std::ifstream file(finding);
  return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

// Leaves out what the failure does not need, first large pieces, then single steps.
Steps Shrunk(Trial& trial, Steps steps, Clock::time_point end) {
  for (std::size_t size = steps.size() / 2; size != 0; size /= 2) {
    for (std::size_t at = 0; at < steps.size() && Clock::now() < end;) {
      Steps fewer(steps.begin(), steps.begin() + static_cast<std::ptrdiff_t>(at));
      const std::size_t rest = std::min(at + size, steps.size());
      fewer.insert(fewer.end(), steps.begin() + static_cast<std::ptrdiff_t>(rest), steps.end());
      if (Play(trial, fewer).empty()) {
        at += size;
      } else {
        steps = fewer;
      }
    }
  }
  return steps;
}

// The session for devhost run, where the device is driver 12.
std::string ScriptOf(const Steps& steps) {
  const std::string id = std::to_string(Bench::kDevice);
  const auto manage = [&id](const char* command) {
    return std::string("command ") + command + " deviceId=" + id + "\nexpect reply is '<deviceId>" + id + "</deviceId>'\n";
  };
  std::string script = "# The agent, and the device as driver " + id + ", which has a file.\n" + manage("AddManagedDevice");
  ToolSettings last;
  for (const Step& step : steps) {
    if (step.kind == Step::Kind::Set) {
      last = step.settings;
      script += "command SetDeviceState xml=" + AsWord(ElementOf(last)) + "\nexpect reply is '<Success/>'\n";
    } else if (step.kind == Step::Kind::List) {
      script += "command GetDeviceList\n";
      for (const auto& values : {last.switches, last.texts}) {
        for (const auto& [name, value] : values) {
          if (IsFromProject(last, name)) {
            continue;
          }
          std::string element = "<";
          element.append(name).append(">").append(value).append("</").append(name).append(">");
          script += "expect reply matches " + AsWord(element) + "\n";
        }
      }
    } else {
      const bool isManaged = step.kind == Step::Kind::Manage;
      script += manage(isManaged ? "AddManagedDevice" : "DeleteManagedDevice");
      if (!last.switches.empty()) {
        last.switches[0].second = isManaged ? "true" : "false";
      }
    }
  }
  return script;
}

void PlaysRandomSessions(Trial& trial) {
  const Clock::time_point end = Clock::now() + trial.sessionTime;
  // What every session begins with: what fails here is what other checks are about.
  PlayHere(trial, {});
  do {
    const Steps steps = RandomSteps(trial);
    const std::string problem = Play(trial, steps);
    if (!problem.empty()) {
      const Steps few = Shrunk(trial, steps, Clock::now() + std::max(kShrinking, trial.sessionTime));
      trial.script = ScriptOf(few);
      const std::string last = Play(trial, few);
      throw Violation((last.empty() ? problem : last) + ", after " + Counted(few.size(), "step"));
    }
  } while (Clock::now() < end);
}

}  // namespace

std::vector<Check> FuzzChecks() {
  return {
      {"fuzz-session", Severity::Contract, Level::Full, "",
       "Random sessions of the tool with the real agent end as they should.",
       "For 20 seconds, or --duration, sessions set, list, manage and give up the device, and each answer is compared with\n"
       "what was sent. A session that fails is cut down and printed as a script for devhost run. What the other checks\n"
       "say comes first.",
       &PlaysRandomSessions},
  };
}

}  // namespace devhost
