#include "devhost/operations/RestartCommand.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <thread>

#include "devhost/system/FileDescriptor.h"
#include "devhost/system/FileText.h"
#include "devhost/system/RunProgram.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

std::string Reason(int error) {
  return std::generic_category().message(error);
}

// What a program is started with: nothing to read, one place for all that it prints, and signals as from a shell.
class Surroundings {
 public:
  explicit Surroundings(int output) {
    ::posix_spawn_file_actions_init(&m_files);
    ::posix_spawn_file_actions_addopen(&m_files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&m_files, output, STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&m_files, output, STDERR_FILENO);
    sigset_t signals;
    ::sigfillset(&signals);
    ::posix_spawnattr_init(&m_attributes);
    ::posix_spawnattr_setsigdefault(&m_attributes, &signals);
    ::sigemptyset(&signals);
    ::posix_spawnattr_setsigmask(&m_attributes, &signals);
    ::posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
  }
  ~Surroundings() {
    ::posix_spawnattr_destroy(&m_attributes);
    ::posix_spawn_file_actions_destroy(&m_files);
  }
  Surroundings(const Surroundings&) = delete;
  Surroundings& operator=(const Surroundings&) = delete;

  // Returns an error number, or 0 and the new process.
  int Start(const std::string& program, std::vector<std::string> words, pid_t& process) const {
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words) {
      arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    return ::posix_spawn(&process, program.c_str(), &m_files, &m_attributes, arguments.data(), environ);
  }

 private:
  posix_spawn_file_actions_t m_files = {};
  posix_spawnattr_t m_attributes = {};
};

// Waits for the end of the process. Returns how it has failed, or "".
std::string WaitFor(pid_t process, std::chrono::milliseconds deadline) {
  constexpr std::chrono::milliseconds kPause{10};
  const auto end = std::chrono::steady_clock::now() + deadline;
  int status = 0;
  pid_t ended = 0;
  while ((ended = ::waitpid(process, &status, WNOHANG)) == 0 || (ended < 0 && errno == EINTR)) {
    if (std::chrono::steady_clock::now() >= end) {
      ::kill(process, SIGKILL);
      ::waitpid(process, &status, 0);
      return "it has not ended in " + std::to_string(deadline.count() / 1000) + " seconds and was killed";
    }
    std::this_thread::sleep_for(kPause);
  }
  return ended < 0             ? "nobody knows how it has ended: " + Reason(errno)
         : WIFSIGNALED(status) ? "signal " + std::to_string(WTERMSIG(status)) + " has ended it"
         : WEXITSTATUS(status) ? "it has ended with status " + std::to_string(WEXITSTATUS(status))
                               : "";
}

// The last line of a text that is not empty, on one line; "" when there is none.
std::string LastLine(const std::string& text) {
  const std::size_t end = text.find_last_not_of(" \r\n");
  if (end == std::string::npos) {
    return "";
  }
  const std::size_t begin = text.find_last_of('\n', end) + 1;
  return OneLine(text.substr(begin, end + 1 - begin));
}

// What was printed; a program may print without end.
std::string Printed(int output) {
  constexpr std::size_t kMost = std::size_t{64} * 1024;
  std::string text(kMost, '\0');
  const off_t size = ::lseek(output, 0, SEEK_END);
  const off_t start = size > static_cast<off_t>(kMost) ? size - static_cast<off_t>(kMost) : 0;
  const ssize_t count = ::pread(output, text.data(), text.size(), start);
  text.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
  return text;
}

std::string PathOf(const std::string& name) {
  return name.find('/') == std::string::npos ? FindProgram(name) : name;
}

}  // namespace

std::string WhyNotRunnable(const std::vector<std::string>& words) {
  const std::string program = PathOf(words.front());
  if (program.empty()) {
    return Quoted(words.front()) + " is not in PATH";
  }
  struct stat status = {};
  if (::stat(program.c_str(), &status) != 0 || ::access(program.c_str(), X_OK) != 0) {
    return Quoted(program) + " cannot be started: " + Reason(errno);
  }
  return S_ISREG(status.st_mode) ? "" : Quoted(program) + " cannot be started: it is not a program";
}

std::string RunRestartCommand(const std::vector<std::string>& words, std::chrono::milliseconds deadline) {
  const std::string program = PathOf(words.front());
  if (program.empty()) {
    return Quoted(words.front()) + " is not in PATH";
  }
  // Not a pipe: a daemon that keeps it open would be waited for.
  const FileDescriptor output(::memfd_create("restart", MFD_CLOEXEC));
  if (!output.IsOpen()) {
    return Reason(errno);
  }
  pid_t process = 0;
  if (const int error = Surroundings(output.Get()).Start(program, words, process); error != 0) {
    return Quoted(program) + " cannot be started: " + Reason(error);
  }
  const std::string problem = WaitFor(process, deadline);
  const std::string last = problem.empty() ? "" : LastLine(Printed(output.Get()));
  return problem + (last.empty() ? "" : ": " + last);
}

}  // namespace devhost
