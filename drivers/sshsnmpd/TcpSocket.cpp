#include "drivers/sshsnmpd/TcpSocket.h"

#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <system_error>

#include "drivers/sshsnmpd/SshError.h"

namespace drivers {

namespace {

using devhost::FileDescriptor;
using Addresses = std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)>;

Addresses Resolve(const std::string& host, std::uint16_t port) {
  addrinfo hints = {};
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = AI_NUMERICSERV;
  addrinfo* found = nullptr;
  const int error = ::getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &found);
  if (error != 0) {
    throw SshError(SshError::Kind::Unreachable, std::string("its name does not resolve: ") + ::gai_strerror(error));
  }
  return Addresses(found, &::freeaddrinfo);
}

void SetOption(int socket, int level, int option, int value) {
  // An option that the system does not know costs time, not correctness: every wait has a deadline of its own.
  ::setsockopt(socket, level, option, &value, sizeof value);
}

void SetOptions(int socket) {
  const int idleSeconds = 15;
  const int probeSeconds = 5;
  const int probes = 3;
  const int unansweredMilliseconds = 30000;
  SetOption(socket, IPPROTO_TCP, TCP_NODELAY, 1);
  SetOption(socket, SOL_SOCKET, SO_KEEPALIVE, 1);
  SetOption(socket, IPPROTO_TCP, TCP_KEEPIDLE, idleSeconds);
  SetOption(socket, IPPROTO_TCP, TCP_KEEPINTVL, probeSeconds);
  SetOption(socket, IPPROTO_TCP, TCP_KEEPCNT, probes);
  SetOption(socket, IPPROTO_TCP, TCP_USER_TIMEOUT, unansweredMilliseconds);
}

// 0 when the socket is connected, or the system's error number.
int FinishConnecting(int socket, const Deadline& deadline) {
  pollfd waiting = {socket, POLLOUT, 0};
  for (;;) {
    const int ready = ::poll(&waiting, 1, deadline.Left());
    if (ready == 0) {
      return ETIMEDOUT;
    }
    if (ready > 0) {
      int error = 0;
      socklen_t size = sizeof error;
      return ::getsockopt(socket, SOL_SOCKET, SO_ERROR, &error, &size) == 0 ? error : errno;
    }
    if (errno != EINTR) {
      return errno;
    }
  }
}

int Connect(int socket, const addrinfo& address, const Deadline& deadline) {
  if (::connect(socket, address.ai_addr, address.ai_addrlen) == 0) {
    return 0;
  }
  return errno == EINPROGRESS || errno == EINTR ? FinishConnecting(socket, deadline) : errno;
}

}  // namespace

FileDescriptor ConnectTcp(const std::string& host, std::uint16_t port, const Deadline& deadline) {
  const Addresses addresses = Resolve(host, port);
  int error = ETIMEDOUT;
  for (const addrinfo* address = addresses.get(); address != nullptr; address = address->ai_next) {
    FileDescriptor socket(::socket(address->ai_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!socket.IsOpen()) {
      error = errno;
      continue;
    }
    SetOptions(socket.Get());
    error = Connect(socket.Get(), *address, deadline);
    if (error == 0) {
      return socket;
    }
  }
  throw SshError(SshError::Kind::Unreachable, std::generic_category().message(error));
}

LentSocket::LentSocket(int socket) : m_socket(socket), m_lent(::fcntl(socket, F_DUPFD_CLOEXEC, 0)) {
  if (m_lent < 0) {
    throw SshError(SshError::Kind::Unreachable, std::generic_category().message(errno));
  }
}

LentSocket::~LentSocket() {
  struct stat own = {};
  struct stat lent = {};
  if (::fstat(m_socket, &own) == 0 && ::fstat(m_lent, &lent) == 0 && own.st_dev == lent.st_dev &&
      own.st_ino == lent.st_ino) {
    ::close(m_lent);
  }
}

}  // namespace drivers
