#include "devhost/console/HostProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>

namespace devhost {

namespace {

struct Pipe {
  Pipe() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
      throw std::system_error(errno, std::generic_category(), "no pipe to the host process");
    }
    out = FileDescriptor(ends[0]);
    in = FileDescriptor(ends[1]);
  }
  FileDescriptor out;  // to read from
  FileDescriptor in;   // to write to
};

// What the new process starts with, beside its program.
class Preparation {
 public:
  Preparation() {
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawnattr_init(&attributes);
    sigset_t none;
    ::sigemptyset(&none);
    ::posix_spawnattr_setsigmask(&attributes, &none);
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK);
  }
  ~Preparation() {
    ::posix_spawn_file_actions_destroy(&actions);
    ::posix_spawnattr_destroy(&attributes);
  }
  Preparation(const Preparation&) = delete;
  Preparation& operator=(const Preparation&) = delete;

  void Give(int descriptor, int as) { ::posix_spawn_file_actions_adddup2(&actions, descriptor, as); }

  posix_spawn_file_actions_t actions;
  posix_spawnattr_t attributes;
};

void DoNotBlock(int descriptor) {
  ::fcntl(descriptor, F_SETFL, ::fcntl(descriptor, F_GETFL) | O_NONBLOCK);
}

}  // namespace

HostProcess::HostProcess(const std::string& program, const std::vector<std::string>& words) {
  Pipe input;
  Pipe output;
  Pipe errors;
  Preparation preparation;
  preparation.Give(input.out.Get(), STDIN_FILENO);
  preparation.Give(output.in.Get(), STDOUT_FILENO);
  preparation.Give(errors.in.Get(), STDERR_FILENO);
  // Sockets of clients among them: a host process that kept one would keep the client waiting.
  ::posix_spawn_file_actions_addclosefrom_np(&preparation.actions, STDERR_FILENO + 1);
  std::vector<std::string> copies = words;
  std::vector<char*> arguments;
  arguments.reserve(copies.size() + 1);
  for (std::string& copy : copies) {
    arguments.push_back(copy.data());
  }
  arguments.push_back(nullptr);
  const int error =
      ::posix_spawn(&m_pid, program.c_str(), &preparation.actions, &preparation.attributes, arguments.data(), environ);
  if (error != 0) {
    throw std::system_error(error, std::generic_category(), "the host process could not be started");
  }
  m_input = std::move(input.in);
  m_output = std::move(output.out);
  m_errors = std::move(errors.out);
  DoNotBlock(m_input.Get());
  DoNotBlock(m_output.Get());
  DoNotBlock(m_errors.Get());
}

HostProcess::~HostProcess() {
  Kill();
  if (!m_hasEnded) {
    while (::waitpid(m_pid, &m_status, 0) == -1 && errno == EINTR) {
    }
  }
}

void HostProcess::Kill() {
  if (!m_hasEnded) {
    ::kill(-m_pid, SIGKILL);
  }
}

// The signal of devhost/engine/WatchedProcess.h, which is ignored by others.
void HostProcess::AskForCall() const {
  if (!m_hasEnded) {
    ::kill(m_pid, SIGURG);
  }
}

bool HostProcess::HasEnded() {
  if (!m_hasEnded && ::waitpid(m_pid, &m_status, WNOHANG) == m_pid) {
    m_hasEnded = true;
  }
  return m_hasEnded;
}

std::string HostProcess::HowItEnded() const {
  if (!WIFSIGNALED(m_status)) {
    return "the host process ended with exit status " + std::to_string(WEXITSTATUS(m_status));
  }
  const char* const name = ::sigabbrev_np(WTERMSIG(m_status));
  return std::string("the host process was ended by ") + (name == nullptr ? "a signal" : "SIG") +
         (name == nullptr ? "" : name);
}

int HostProcess::ExitStatus() const {
  return WIFEXITED(m_status) ? WEXITSTATUS(m_status) : 1;
}

}  // namespace devhost
