#include "tests/drivers/support/TcpProxy.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <deque>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

sockaddr_in Loopback(std::uint16_t port) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

std::size_t Index(TcpProxy::Way way) {
  return way == TcpProxy::Way::ToServer ? 0 : 1;
}

}  // namespace

struct TcpProxy::Connection {
  struct Part {
    Clock::time_point due;
    std::string text;
  };

  Connection(int client, int server) : ends{client, server} {}
  ~Connection() {
    ::close(ends[0]);
    ::close(ends[1]);
  }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  int From(Way way) const { return ends[Index(way)]; }
  int To(Way way) const { return ends[1 - Index(way)]; }

  int ends[2];
  std::deque<Part> parts[2];
  bool hasEnded[2] = {false, false};
};

TcpProxy::TcpProxy(std::uint16_t server) : m_server(server) {
  m_listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  sockaddr_in address = Loopback(0);
  socklen_t size = sizeof address;
  if (m_listener < 0 || ::bind(m_listener, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
      ::listen(m_listener, SOMAXCONN) != 0 || ::getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    throw std::runtime_error("no proxy");
  }
  m_port = ntohs(address.sin_port);
  m_thread = std::thread([this] { Serve(); });
}

TcpProxy::~TcpProxy() {
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_isDone = true;
  }
  m_thread.join();
  ::close(m_listener);
}

void TcpProxy::Delay(std::chrono::milliseconds delay) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_delay = delay;
}

void TcpProxy::Stall(bool isStalled) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_isStalled = isStalled;
}

void TcpProxy::Refuse(bool isRefused) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_isRefused = isRefused;
  if (isRefused) {
    m_connections.clear();
  }
}

void TcpProxy::CutAfter(Way way, std::size_t bytes, bool isAlways) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_hasCut = false;
  m_left[Index(way)] = bytes;
  m_each[Index(way)] = isAlways ? std::optional<std::size_t>(bytes) : std::nullopt;
}

void TcpProxy::CutNoMore() {
  const std::lock_guard<std::mutex> lock(m_mutex);
  for (const std::size_t way : {std::size_t{0}, std::size_t{1}}) {
    m_left[way].reset();
    m_each[way].reset();
  }
}

std::size_t TcpProxy::Bytes(Way way) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_bytes[Index(way)];
}

std::size_t TcpProxy::Connections() {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_count;
}

bool TcpProxy::HasCut() {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_hasCut;
}

void TcpProxy::Serve() {
  for (;;) {
    std::vector<pollfd> waiting = {{m_listener, POLLIN, 0}};
    int wait = 20;
    {
      const std::lock_guard<std::mutex> lock(m_mutex);
      if (m_isDone) {
        m_connections.clear();
        return;
      }
      for (const Connection& connection : m_connections) {
        for (const Way way : {Way::ToServer, Way::ToClient}) {
          if (!m_isStalled && !connection.hasEnded[Index(way)]) {
            waiting.push_back({connection.From(way), POLLIN, 0});
          }
          wait = connection.parts[Index(way)].empty() ? wait : 1;
        }
      }
    }
    ::poll(waiting.data(), waiting.size(), wait);
    const std::lock_guard<std::mutex> lock(m_mutex);
    Accept();
    for (auto connection = m_connections.begin(); connection != m_connections.end();) {
      connection = m_isStalled || Move(*connection) ? std::next(connection) : m_connections.erase(connection);
    }
  }
}

void TcpProxy::Accept() {
  for (;;) {
    const int client = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (client < 0) {
      return;
    }
    const int server = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_in address = Loopback(m_server);
    const int yes = 1;
    ::setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
    ::setsockopt(server, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
    if (m_isRefused || ::connect(server, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
      ::close(client);
      ::close(server);
      continue;
    }
    m_connections.emplace_back(client, server);
    ++m_count;
    for (const std::size_t way : {std::size_t{0}, std::size_t{1}}) {
      m_left[way] = m_each[way] ? m_each[way] : m_left[way];
    }
  }
}

// Whether the connection lasts.
bool TcpProxy::Move(Connection& connection) {
  for (const Way way : {Way::ToServer, Way::ToClient}) {
    if (!Take(connection, way) || !Give(connection, way)) {
      return false;
    }
  }
  return !(connection.hasEnded[0] && connection.parts[0].empty()) &&
         !(connection.hasEnded[1] && connection.parts[1].empty());
}

bool TcpProxy::Take(Connection& connection, Way way) {
  std::array<char, 65536> part = {};
  const ssize_t count = ::recv(connection.From(way), part.data(), part.size(), MSG_DONTWAIT);
  if (count > 0) {
    connection.parts[Index(way)].push_back(
        {Clock::now() + m_delay, std::string(part.data(), static_cast<std::size_t>(count))});
  } else if (count == 0 || (errno != EAGAIN && errno != EINTR)) {
    connection.hasEnded[Index(way)] = true;
  }
  return true;
}

bool TcpProxy::Give(Connection& connection, Way way) {
  auto& parts = connection.parts[Index(way)];
  std::optional<std::size_t>& left = m_left[Index(way)];
  while (!parts.empty() && parts.front().due <= Clock::now()) {
    std::string& text = parts.front().text;
    const std::size_t most = left ? std::min(*left, text.size()) : text.size();
    const ssize_t count = most == 0 ? 0 : ::send(connection.To(way), text.data(), most, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (count < 0 && (errno == EAGAIN || errno == EINTR)) {
      return true;
    }
    if (count < 0) {
      return false;
    }
    const auto sent = static_cast<std::size_t>(count);
    m_bytes[Index(way)] += sent;
    if (left) {
      *left -= sent;
      if (*left == 0) {
        left.reset();
        m_hasCut = true;
        return false;
      }
    }
    text.erase(0, sent);
    if (text.empty()) {
      parts.pop_front();
    }
  }
  return true;
}
