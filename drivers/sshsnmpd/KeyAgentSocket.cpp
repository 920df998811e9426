#include "drivers/sshsnmpd/KeyAgentSocket.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <system_error>

#include "drivers/sshsnmpd/SshError.h"

namespace drivers {

namespace {

using devhost::FileDescriptor;

// Not open where there is no agent.
FileDescriptor Connect(const Deadline& deadline) {
  const char* const path = std::getenv("SSH_AUTH_SOCK");
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  if (path == nullptr || std::strlen(path) >= sizeof address.sun_path) {
    return FileDescriptor();
  }
  std::copy(path, path + std::strlen(path), address.sun_path);
  FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  // This limits connecting, too, which waits while the agent's queue is full. 0 would mean that there is no limit.
  const int left = std::max(1, deadline.Left());
  const timeval limit = {left / 1000, left % 1000 * 1000L};
  ::setsockopt(socket.Get(), SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
  if (::connect(socket.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
    return socket;
  }
  if (errno == EAGAIN) {
    throw SshError(SshError::Kind::Unreachable, "the SSH agent on this machine did not answer in time");
  }
  return FileDescriptor();
}

}  // namespace

KeyAgentSocket::KeyAgentSocket(const Deadline& deadline) : m_socket(Connect(deadline)) {
  if (!m_socket.IsOpen()) {
    return;
  }
  // Signals are the host's, and go to its own threads.
  sigset_t all;
  sigset_t former;
  sigfillset(&all);
  ::pthread_sigmask(SIG_SETMASK, &all, &former);
  try {
    m_watch = std::thread([this, deadline] { Watch(deadline); });
  } catch (const std::system_error& error) {
    ::pthread_sigmask(SIG_SETMASK, &former, nullptr);
    throw SshError(SshError::Kind::Unreachable, std::string("the SSH agent cannot be watched: ") + error.what());
  }
  ::pthread_sigmask(SIG_SETMASK, &former, nullptr);
}

KeyAgentSocket::~KeyAgentSocket() {
  if (!m_watch.joinable()) {
    return;
  }
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_hasEnded = true;
  }
  m_ended.notify_one();
  m_watch.join();
}

int KeyAgentSocket::Duplicate() const {
  const int duplicate = m_socket.IsOpen() ? ::fcntl(m_socket.Get(), F_DUPFD_CLOEXEC, 0) : -1;
  if (m_socket.IsOpen() && duplicate < 0) {
    throw SshError(SshError::Kind::Unreachable, std::generic_category().message(errno));
  }
  return duplicate;
}

void KeyAgentSocket::Watch(const Deadline& deadline) {
  std::unique_lock<std::mutex> lock(m_mutex);
  if (!m_ended.wait_for(lock, std::chrono::milliseconds(deadline.Left()), [this] { return m_hasEnded; })) {
    m_wasCut = true;
    ::shutdown(m_socket.Get(), SHUT_RDWR);
  }
}

}  // namespace drivers
