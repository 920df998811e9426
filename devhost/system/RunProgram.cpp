#include "devhost/system/RunProgram.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <system_error>

#include "devhost/system/FileDescriptor.h"
#include "devhost/system/KeptProcess.h"

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

// Throws ProgramError when the words of the run cannot be started. Returns the program's path.
std::string ProgramOf(const ProgramRun& run) {
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
  return program;
}

// None for the current one. Throws ProgramError.
FileDescriptor OpenFolder(const std::string& folder) {
  if (folder.empty()) {
    return FileDescriptor();
  }
  FileDescriptor opened(::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!opened.IsOpen() || ::access(folder.c_str(), X_OK) != 0) {
    Refuse("cannot run a program in", folder, errno);
  }
  return opened;
}

std::unique_ptr<KeptProcess> Start(const ProgramRun& run, int output) {
  const std::string program = ProgramOf(run);
  const FileDescriptor folder = OpenFolder(run.folder);
  try {
    return std::make_unique<KeptProcess>(ProcessImage{program, run.words, Environment(run), folder.Get(), -1, output});
  } catch (const std::system_error& error) {
    Refuse("cannot run", run.words.front(), error.code().value());
  }
}

// One program that runs. It has ended, with all that it started, when this is gone.
class Running {
 public:
  Running(const ProgramRun& run, ProgramResult& result) : m_run(run), m_result(result) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
      Refuse("no pipe for", run.words.empty() ? std::string() : run.words.front(), errno);
    }
    m_from = FileDescriptor(ends[0]);
    const FileDescriptor to(ends[1]);
    m_process = Start(run, to.Get());
    ::fcntl(m_from.Get(), F_SETFL, O_NONBLOCK);
  }

  void WatchToItsEnd() {
    const Clock::time_point deadline = Clock::now() + m_run.deadline;
    while (!m_process->WaitForEnd(Milliseconds::zero()) && !m_result.tooLong) {
      const Milliseconds left = std::chrono::ceil<Milliseconds>(deadline - Clock::now());
      if (left <= Milliseconds::zero() || (m_run.isLate && m_run.isLate())) {
        m_result.late = true;
        break;
      }
      constexpr Milliseconds kBetweenQuestions(200);
      Wait(m_run.isLate ? std::min(left, kBetweenQuestions) : left);
      Read();
    }
    m_process->End();
    // What it had written before its end. A process that cannot be killed may hold the pipe open, so nobody waits here.
    Read();
    const int status = m_process->WaitStatus().value_or(SIGKILL);
    m_result.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : 0;
    m_result.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
  }

 private:
  void Wait(Milliseconds left) const {
    constexpr Milliseconds kLongest = std::chrono::hours(1);
    struct pollfd watched[] = {{m_atEnd ? -1 : m_from.Get(), POLLIN, 0}, {m_process->EndEvent(), POLLIN, 0}};
    ::poll(watched, 2, static_cast<int>(std::min(left, kLongest).count()));
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

  const ProgramRun& m_run;
  ProgramResult& m_result;
  FileDescriptor m_from;
  std::unique_ptr<KeptProcess> m_process;
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
