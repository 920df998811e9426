#include "devhost/console/Connection.h"

#include <sys/socket.h>

#include <boost/asio/buffer.hpp>
#include <boost/asio/write.hpp>
#include <cerrno>
#include <utility>

namespace devhost {

namespace {

using Error = boost::system::error_code;
using Socket = boost::asio::ip::tcp::socket;

constexpr std::chrono::seconds kLinger{1};
constexpr int kStreamBuffer = 128 * 1024;

// The number of the last event that the client has; those of now when it does not say.
std::uint64_t PositionOf(const HttpRequest& request, const EventRing& events) {
  const std::string text = request.Value("Last-Event-ID");
  if (text.empty() || text.size() > 18 || text.find_first_not_of("0123456789") != std::string::npos) {
    return events.NextNumber() - 1;
  }
  return std::stoull(text);
}

// Whether a client says plainly that it takes gzip; others get the file as it is.
bool TakesGzip(const HttpRequest& request) {
  const std::string accepted = ", " + request.Value("Accept-Encoding") + ",";
  return accepted.find(", gzip,") != std::string::npos;
}

HttpAnswer AnswerWith(const Asset& asset, bool isPacked) {
  HttpAnswer answer{200, std::string(isPacked ? asset.packed : asset.text), asset.type};
  if (isPacked) {
    answer.headers.emplace_back("Content-Encoding", "gzip");
  }
  return answer;
}

}  // namespace

Connection::Connection(Socket socket, Shared& shared)
    : m_socket(std::move(socket)), m_shared(shared), m_timer(m_socket.get_executor()) {}

void Connection::Start() {
  Limit(m_shared.limits.head);
  Read();
}

void Connection::Close() {
  if (m_isClosed) {
    return;
  }
  m_isClosed = true;
  if (m_question != 0) {
    m_shared.front.Drop(std::exchange(m_question, 0));
  }
  Error ignored;
  m_timer.cancel();
  m_socket.close(ignored);
  m_shared.onClosed(shared_from_this());
}

// The connection ends when the client has not done its part by then.
void Connection::Limit(std::chrono::milliseconds time) {
  m_timer.expires_after(time);
  m_timer.async_wait([self = shared_from_this()](Error error) {
    if (!error) {
      self->Close();
    }
  });
}

void Connection::Read() {
  m_socket.async_read_some(boost::asio::buffer(m_block), [self = shared_from_this()](Error error, std::size_t count) {
    if (error || self->m_isClosed) {
      self->Close();
      return;
    }
    self->m_reader.Put({self->m_block.data(), count});
    self->Advance();
  });
}

void Connection::Advance() {
  using State = RequestReader::State;
  if (m_reader.GetState() == State::Body && !m_isChecked) {
    CheckHead();
    return;
  }
  if (m_reader.GetState() == State::Wrong) {
    Refuse(m_reader.Refusal());
  } else if (m_reader.GetState() == State::Done) {
    Dispatch();
  } else {
    Read();
  }
}

void Connection::CheckHead() {
  m_isChecked = true;
  m_verdict = m_shared.guard.Check(m_reader.Current());
  if (!m_verdict.refusal) {
    m_isTrusted = m_isTrusted || m_verdict.match.route != nullptr;
    Limit(m_shared.limits.body);
    m_reader.Resume();
    Advance();
    return;
  }
  const auto pause =
      m_verdict.isWrongToken ? m_shared.pause.OnWrong(TokenPause::Clock::now()) : std::chrono::milliseconds::zero();
  if (pause == pause.zero()) {
    Refuse(*m_verdict.refusal);
    return;
  }
  m_timer.expires_after(pause);
  m_timer.async_wait([self = shared_from_this()](Error error) {
    if (!error && !self->m_isClosed) {
      self->Refuse(*self->m_verdict.refusal);
    }
  });
}

void Connection::Dispatch() {
  ++m_exchange;
  m_timer.cancel();
  const HttpRequest& request = m_reader.Current();
  const Then then = m_reader.KeepsAlive() ? Then::Next : Then::Linger;
  if (m_verdict.match.route == nullptr) {
    const HttpAnswer answer = AnswerWith(m_verdict.asset, TakesGzip(request));
    if (request.method == "HEAD") {
      SendBytes(HeadOf(answer, then != Then::Next), then);
    } else {
      Send(answer, then);
    }
    return;
  }
  if (m_verdict.match.route->path == "/events") {
    StartStream();
    return;
  }
  const auto reply = [weak = weak_from_this(), exchange = m_exchange, then](const HttpAnswer& answer) {
    const std::shared_ptr<Connection> self = weak.lock();
    if (self && !self->m_isClosed && self->m_exchange == exchange) {
      self->m_question = 0;
      self->Send(answer, then);
    }
  };
  const std::uint64_t question = m_shared.front.Handle(request, m_verdict.match, reply);
  if (question != 0) {
    m_question = question;
    WatchClient();
  }
}

// Somebody who has left does not want the answer any more. One that sends its next request early is not watched further.
void Connection::WatchClient() {
  m_socket.async_wait(Socket::wait_read, [self = shared_from_this(), exchange = m_exchange](Error error) {
    if (error || self->m_isClosed || self->m_exchange != exchange || self->m_question == 0) {
      return;
    }
    char byte = 0;
    const ssize_t count = ::recv(self->m_socket.native_handle(), &byte, 1, MSG_PEEK | MSG_DONTWAIT);
    if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR)) {
      self->Close();
    }
  });
}

void Connection::Send(const HttpAnswer& answer, Then then) {
  SendBytes(HeadOf(answer, then != Then::Next) + answer.body, then);
}

void Connection::SendBytes(std::string bytes, Then then) {
  m_out = std::move(bytes);
  m_isWriting = true;
  m_lastSent = std::chrono::steady_clock::now();
  Limit(m_shared.limits.write);
  boost::asio::async_write(m_socket, boost::asio::buffer(m_out),
                           [self = shared_from_this(), then](Error error, std::size_t) {
                             self->m_isWriting = false;
                             if (error || self->m_isClosed) {
                               self->Close();
                               return;
                             }
                             self->OnSent(then);
                           });
}

void Connection::OnSent(Then then) {
  if (then == Then::Next) {
    m_out = {};
    m_isChecked = false;
    m_verdict = {};
    Limit(m_shared.limits.head);
    m_reader.Next();
    Advance();
  } else if (then == Then::Linger) {
    Linger();
  } else {
    m_timer.cancel();
    Flush();
  }
}

void Connection::Refuse(const HttpAnswer& answer) {
  Send(answer, Then::Linger);
}

// What the client still sends is read for a moment. Otherwise the system would tell the client that the connection broke,
// and the answer would be lost.
void Connection::Linger() {
  Error ignored;
  m_socket.shutdown(Socket::shutdown_send, ignored);
  Limit(kLinger);
  ReadNothing();
}

// Reads until the client closes, for its end alone.
void Connection::ReadNothing() {
  m_socket.async_read_some(boost::asio::buffer(m_block), [self = shared_from_this()](Error error, std::size_t) {
    if (error || self->m_isClosed || self->m_isStream) {
      self->Close();
      return;
    }
    self->ReadNothing();
  });
}

void Connection::StartStream() {
  m_isStream = m_isNewStream = true;
  m_position = PositionOf(m_reader.Current(), m_shared.front.Events());
  Error ignored;
  // What waits in the system's buffer for a client that does not read is bounded as well.
  m_socket.set_option(boost::asio::socket_base::send_buffer_size(kStreamBuffer), ignored);
  HttpAnswer answer;
  answer.type = "text/event-stream";
  SendBytes(HeadOf(answer, true, true), Then::Stream);
  ReadNothing();
}

void Connection::Flush() {
  EventRing::Batch batch = m_shared.front.Events().After(m_position);
  const bool isStale = std::exchange(m_isNewStream, false) && batch.hasMissed;
  if (batch.hasMissed && !isStale) {
    Close();  // it does not read; with its last number it may come again
    return;
  }
  m_position = batch.last;
  if (isStale || !batch.bytes.empty()) {
    SendBytes((isStale ? "event: stale\ndata: {}\n\n" : "") + batch.bytes, Then::Stream);
  }
}

void Connection::OnEvents() {
  if (m_isStream && !m_isClosed && !m_isWriting) {
    Flush();
  }
}

void Connection::Ping(std::chrono::steady_clock::time_point now) {
  if (m_isStream && !m_isClosed && !m_isWriting && now - m_lastSent >= m_shared.limits.ping) {
    SendBytes("event: ping\ndata: {}\n\n", Then::Stream);
  }
}

}  // namespace devhost
