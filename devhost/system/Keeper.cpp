#include "devhost/system/Keeper.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>

namespace devhost {

namespace {

constexpr int kFirstOwnDescriptor = 3;
constexpr int kMostDescriptors = 65536;    // where the system cannot close all at once
constexpr unsigned int kOnExec = 1U << 2;  // of close_range

void CloseFrom(int first, unsigned int flags) {
  if (::syscall(SYS_close_range, first, ~0U, flags) == 0) {
    return;
  }
  for (int descriptor = first; descriptor < kMostDescriptors; ++descriptor) {
    flags == 0 ? ::close(descriptor) : ::fcntl(descriptor, F_SETFD, FD_CLOEXEC);
  }
}

// Working folder and standard descriptors; nothing else of the maker's goes on into the program.
bool TakeDescriptors(const KeeperTask& task) {
  const int output = ::fcntl(task.output, F_DUPFD_CLOEXEC, kFirstOwnDescriptor);
  if (output < 0 || (task.folder >= 0 && ::fchdir(task.folder) != 0)) {
    return false;
  }
  const int input =
      task.input >= 0 ? ::fcntl(task.input, F_DUPFD_CLOEXEC, kFirstOwnDescriptor) : ::open("/dev/null", O_RDONLY);
  if (input < 0 || ::dup2(input, STDIN_FILENO) < 0 || ::dup2(output, STDOUT_FILENO) < 0 ||
      ::dup2(output, STDERR_FILENO) < 0) {
    return false;
  }
  CloseFrom(kFirstOwnDescriptor, kOnExec);
  return true;
}

void TakeSignals() {
  struct sigaction byDefault = {};
  byDefault.sa_handler = SIG_DFL;
  for (int signal = 1; signal < NSIG; ++signal) {
    ::sigaction(signal, &byDefault, nullptr);
  }
  sigset_t none;
  ::sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

// In the program's process: becomes the program, or writes the reason to `errors`.
[[noreturn]] void Become(const KeeperTask& task, pid_t keeper, int errors) {
  errors = ::fcntl(errors, F_DUPFD_CLOEXEC, kFirstOwnDescriptor);
  ::setsid();
  // For a keeper that is killed. One that died before this is seen by its id.
  if (::prctl(PR_SET_PDEATHSIG, SIGKILL) == 0 && ::getppid() == keeper && TakeDescriptors(task)) {
    TakeSignals();
    if (task.privateFiles) {
      ::umask(077);
    }
    ::execve(task.program, task.arguments.data(), task.environment.data());
  }
  const int error = errno;
  const ssize_t ignored = ::write(errors, &error, sizeof error);
  ::_exit(ignored == 0 ? 126 : 127);
}

// Returns why the program was not started, or 0.
int StartProgram(const KeeperTask& task, pid_t& program) {
  const pid_t keeper = ::getpid();
  int ends[2] = {-1, -1};
  if (::pipe2(ends, O_CLOEXEC) != 0) {
    return errno;
  }
  program = ::fork();
  if (program == 0) {
    Become(task, keeper, ends[1]);
  }
  int error = program < 0 ? errno : 0;
  ::close(ends[1]);
  // The other end is closed when the program takes over.
  while (program > 0 && ::read(ends[0], &error, sizeof error) < 0 && errno == EINTR) {
  }
  ::close(ends[0]);
  return error;
}

// The processes that a keeper has to kill and to reap: its child, and what that has left behind.
class Family {
 public:
  explicit Family(pid_t program) : m_program(program) {}

  int WaitStatus() const { return m_waitStatus; }
  void Signal(int signal) const { ::kill(-m_program, signal); }

  // Waits until the program has ended.
  void Await() {
    while (!m_isReaped && (Note(::waitpid(-1, &m_last, 0)) || errno == EINTR)) {
    }
  }

  // Reaps all that have ended. Returns whether the program has.
  bool Reap() {
    while (Note(::waitpid(-1, &m_last, WNOHANG))) {
    }
    return m_isReaped;
  }

  // Kills all, until none is left or those that are left may not be killed. What a killed process had started becomes a
  // child of this one.
  void Kill() {
    for (bool goesOn = true; goesOn;) {
      const Kills kills = KillChildren();
      const bool hasChildren = Note(::waitpid(-1, &m_last, kills.done != 0 ? 0 : WNOHANG)) || errno != ECHILD;
      Reap();
      goesOn = hasChildren && (kills.done != 0 || kills.refused == 0);
    }
  }

 private:
  struct Kills {
    std::size_t done = 0;
    std::size_t refused = 0;
  };

  bool Note(pid_t reaped) {
    if (reaped == m_program) {
      m_isReaped = true;
      m_waitStatus = m_last;
    }
    return reaped > 0;
  }

  // The system's list may miss some while others end; those are found next time.
  Kills KillChildren() const {
    Kills kills;
    if (!m_isReaped) {
      Signal(SIGKILL);
    }
    const int list = ::open("/proc/thread-self/children", O_RDONLY | O_CLOEXEC);
    if (list < 0) {
      // Without the list, only the program's process group can be killed.
      (m_isReaped ? kills.refused : kills.done) = 1;
      return kills;
    }
    char text[4096];
    pid_t child = 0;
    for (ssize_t count = 0; (count = ::read(list, text, sizeof text)) > 0;) {
      for (ssize_t at = 0; at != count; ++at) {
        if (text[at] >= '0' && text[at] <= '9') {
          child = child * 10 + (text[at] - '0');
        } else if (child > 0) {
          ++(::kill(child, SIGKILL) == 0 ? kills.done : kills.refused);
          child = 0;
        }
      }
    }
    ::close(list);
    return kills;
  }

  const pid_t m_program;
  bool m_isReaped = false;
  int m_waitStatus = 0;
  int m_last = 0;
};

// What the inner keeper waits for, and the only descriptors that it keeps: standard output, for one, may be a pipe that
// somebody reads to its end.
struct Events {
  int signals;  // of children that have ended, and of the outer keeper's end
  int control;
  int makersEnd;  // -1 for none
};

// `descriptor` as a number above the standard ones; -1 for none.
int Raised(int descriptor) {
  return descriptor < 0 ? -1 : ::fcntl(descriptor, F_DUPFD_CLOEXEC, kFirstOwnDescriptor);
}

Events KeepOnlyEvents(const KeeperTask& task) {
  sigset_t child;
  ::sigemptyset(&child);
  ::sigaddset(&child, SIGCHLD);
  const int signals = Raised(::signalfd(-1, &child, SFD_NONBLOCK));
  const int control = Raised(task.control);
  const int makersEnd = Raised(task.makersEnd);
  const Events events = {::dup2(signals, 0), ::dup2(control, 1), makersEnd < 0 ? -1 : ::dup2(makersEnd, 2)};
  CloseFrom(makersEnd < 0 ? 2 : kFirstOwnDescriptor, 0);
  return events;
}

// Waits until the program has ended, or has to.
void Watch(Family& family, const Events& events, pid_t outer) {
  while (::getppid() == outer) {
    struct pollfd watched[] = {{events.control, POLLIN, 0}, {events.signals, POLLIN, 0}, {events.makersEnd, POLLIN, 0}};
    ::poll(watched, 3, -1);
    signalfd_siginfo ignored[8];
    if (watched[1].revents != 0 && ::read(events.signals, ignored, sizeof ignored) < 0 && errno != EAGAIN) {
      return;
    }
    if (family.Reap() || watched[2].revents != 0) {
      return;
    }
    int signal = 0;
    if (watched[0].revents != 0) {
      if (::recv(events.control, &signal, sizeof signal, MSG_DONTWAIT) != static_cast<ssize_t>(sizeof signal)) {
        return;
      }
      family.Signal(signal);
    }
  }
}

[[noreturn]] void KeepInside(const KeeperTask& task, pid_t outer) {
  ::prctl(PR_SET_CHILD_SUBREAPER, 1);
  // The outer keeper's end wakes this one up as if a child had ended.
  ::prctl(PR_SET_PDEATHSIG, SIGCHLD);
  KeeperStart start = {0, -1};
  start.error = StartProgram(task, start.pid);
  const Events events = KeepOnlyEvents(task);
  ::send(events.control, &start, sizeof start, MSG_NOSIGNAL);
  if (start.error == 0) {
    Family family(start.pid);
    Watch(family, events, outer);
    family.Kill();
    const int status = family.WaitStatus();
    ::send(events.control, &status, sizeof status, MSG_NOSIGNAL);
  }
  ::_exit(0);
}

}  // namespace

void Keep(const KeeperTask& task) noexcept {
  // Signals that the terminal sends are not for keepers, nor are those for all processes with the maker's name.
  ::setsid();
  ::prctl(PR_SET_NAME, "keeper");
  ::prctl(PR_SET_CHILD_SUBREAPER, 1);
  ::signal(SIGCHLD, SIG_DFL);
  const pid_t outer = ::getpid();
  const pid_t inner = ::fork();
  if (inner == 0) {
    KeepInside(task, outer);
  }
  if (inner < 0) {
    const KeeperStart start = {errno, -1};
    ::send(task.control, &start, sizeof start, MSG_NOSIGNAL);
  } else {
    // The maker's end of the socket sees the end of both keepers, because both have the other one.
    ::dup2(task.control, 0);
    CloseFrom(1, 0);
    Family family(inner);
    family.Await();
    family.Kill();
  }
  ::_exit(0);
}

}  // namespace devhost
