#include "devhost/engine/WatchedProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>

#include "devhost/engine/EndLine.h"
#include "devhost/engine/EndRecord.h"

namespace devhost {
namespace {

// A debugger would stay with the process that only waits.
bool IsDebugged() {
  constexpr char kTracer[] = "TracerPid:\t";
  const int file = ::open("/proc/self/status", O_RDONLY | O_CLOEXEC);
  char text[4096];
  const ssize_t count = file < 0 ? 0 : ::read(file, text, sizeof text - 1);
  if (file >= 0) {
    ::close(file);
  }
  text[count < 0 ? 0 : count] = '\0';
  const char* const tracer = std::strstr(text, kTracer);
  return tracer != nullptr && tracer[sizeof kTracer - 1] != '0';
}

// What a parent process may have left to this one and the child gets back.
struct Signals {
  sigset_t mask;
  struct sigaction onChild;
};

Signals BlockAll() {
  Signals before;
  struct sigaction byDefault = {};
  byDefault.sa_handler = SIG_DFL;
  // Where ends of children are ignored, nobody learns their status.
  ::sigaction(SIGCHLD, &byDefault, &before.onChild);
  sigset_t all;
  ::sigfillset(&all);
  ::pthread_sigmask(SIG_SETMASK, &all, &before.mask);
  return before;
}

void Restore(const Signals& before) {
  ::sigaction(SIGCHLD, &before.onChild, nullptr);
  ::pthread_sigmask(SIG_SETMASK, &before.mask, nullptr);
}

// The modes of the terminal at the start. A line editor switches off echo and signals, and a child that ends at its prompt
// leaves them off.
class TerminalModes {
 public:
  TerminalModes() : m_isKnown(IsOurs() && ::tcgetattr(STDIN_FILENO, &m_modes) == 0) {}

  void Restore() const {
    if (m_isKnown && IsOurs()) {
      ::tcsetattr(STDIN_FILENO, TCSANOW, &m_modes);
    }
  }

 private:
  // In the background, the modes are those of the program in the foreground.
  static bool IsOurs() { return ::tcgetpgrp(STDIN_FILENO) == ::getpgrp(); }

  struct termios m_modes = {};
  const bool m_isKnown;
};

// The child, as its parent sees it.
class Child {
 public:
  explicit Child(pid_t id) : m_id(id) {}

  // Waits for its end. Returns its wait status.
  int Await() {
    sigset_t all;
    ::sigfillset(&all);
    int status = 0;
    for (;;) {
      siginfo_t info = {};
      const int signal = ::sigwaitinfo(&all, &info);
      if (signal == SIGCHLD) {
        if (HasEnded(status)) {
          return status;
        }
      } else if (signal == WatchedProcess::kAsk) {
        SayWhatIsUnderWay();
      } else if (signal > 0 && !IsNewsOfTheChild(signal, info)) {
        PassOn(signal, info);
      }
    }
  }

  // Whether somebody else than the child has sent the signal to this process: whoever wanted to end the program.
  bool IsForBoth(int signal) const { return ::sigismember(&m_got, signal) == 1; }

 private:
  bool HasEnded(int& status) {
    while (::waitpid(m_id, &status, WNOHANG | WUNTRACED) == m_id) {
      if (!WIFSTOPPED(status)) {
        return true;
      }
      // A shell that waits for this process sees the stop. Whoever lets this process go on lets both go on.
      ::raise(SIGSTOP);
      sigset_t goOn;
      ::sigemptyset(&goOn);
      ::sigaddset(&goOn, SIGCONT);
      siginfo_t info = {};
      const timespec now = {};
      // A child that goes on already may have been stopped again since.
      if (::sigtimedwait(&goOn, &info, &now) != SIGCONT || !IsNewsOfTheChild(SIGCONT, info)) {
        ::kill(m_id, SIGCONT);
      }
    }
    return false;
  }

  // The child goes on and says so: LetParentGoOn. It would say so again, for ever, if it got that back.
  bool IsNewsOfTheChild(int signal, const siginfo_t& info) const { return signal == SIGCONT && info.si_pid == m_id; }

  // The child may hang in that call, so it cannot be asked itself.
  static void SayWhatIsUnderWay() {
    const char* const call = EndRecord::OfProcess().UnderWay();
    if (call[0] != '\0') {
      EndLine().Add("devhost: ").Add(call).Add(WatchedProcess::kHasNotReturned).Write();
    }
  }

  // A terminal sends its signals to both. A driver may send one to the group of its process, which this process is in.
  void PassOn(int signal, const siginfo_t& info) {
    if (info.si_code > 0 || info.si_pid != m_id) {
      ::sigaddset(&m_got, signal);
    }
    if (info.si_code <= 0) {
      ::kill(m_id, signal);
    }
  }

  const pid_t m_id;
  sigset_t m_got = {};
};

// The process that is watched, and the one that watches it.
pid_t s_child = 0;
pid_t s_parent = 0;

// Somebody may stop the child by its id, and let it go on. Its parent has stopped itself since then. A forked copy of the
// child leaves it alone.
void LetParentGoOn(int) {
  const int before = errno;
  if (::getpid() == s_child) {
    ::kill(s_parent, SIGCONT);
  }
  errno = before;
}

void TellParentToGoOn(pid_t parent) {
  s_child = ::getpid();
  s_parent = parent;
  struct sigaction action = {};
  action.sa_handler = &LetParentGoOn;
  action.sa_flags = SA_RESTART;
  ::sigaction(SIGCONT, &action, nullptr);
}

void Say(int status, bool isForBoth) {
  EndRecord& record = EndRecord::OfProcess();
  const int signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
  const bool isAsTold = record.isTold && signal == 0 && (WEXITSTATUS(status) != 0 || record.toldStatus == 0);
  if (isAsTold || isForBoth || record.isSaid) {
    return;
  }
  EndLine line;
  line.Add("devhost: the process was ended ");
  if (signal != 0) {
    const char* const name = ::sigabbrev_np(signal);
    line.Add("by ").Add(name == nullptr ? "a signal" : "SIG").Add(name == nullptr ? "" : name);
  } else {
    line.Add("behind the host's back, by a system call or another program in its place");
  }
  const char* const call = record.UnderWay();
  line.Add(call[0] == '\0' ? ", outside of any call" : " during ").Add(call);
  line.Add("; drivers return from every call").Write();
}

// Nothing of this process is cleaned up: all of it is the child's.
[[noreturn]] void EndAs(int status) {
  const EndRecord& record = EndRecord::OfProcess();
  if (WIFSIGNALED(status)) {
    const int signal = WTERMSIG(status);
    struct sigaction byDefault = {};
    byDefault.sa_handler = SIG_DFL;
    ::sigaction(signal, &byDefault, nullptr);
    sigset_t own;
    ::sigemptyset(&own);
    ::sigaddset(&own, signal);
    ::raise(signal);
    ::pthread_sigmask(SIG_UNBLOCK, &own, nullptr);
    ::_exit(128 + signal);
  }
  if (WEXITSTATUS(status) != 0) {
    ::_exit(WEXITSTATUS(status));
  }
  ::_exit(record.isTold ? record.toldStatus : record.endStatus);
}

}  // namespace

void WatchedProcess::Begin() noexcept {
  if (IsDebugged()) {
    return;
  }
  const pid_t parent = ::getpid();
  const TerminalModes modes;
  EndRecord::Share();
  const Signals before = BlockAll();
  const pid_t id = ::fork();
  if (id > 0) {
    // Whoever looks for the program by its name finds the child, which is the one to look at.
    ::prctl(PR_SET_NAME, "devhost-watcher");
    EndLine::KeepOutputs();
    Child child(id);
    const int status = child.Await();
    if (!EndRecord::OfProcess().isTold) {
      modes.Restore();
    }
    Say(status, WIFSIGNALED(status) && child.IsForBoth(WTERMSIG(status)));
    EndAs(status);
  }
  Restore(before);
  if (id == 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) {
      ::raise(SIGKILL);
    }
    TellParentToGoOn(parent);
    EndRecord::KeepFromChildren();
  }
}

void WatchedProcess::TellEnd(int status) noexcept {
  EndRecord& record = EndRecord::OfProcess();
  record.toldStatus = status;
  record.isTold = true;
}

}  // namespace devhost
