#include "drivers/localsnmpd/DaemonProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "devhost/system/FileDescriptor.h"

namespace drivers {

namespace {

const int kFirstOwnDescriptor = 3;
const unsigned int kCloseOnExec = 1U << 2;  // of close_range

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) {
    pointers.push_back(text.data());
  }
  pointers.push_back(nullptr);
  return pointers;
}

// Keeps signals from the threads that are made while it lives: they are for the host's own threads.
class SignalsBlocked {
 public:
  SignalsBlocked() {
    sigset_t all;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &m_former);
  }
  ~SignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &m_former, nullptr); }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;

 private:
  sigset_t m_former;
};

int MostDescriptors() {
  rlimit limit = {};
  const rlim_t most = 1U << 20;
  return ::getrlimit(RLIMIT_NOFILE, &limit) == 0 ? static_cast<int>(std::min(limit.rlim_cur, most)) : 1024;
}

}  // namespace

// Everything that the child needs, made before the fork: between fork and exec it may call async-signal-safe functions only.
struct DaemonProcess::Image {
  explicit Image(const Command& command)
      : program(command.program),
        arguments(command.arguments),
        environment(command.environment),
        folder(command.folder),
        output(command.output),
        mostDescriptors(MostDescriptors()),
        host(::getpid()) {
    arguments.insert(arguments.begin(), program);
    argumentPointers = Pointers(arguments);
    environmentPointers = Pointers(environment);
  }

  [[noreturn]] void Become(int errors) const;
  bool TakeDescriptors() const;

  std::string program;
  std::vector<std::string> arguments;
  std::vector<std::string> environment;
  int folder;
  int output;
  int mostDescriptors;
  pid_t host;
  std::vector<char*> argumentPointers;
  std::vector<char*> environmentPointers;
};

// In the child: becomes the program, or writes the reason to `errors`.
void DaemonProcess::Image::Become(int errors) const {
  errors = ::fcntl(errors, F_DUPFD_CLOEXEC, kFirstOwnDescriptor);
  // A host that died before this was asked for is seen by its id.
  if (::prctl(PR_SET_PDEATHSIG, SIGKILL) == 0 && ::getppid() == host && TakeDescriptors()) {
    struct sigaction byDefault = {};
    byDefault.sa_handler = SIG_DFL;
    for (int signal = 1; signal < NSIG; ++signal) {
      ::sigaction(signal, &byDefault, nullptr);
    }
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::umask(077);
    ::execve(program.c_str(), argumentPointers.data(), environmentPointers.data());
  }
  const int error = errno;
  const ssize_t ignored = ::write(errors, &error, sizeof error);
  ::_exit(ignored == 0 ? 126 : 127);
}

// Working folder and standard descriptors; nothing else of the host's goes on into the program.
bool DaemonProcess::Image::TakeDescriptors() const {
  const int target = ::fcntl(output, F_DUPFD_CLOEXEC, kFirstOwnDescriptor);
  if (target < 0 || ::fchdir(folder) != 0) {
    return false;
  }
  ::close(STDIN_FILENO);
  const int input = ::open("/dev/null", O_RDONLY);
  if (input < 0 || ::dup2(input, STDIN_FILENO) < 0 || ::dup2(target, STDOUT_FILENO) < 0 ||
      ::dup2(target, STDERR_FILENO) < 0) {
    return false;
  }
  if (::syscall(SYS_close_range, kFirstOwnDescriptor, ~0U, kCloseOnExec) != 0) {
    for (int descriptor = kFirstOwnDescriptor; descriptor < mostDescriptors; ++descriptor) {
      ::fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    }
  }
  return true;
}

std::unique_ptr<DaemonProcess> DaemonProcess::Start(const Command& command, int& error) {
  std::unique_ptr<DaemonProcess> process(new DaemonProcess);
  const Image image(command);
  try {
    const SignalsBlocked blocked;
    process->m_keeper = std::thread([&process = *process, &image] { process.Keep(image); });
  } catch (const std::system_error& failure) {
    error = failure.code().value();
    return nullptr;
  }
  std::unique_lock<std::mutex> lock(process->m_mutex);
  process->m_changed.wait(lock, [&] { return process->m_state != State::Starting; });
  if (process->m_state == State::NotStarted) {
    error = process->m_error;
    lock.unlock();
    return nullptr;
  }
  lock.unlock();
  return process;
}

DaemonProcess::~DaemonProcess() {
  Signal(SIGKILL);
  if (m_keeper.joinable()) {
    m_keeper.join();
  }
}

void DaemonProcess::Enter(State state) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_state = state;
  m_changed.notify_all();
}

// The keeper's life. `image` is the starter's, who waits until the state is no longer Starting.
void DaemonProcess::Keep(const Image& image) {
  int ends[2] = {-1, -1};
  if (::pipe2(ends, O_CLOEXEC) != 0) {
    m_error = errno;
    return Enter(State::NotStarted);
  }
  devhost::FileDescriptor errors(ends[0]);
  devhost::FileDescriptor errorsOfChild(ends[1]);
  m_pid = ::fork();
  if (m_pid < 0) {
    m_error = errno;
    return Enter(State::NotStarted);
  }
  if (m_pid == 0) {
    image.Become(errorsOfChild.Get());
  }
  errorsOfChild.Close();
  int error = 0;
  ssize_t count = 0;
  do {
    count = ::read(errors.Get(), &error, sizeof error);
  } while (count < 0 && errno == EINTR);
  if (count == sizeof error) {
    m_error = error;
    Reap();
    return Enter(State::NotStarted);
  }
  Enter(State::Running);
  siginfo_t end = {};
  while (::waitid(P_PID, static_cast<id_t>(m_pid), &end, WEXITED | WNOWAIT) != 0 && errno == EINTR) {
  }
  // Until it is reaped its id is its own: signals are sent under the same lock.
  const std::lock_guard<std::mutex> lock(m_mutex);
  Reap();
  m_state = State::Ended;
  m_changed.notify_all();
}

void DaemonProcess::Reap() {
  pid_t reaped = 0;
  do {
    reaped = ::waitpid(m_pid, &m_waitStatus, 0);
  } while (reaped < 0 && errno == EINTR);
  m_isStatusKnown = reaped == m_pid;
}

void DaemonProcess::Signal(int signal) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (m_state == State::Running) {
    ::kill(m_pid, signal);
  }
}

bool DaemonProcess::WaitForEnd(std::chrono::milliseconds wait) {
  std::unique_lock<std::mutex> lock(m_mutex);
  return m_changed.wait_for(lock, wait, [this] { return m_state == State::Ended; });
}

std::string DaemonProcess::DescribeEnd() {
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (m_state != State::Ended || !m_isStatusKnown) {
    return "its exit status is unknown";
  }
  if (WIFSIGNALED(m_waitStatus)) {
    const int signal = WTERMSIG(m_waitStatus);
    const char* const name = ::sigabbrev_np(signal);
    return "killed by signal " + std::to_string(signal) + (name != nullptr ? " (SIG" + std::string(name) + ")" : "");
  }
  return "exit status " + std::to_string(WEXITSTATUS(m_waitStatus));
}

}  // namespace drivers
