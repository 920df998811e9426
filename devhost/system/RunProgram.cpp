#include "devhost/system/RunProgram.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "devhost/system/FileDescriptor.h"

namespace devhost {

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::milliseconds;

[[noreturn]] void Refuse(const std::string& what, const std::string& name, int error) {
  throw ProgramError(what + " \"" + name + "\": " + std::generic_category().message(error));
}

bool IsProgram(const std::string& path) {
  struct stat status = {};
  return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && ::access(path.c_str(), X_OK) == 0;
}

// What the program inherits, with the run's own variables in place of those of the same name.
std::vector<std::string> Environment(const ProgramRun& run) {
  std::vector<std::string> variables;
  for (char** variable = environ; *variable != nullptr; ++variable) {
    const std::string text = *variable;
    const std::string name = text.substr(0, text.find('='));
    const bool replaced =
        std::any_of(run.environment.begin(), run.environment.end(), [&name](const auto& own) { return own.first == name; });
    if (!replaced) {
      variables.push_back(text);
    }
  }
  for (const auto& [name, value] : run.environment) {
    variables.push_back(name + "=" + value);
  }
  return variables;
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) {
    pointers.push_back(text.data());
  }
  pointers.push_back(nullptr);
  return pointers;
}

// What is done in the new process before the program takes over.
class Preparation {
 public:
  Preparation(const std::string& folder, int output) {
    ::posix_spawn_file_actions_init(&m_actions);
    if (!folder.empty()) {
      ::posix_spawn_file_actions_addchdir_np(&m_actions, folder.c_str());
    }
    ::posix_spawn_file_actions_addopen(&m_actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&m_actions, output, STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&m_actions, output, STDERR_FILENO);
    ::posix_spawn_file_actions_addclosefrom_np(&m_actions, STDERR_FILENO + 1);
    ::posix_spawnattr_init(&m_attributes);
    // It starts as a shell would start it: no signal blocked or ignored, in a group of its own.
    sigset_t signals;
    ::sigemptyset(&signals);
    ::posix_spawnattr_setsigmask(&m_attributes, &signals);
    ::sigfillset(&signals);
    ::posix_spawnattr_setsigdefault(&m_attributes, &signals);
    ::posix_spawnattr_setpgroup(&m_attributes, 0);
    ::posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  }
  ~Preparation() {
    ::posix_spawn_file_actions_destroy(&m_actions);
    ::posix_spawnattr_destroy(&m_attributes);
  }
  Preparation(const Preparation&) = delete;
  Preparation& operator=(const Preparation&) = delete;
  const posix_spawn_file_actions_t* Actions() const { return &m_actions; }
  const posix_spawnattr_t* Attributes() const { return &m_attributes; }

 private:
  posix_spawn_file_actions_t m_actions = {};
  posix_spawnattr_t m_attributes = {};
};

pid_t Spawn(const ProgramRun& run, int output) {
  const std::string name = run.words.empty() ? std::string() : run.words.front();
  const std::string program = FindProgram(name);
  if (program.empty()) {
    throw ProgramError("there is no program \"" + name + "\" in PATH, /usr/local/sbin, /usr/sbin or /sbin");
  }
  for (const std::string& word : run.words) {
    if (word.find('\0') != std::string::npos) {
      throw ProgramError("cannot run \"" + name + "\": one of its words holds a NUL byte");
    }
  }
  if (!run.folder.empty() && ::access(run.folder.c_str(), X_OK) != 0) {
    Refuse("cannot run a program in", run.folder, errno);
  }
  std::vector<std::string> words = run.words;
  std::vector<std::string> variables = Environment(run);
  const Preparation preparation(run.folder, output);
  pid_t child = -1;
  const int error = ::posix_spawn(&child, program.c_str(), preparation.Actions(), preparation.Attributes(),
                                  Pointers(words).data(), Pointers(variables).data());
  if (error != 0) {
    Refuse("cannot run", name, error);
  }
  return child;
}

// One program that runs. It has ended, with its group, when this is gone.
class Running {
 public:
  Running(const ProgramRun& run, ProgramResult& result) : m_run(run), m_result(result) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
      Refuse("no pipe for", run.words.empty() ? std::string() : run.words.front(), errno);
    }
    m_from = FileDescriptor(ends[0]);
    const FileDescriptor to(ends[1]);
    m_child = Spawn(run, to.Get());
    ::fcntl(m_from.Get(), F_SETFL, O_NONBLOCK);
    m_end = FileDescriptor(static_cast<int>(::syscall(SYS_pidfd_open, m_child, 0)));
  }
  ~Running() { End(); }
  Running(const Running&) = delete;
  Running& operator=(const Running&) = delete;

  void WatchToItsEnd() {
    const Clock::time_point deadline = Clock::now() + m_run.deadline;
    while (!HasEnded() && !m_result.tooLong) {
      const Milliseconds left = std::chrono::ceil<Milliseconds>(deadline - Clock::now());
      if (left <= Milliseconds::zero()) {
        m_result.late = true;
        break;
      }
      Wait(left);
      Read();
    }
    End();
    // What it had written before its end. Something that has left the group may hold the pipe open, so nobody waits here.
    Read();
  }

 private:
  // Not reaped: as long as it is not, nothing else can have its number, so the group can be killed.
  bool HasEnded() const {
    siginfo_t info = {};
    return ::waitid(P_PID, static_cast<id_t>(m_child), &info, WEXITED | WNOHANG | WNOWAIT) == 0 && info.si_pid == m_child;
  }

  void Wait(Milliseconds left) const {
    constexpr Milliseconds kLongest = std::chrono::hours(1);
    constexpr Milliseconds kTick(10);  // where the system does not report the end of a program
    const Milliseconds span = std::min(left, m_end.IsOpen() ? kLongest : kTick);
    struct pollfd watched[] = {{m_atEnd ? -1 : m_from.Get(), POLLIN, 0}, {m_end.Get(), POLLIN, 0}};
    ::poll(watched, 2, static_cast<int>(span.count()));
  }

  // Everything that is there now.
  void Read() {
    char block[65536];
    while (!m_atEnd && !m_result.tooLong) {
      const ssize_t got = ::read(m_from.Get(), block, sizeof(block));
      if (got < 0 && errno == EINTR) {
        continue;
      }
      if (got < 0 && errno == EAGAIN) {
        return;
      }
      if (got <= 0) {
        m_atEnd = true;
        return;
      }
      const std::size_t room = m_run.longestOutput - m_result.output.size();
      m_result.output.append(block, std::min(static_cast<std::size_t>(got), room));
      m_result.tooLong = static_cast<std::size_t>(got) > room;
      if (m_result.tooLong) {
        // A secret that is cut off would not be found in the last line.
        m_result.output.resize(m_result.output.rfind('\n') + 1);
      }
    }
  }

  void End() {
    if (m_child <= 0) {
      return;
    }
    ::kill(-m_child, SIGKILL);
    int status = 0;
    while (::waitpid(m_child, &status, 0) < 0 && errno == EINTR) {
    }
    m_child = -1;
    m_result.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : 0;
    m_result.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
  }

  const ProgramRun& m_run;
  ProgramResult& m_result;
  FileDescriptor m_from;
  FileDescriptor m_end;  // readable when the program has ended; none on a system that has no such thing
  pid_t m_child = -1;
  bool m_atEnd = false;  // of its output
};

}  // namespace

std::string FindProgram(const std::string& name) {
  if (name.empty() || name.find('/') != std::string::npos) {
    return name;
  }
  const char* const path = std::getenv("PATH");
  const std::string folders = std::string(path == nullptr ? "/usr/bin:/bin" : path) + ":/usr/local/sbin:/usr/sbin:/sbin";
  for (std::size_t at = 0; at <= folders.size();) {
    const std::size_t end = std::min(folders.find(':', at), folders.size());
    const std::string folder = folders.substr(at, end - at);
    at = end + 1;
    // A folder that is not absolute is seen from here, wherever the program is to run.
    const std::string candidate = std::filesystem::absolute(folder.empty() ? name : folder + "/" + name).string();
    if (IsProgram(candidate)) {
      return candidate;
    }
  }
  return "";
}

ProgramResult RunProgram(const ProgramRun& run) {
  ProgramResult result;
  Running running(run, result);
  running.WatchToItsEnd();
  return result;
}

}  // namespace devhost
