#ifndef DEVHOST_CONSOLE_CONNECTION_H
#define DEVHOST_CONSOLE_CONNECTION_H

#include <array>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "devhost/console/Front.h"
#include "devhost/console/Guard.h"
#include "devhost/console/RequestReader.h"
#include "devhost/console/Server.h"

namespace devhost {

// One client: reads its requests one after the other, has them checked and answered, or becomes a stream of events. Whatever
// the client does or leaves undone, it has bounds in time and memory. Callbacks hold it; it is gone with the last of them.
class Connection : public std::enable_shared_from_this<Connection> {
 public:
  // What all connections share. Outlives them.
  struct Shared {
    Front& front;
    const Guard& guard;
    const ServerLimits& limits;
    TokenPause pause;
    std::function<void(const std::shared_ptr<Connection>&)> onClosed;
  };

  Connection(boost::asio::ip::tcp::socket socket, Shared& shared);

  // Reads the first request.
  void Start();
  // Sends new events, if this is a stream.
  void OnEvents();
  // Sends a sign of life, if this is a stream that is silent.
  void Ping(std::chrono::steady_clock::time_point now);
  void Close();
  // Whether it has shown the token.
  bool IsTrusted() const { return m_isTrusted; }

 private:
  using Timer = boost::asio::steady_timer;
  // What happens when the client has taken all that it was sent.
  enum class Then { Next, Linger, Stream };

  void Limit(std::chrono::milliseconds time);
  void Read();
  void Advance();
  void CheckHead();
  void Dispatch();
  void WatchClient();
  void Send(const HttpAnswer& answer, Then then);
  void SendBytes(std::string bytes, Then then);
  void OnSent(Then then);
  void Refuse(const HttpAnswer& answer);
  void Linger();
  void StartStream();
  void Flush();
  void ReadNothing();

  boost::asio::ip::tcp::socket m_socket;
  Shared& m_shared;
  Timer m_timer;
  RequestReader m_reader;
  GuardVerdict m_verdict;
  std::array<char, 16384> m_block{};
  std::string m_out;
  bool m_isClosed = false;
  bool m_isWriting = false;
  bool m_isChecked = false;  // the head of the current request
  bool m_isTrusted = false;
  bool m_isStream = false;
  bool m_isNewStream = false;    // has sent no event yet
  std::uint64_t m_exchange = 0;  // counts requests, so that late callbacks know theirs
  std::uint64_t m_question = 0;  // to the host process, or 0
  std::uint64_t m_position = 0;  // the last event that a stream has
  std::chrono::steady_clock::time_point m_lastSent;
};

}  // namespace devhost

#endif
