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
#include <ctime>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#include "drivers/sshsnmpd/SshError.h"

namespace drivers {

namespace {

using devhost::FileDescriptor;
using Addresses = std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)>;

// A host that is looked up. A thread of the system does that for a name; an address needs none.
struct LookUp {
  LookUp(std::string hostName, std::uint16_t port) : host(std::move(hostName)), service(std::to_string(port)) {
    hints.ai_socktype = SOCK_STREAM;
    request.ar_name = host.c_str();
    request.ar_service = service.c_str();
    request.ar_request = &hints;
  }
  ~LookUp() {
    if (request.ar_result != nullptr) {
      ::freeaddrinfo(request.ar_result);
    }
  }
  LookUp(const LookUp&) = delete;
  LookUp& operator=(const LookUp&) = delete;

  const std::string host;
  const std::string service;
  addrinfo hints = {};
  gaicb request = {};
};

// Look-ups that nobody waits for any more. One that runs cannot be stopped, and its thread writes to it at its end.
class GivenUp {
 public:
  // With the process, or with the module, which may go before the threads of the system do.
  ~GivenUp() {
    RemoveEnded();
    for (std::unique_ptr<LookUp>& lookUp : m_lookUps) {
      static_cast<void>(lookUp.release());
    }
  }
  void Add(std::unique_ptr<LookUp> lookUp) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_lookUps.push_back(std::move(lookUp));
    RemoveEnded();
  }

 private:
  void RemoveEnded() {
    m_lookUps.remove_if(
        [](const std::unique_ptr<LookUp>& lookUp) { return ::gai_cancel(&lookUp->request) != EAI_NOTCANCELED; });
  }

  std::mutex m_mutex;
  std::list<std::unique_ptr<LookUp>> m_lookUps;
};

// 0, or the error of a look-up that has ended. Nothing when there is no time left: then the system may go on with it.
std::optional<int> WaitFor(LookUp& lookUp, const Deadline& deadline) {
  gaicb* requests[] = {&lookUp.request};
  const int error = ::getaddrinfo_a(GAI_NOWAIT, requests, 1, nullptr);
  if (error != 0) {
    return error;
  }
  for (int left = deadline.Left(); left != 0 && ::gai_error(&lookUp.request) == EAI_INPROGRESS; left = deadline.Left()) {
    const timespec limit = {left / 1000, left % 1000 * 1000000L};
    ::gai_suspend(requests, 1, &limit);
  }
  if (::gai_error(&lookUp.request) == EAI_INPROGRESS) {
    return std::nullopt;
  }
  // The thread has said how it ended, and is about to let go of the request.
  while (::gai_cancel(&lookUp.request) == EAI_NOTCANCELED) {
    std::this_thread::yield();
  }
  return ::gai_error(&lookUp.request);
}

Addresses Resolve(const std::string& host, std::uint16_t port, const Deadline& deadline) {
  static GivenUp givenUp;
  auto lookUp = std::make_unique<LookUp>(host, port);
  lookUp->hints.ai_flags = AI_NUMERICSERV | AI_NUMERICHOST;
  std::optional<int> error =
      ::getaddrinfo(host.c_str(), lookUp->service.c_str(), &lookUp->hints, &lookUp->request.ar_result);
  if (error == EAI_NONAME) {
    lookUp->hints.ai_flags = AI_NUMERICSERV;
    error = WaitFor(*lookUp, deadline);
  }
  if (!error) {
    givenUp.Add(std::move(lookUp));
    throw SshError(SshError::Kind::Unreachable, "its name did not resolve in time");
  }
  if (*error != 0) {
    throw SshError(SshError::Kind::Unreachable, std::string("its name does not resolve: ") + ::gai_strerror(*error));
  }
  return Addresses(std::exchange(lookUp->request.ar_result, nullptr), &::freeaddrinfo);
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
  const Addresses addresses = Resolve(host, port, deadline);
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
