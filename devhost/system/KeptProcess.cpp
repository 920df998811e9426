#include "devhost/system/KeptProcess.h"

#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "devhost/system/Keeper.h"

namespace devhost {

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::milliseconds;

[[noreturn]] void Fail(int error) {
  throw std::system_error(error, std::generic_category());
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

// Keeps signals from the keeper, from its first moment on: its handlers would be those of this process.
pid_t ForkWithSignalsBlocked() {
  sigset_t all;
  sigset_t former;
  ::sigfillset(&all);
  ::pthread_sigmask(SIG_SETMASK, &all, &former);
  const pid_t child = ::fork();
  const int error = errno;
  if (child != 0) {
    ::pthread_sigmask(SIG_SETMASK, &former, nullptr);
  }
  errno = error;
  return child;
}

}  // namespace

KeptProcess::KeptProcess(const ProcessImage& image) {
  ProcessImage own = image;
  int ends[2];
  if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
    Fail(errno);
  }
  m_control = FileDescriptor(ends[0]);
  FileDescriptor keepers(ends[1]);
  const FileDescriptor thisEnd(static_cast<int>(::syscall(SYS_pidfd_open, ::getpid(), 0)));
  const KeeperTask task = {own.program.c_str(),
                           Pointers(own.arguments),
                           Pointers(own.environment),
                           own.folder,
                           own.input,
                           own.output,
                           own.privateFiles,
                           keepers.Get(),
                           thisEnd.Get()};
  m_keeper = ForkWithSignalsBlocked();
  if (m_keeper < 0) {
    Fail(errno);
  }
  if (m_keeper == 0) {
    // Where the system cannot report the maker's end, the keeper sees it by the socket.
    ::close(m_control.Get());
    Keep(task);
  }
  keepers.Close();
  KeeperStart start = {EIO, -1};
  while (::recv(m_control.Get(), &start, sizeof start, 0) < 0 && errno == EINTR) {
  }
  if (start.error != 0) {
    ReapKeeper();
    Fail(start.error);
  }
  m_pid = start.pid;
}

KeptProcess::~KeptProcess() {
  End();
}

void KeptProcess::Signal(int signal) {
  ::send(m_control.Get(), &signal, sizeof signal, MSG_NOSIGNAL);
}

bool KeptProcess::WaitForEnd(Milliseconds wait) {
  const Clock::time_point deadline = Clock::now() + wait;
  while (!m_hasEnded) {
    const Milliseconds left = std::max(std::chrono::ceil<Milliseconds>(deadline - Clock::now()), Milliseconds::zero());
    constexpr Milliseconds kLongest = std::chrono::hours(1);
    struct pollfd watched = {m_control.Get(), POLLIN, 0};
    if (::poll(&watched, 1, static_cast<int>(std::min(left, kLongest).count())) > 0) {
      ReadEnd();
    } else if (left == Milliseconds::zero()) {
      break;
    }
  }
  return m_hasEnded;
}

void KeptProcess::End() {
  // A copy of this end in another process, which a driver forked, does not keep it open.
  ::shutdown(m_control.Get(), SHUT_WR);
  if (!m_hasEnded) {
    ReadEnd();
  }
}

// Waits for the keeper's last words.
void KeptProcess::ReadEnd() {
  int status = 0;
  ssize_t count = 0;
  while ((count = ::recv(m_control.Get(), &status, sizeof status, 0)) < 0 && errno == EINTR) {
  }
  m_hasEnded = true;
  if (count == static_cast<ssize_t>(sizeof status)) {
    m_waitStatus = status;
  }
  ReapKeeper();
}

// It ends by itself now. Somebody who reaps all children of this process may have been faster.
void KeptProcess::ReapKeeper() {
  while (::waitpid(m_keeper, nullptr, 0) < 0 && errno == EINTR) {
  }
}

}  // namespace devhost
