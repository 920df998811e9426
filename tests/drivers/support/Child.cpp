#include "tests/drivers/support/Child.h"

#include <grp.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

namespace {

// Ends the child here, also after an exception: what comes after the fork, clean-up and further tests, is the parent's.
[[noreturn]] void RunAndExit(const std::function<int()>& work, int pipe) {
  try {
    const int result = work();
    ::_exit(::write(pipe, &result, sizeof result) == sizeof result ? 0 : 1);
  } catch (...) {
    ::_exit(1);
  }
}

}  // namespace

Child::Child(const std::function<int()>& work) : m_pid(-1), m_pipe(-1) {
  int ends[2];
  if (::pipe(ends) != 0) {
    throw std::runtime_error("no pipe");
  }
  m_pid = ::fork();
  if (m_pid < 0) {
    throw std::runtime_error("no child");
  }
  if (m_pid == 0) {
    RunAndExit(work, ends[1]);
  }
  ::close(ends[1]);
  m_pipe = ends[0];
}

Child::~Child() {
  if (m_pid > 0) {
    Kill();
    Result();
  }
  ::close(m_pipe);
}

void Child::Kill() const {
  ::kill(m_pid, SIGKILL);
}

std::optional<int> Child::Result() {
  int result = 0;
  const bool hasResult = ::read(m_pipe, &result, sizeof result) == sizeof result;
  ::waitpid(m_pid, nullptr, 0);
  m_pid = -1;
  return hasResult ? std::optional<int>(result) : std::nullopt;
}

std::optional<int> ResultAsOrdinaryUser(const std::function<int()>& work) {
  Child child([&work]() -> int {
    const unsigned int nobody = 65534;
    if (::geteuid() == 0 && (::setgroups(0, nullptr) != 0 || ::setgid(nobody) != 0 || ::setuid(nobody) != 0)) {
      ::_exit(1);
    }
    return work();
  });
  return child.Result();
}
