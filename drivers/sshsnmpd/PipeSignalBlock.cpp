#include "drivers/sshsnmpd/PipeSignalBlock.h"

#include <cerrno>
#include <ctime>

namespace drivers {

namespace {

sigset_t PipeSignal() noexcept {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGPIPE);
  return set;
}

bool IsPending() noexcept {
  sigset_t pending;
  sigemptyset(&pending);
  return ::sigpending(&pending) == 0 && sigismember(&pending, SIGPIPE) == 1;
}

}  // namespace

PipeSignalBlock::PipeSignalBlock() noexcept : m_former(), m_wasPending(IsPending()) {
  const sigset_t set = PipeSignal();
  ::pthread_sigmask(SIG_BLOCK, &set, &m_former);
}

PipeSignalBlock::~PipeSignalBlock() {
  const sigset_t set = PipeSignal();
  const timespec now = {0, 0};
  // One that was pending before is somebody else's.
  while (!m_wasPending && ::sigtimedwait(&set, nullptr, &now) < 0 && errno == EINTR) {
  }
  ::pthread_sigmask(SIG_SETMASK, &m_former, nullptr);
}

}  // namespace drivers
