#include "devhost/fleet/FleetRun.h"

#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>

#include <algorithm>
#include <cerrno>
#include <list>
#include <memory>
#include <system_error>
#include <utility>

#include "devhost/fleet/FleetChild.h"
#include "devhost/system/FileDescriptor.h"

namespace devhost {

namespace {

using Clock = FleetChild::Clock;
using Kind = FleetResult::Kind;

// Signals that end the run wait here for as long as it lives.
class EndSignals {
 public:
  EndSignals() {
    sigset_t signals;
    ::sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
      ::sigaddset(&signals, signal);
    }
    ::pthread_sigmask(SIG_BLOCK, &signals, &m_before);
    m_event = FileDescriptor(::signalfd(-1, &signals, SFD_NONBLOCK | SFD_CLOEXEC));
  }
  ~EndSignals() { ::pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
  EndSignals(const EndSignals&) = delete;
  EndSignals& operator=(const EndSignals&) = delete;

  int Event() const { return m_event.Get(); }
  // One that has come, or 0.
  int Take() const {
    signalfd_siginfo info = {};
    return ::read(m_event.Get(), &info, sizeof info) == static_cast<ssize_t>(sizeof info) ? static_cast<int>(info.ssi_signo)
                                                                                          : 0;
  }

 private:
  sigset_t m_before = {};
  FileDescriptor m_event;
};

class Run {
 public:
  Run(const std::vector<FleetTask>& tasks, const FleetLimits& limits, const JudgeEnd& judge, const TellResult& tell)
      : m_tasks(tasks), m_limits(limits), m_judge(judge), m_tell(tell) {
    m_outcome.results.resize(tasks.size());
  }

  FleetOutcome ToItsEnd() {
    std::size_t first = 0;
    for (const std::size_t end : m_limits.waves) {
      ++m_wave;
      RunWave(first, end);
      if (MustStop() || m_outcome.signal != 0) {
        break;
      }
      first = end;
    }
    return std::move(m_outcome);
  }

 private:
  struct Running {
    std::size_t number;
    FleetChild child;
  };

  bool MustStop() const { return m_hasFailed && m_limits.stopsAtFailure; }

  void RunWave(std::size_t first, std::size_t end) {
    for (std::size_t number = first; number != end; ++number) {
      m_waiting.push_back(number);
    }
    while (m_outcome.signal == 0 && (!m_waiting.empty() || !m_running.empty())) {
      StartSome();
      if (!m_running.empty()) {
        Wait();
        Look();
      }
    }
    if (m_outcome.signal != 0) {
      Interrupt();
    }
  }

  void StartSome() {
    if (MustStop()) {
      m_waiting.clear();
    }
    for (auto each = m_waiting.begin(); each != m_waiting.end() && m_running.size() < m_limits.jobs;) {
      const std::size_t number = *each;
      if (IsHeldUp(m_tasks[number])) {
        ++each;
        continue;
      }
      each = m_waiting.erase(each);
      Start(number);
    }
  }

  bool IsHeldUp(const FleetTask& task) const {
    return !task.alone.empty() && std::any_of(m_running.begin(), m_running.end(), [&](const auto& running) {
      return m_tasks[running->number].alone == task.alone;
    });
  }

  void Start(std::size_t number) {
    FleetResult result;
    if (m_tasks[number].isDone) {
      result.kind = Kind::Good;
      result.verdict = "done-before";
      Finish(number, std::move(result));
      return;
    }
    try {
      m_running.push_back(
          std::unique_ptr<Running>(new Running{number, FleetChild(m_tasks[number], Clock::now() + m_limits.deadline)}));
    } catch (const std::system_error& error) {
      result.kind = Kind::Failed;
      result.verdict = "failed";
      result.reason = "cannot be started: " + error.code().message();
      Finish(number, std::move(result));
    }
  }

  void Wait() const {
    std::vector<pollfd> watched = {{m_signals.Event(), POLLIN, 0}};
    watched.reserve(1 + 2 * m_running.size());
    Clock::time_point deadline = Clock::time_point::max();
    for (const std::unique_ptr<Running>& running : m_running) {
      watched.push_back({running->child.Output(), POLLIN, 0});
      watched.push_back({running->child.EndEvent(), POLLIN, 0});
      deadline = std::min(deadline, running->child.Deadline());
    }
    using Milliseconds = std::chrono::milliseconds;
    const Milliseconds left = std::chrono::ceil<Milliseconds>(deadline - Clock::now());
    const Milliseconds wait = std::clamp<Milliseconds>(left, Milliseconds::zero(), std::chrono::hours(1));
    ::poll(watched.data(), watched.size(), static_cast<int>(wait.count()));
  }

  void Look() {
    m_outcome.signal = m_signals.Take();
    for (auto each = m_running.begin(); each != m_running.end();) {
      const std::optional<FleetEnd> end = (*each)->child.Look();
      if (!end) {
        ++each;
        continue;
      }
      const std::unique_ptr<Running> ended = std::move(*each);
      each = m_running.erase(each);
      FleetResult result = m_judge(*end);
      result.time = ended->child.Time();
      Finish(ended->number, std::move(result));
    }
  }

  void Interrupt() {
    while (!m_running.empty()) {
      const std::unique_ptr<Running> ended = std::move(m_running.front());
      m_running.pop_front();
      FleetResult result;
      result.kind = Kind::Interrupted;
      result.verdict = "interrupted";
      result.reason = "ended in the middle";
      result.time = ended->child.Time();
      Finish(ended->number, std::move(result));
    }
  }

  void Finish(std::size_t number, FleetResult result) {
    m_hasFailed = m_hasFailed || result.kind == Kind::Failed;
    m_tell(number, m_wave, result);
    // What was told is not kept: a fleet may be large.
    result.answer.clear();
    m_outcome.results[number] = std::move(result);
  }

  const std::vector<FleetTask>& m_tasks;
  const FleetLimits& m_limits;
  const JudgeEnd& m_judge;
  const TellResult& m_tell;
  const EndSignals m_signals;
  FleetOutcome m_outcome;
  std::list<std::size_t> m_waiting;  // of this wave
  std::list<std::unique_ptr<Running>> m_running;
  std::size_t m_wave = 0;
  bool m_hasFailed = false;
};

}  // namespace

FleetOutcome RunFleet(const std::vector<FleetTask>& tasks, const FleetLimits& limits, const JudgeEnd& judge,
                      const TellResult& tell) {
  return Run(tasks, limits, judge, tell).ToItsEnd();
}

}  // namespace devhost
