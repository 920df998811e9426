#ifndef TESTS_DRIVERS_SUPPORT_TCP_PROXY_H
#define TESTS_DRIVERS_SUPPORT_TCP_PROXY_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <list>
#include <mutex>
#include <optional>
#include <thread>

// A bad line: passes connections on to a port of 127.0.0.1, from a thread of its own, slowly, not at all, or only up to a
// byte.
class TcpProxy {
 public:
  enum class Way { ToServer, ToClient };

  explicit TcpProxy(std::uint16_t server);
  ~TcpProxy();
  TcpProxy(const TcpProxy&) = delete;
  TcpProxy& operator=(const TcpProxy&) = delete;

  std::uint16_t Port() const { return m_port; }

  // From now on each byte takes that long, in each direction.
  void Delay(std::chrono::milliseconds delay);
  // While it stalls, connections are accepted and nothing comes through.
  void Stall(bool isStalled);
  // Refused connections are closed at once; those that are open are closed, too.
  void Refuse(bool isRefused);
  // Hangs up when that many more bytes have gone that way, once, or on each connection from its first byte.
  void CutAfter(Way way, std::size_t bytes, bool isAlways = false);
  // Ends what CutAfter began.
  void CutNoMore();

  // The bytes that went that way so far, and the connections.
  std::size_t Bytes(Way way);
  std::size_t Connections();
  // Whether CutAfter has hung up.
  bool HasCut();

 private:
  struct Connection;

  void Serve();
  void Accept();
  bool Move(Connection& connection);
  bool Take(Connection& connection, Way way);
  bool Give(Connection& connection, Way way);

  const std::uint16_t m_server;
  std::uint16_t m_port = 0;
  int m_listener = -1;
  std::mutex m_mutex;
  std::list<Connection> m_connections;
  std::chrono::milliseconds m_delay{0};
  bool m_isStalled = false;
  bool m_isRefused = false;
  bool m_isDone = false;
  std::optional<std::size_t> m_left[2];  // until the cut
  std::optional<std::size_t> m_each[2];  // what m_left begins with on each connection
  std::size_t m_bytes[2] = {0, 0};
  std::size_t m_count = 0;
  bool m_hasCut = false;
  std::thread m_thread;
};

#endif
