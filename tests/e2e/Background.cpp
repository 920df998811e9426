#include "tests/e2e/Background.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include "tests/e2e/Wait.h"

namespace e2e {
namespace {

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) {
    pointers.push_back(text.data());
  }
  pointers.push_back(nullptr);
  return pointers;
}

std::vector<std::string> Environment(const std::vector<std::pair<std::string, std::string>>& more) {
  std::vector<std::string> all;
  for (const auto& [name, value] : more) {
    all.push_back(name + "=" + value);
  }
  for (char** entry = environ; *entry != nullptr; ++entry) {
    all.emplace_back(*entry);
  }
  return all;
}

}  // namespace

Background::Background(std::vector<std::string> words, std::vector<std::pair<std::string, std::string>> environment,
                       const std::string& output)
    : m_pid(-1) {
  std::vector<std::string> variables = Environment(environment);
  const std::vector<char*> arguments = Pointers(words);
  const std::vector<char*> inherited = Pointers(variables);
  const int file = ::open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0644);
  if (file < 0) {
    throw std::runtime_error("cannot write " + output + ": " + std::strerror(errno));
  }
  const pid_t parent = ::getpid();
  m_pid = ::fork();
  if (m_pid == 0) {
    // Drivers in this process have threads, so the child may not take a lock.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() == parent && ::dup2(file, 1) == 1 && ::dup2(file, 2) == 2) {
      ::execve(arguments[0], arguments.data(), inherited.data());
    }
    ::_exit(127);
  }
  ::close(file);
  if (m_pid < 0) {
    throw std::runtime_error("cannot start " + words[0]);
  }
}

Background::~Background() {
  Kill();
}

bool Background::Kill() {
  if (m_pid <= 0) {
    return false;
  }
  ::kill(m_pid, SIGKILL);
  int status = 0;
  ::waitpid(m_pid, &status, 0);
  m_pid = -1;
  return WIFSIGNALED(status);
}

int Background::End(int signal) {
  ::kill(m_pid, signal);
  int status = 0;
  if (!Eventually([this, &status] { return ::waitpid(m_pid, &status, WNOHANG) == m_pid; })) {
    ::kill(m_pid, SIGKILL);
    ::waitpid(m_pid, &status, 0);
  }
  m_pid = -1;
  return status;
}

bool Background::Ended() {
  if (m_pid > 0 && ::waitpid(m_pid, nullptr, WNOHANG) == m_pid) {
    m_pid = -1;
  }
  return m_pid <= 0;
}

}  // namespace e2e
