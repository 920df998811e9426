#include "devhost/console/Server.h"

#include <algorithm>
#include <boost/asio/io_context.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/signal_set.hpp>
#include <csignal>
#include <system_error>
#include <utility>
#include <vector>

#include "devhost/console/Connection.h"
#include "devhost/console/Guard.h"

namespace devhost {

namespace {

namespace asio = boost::asio;
using Error = boost::system::error_code;
using Tcp = asio::ip::tcp;

constexpr std::chrono::milliseconds kTick{250};
constexpr std::chrono::milliseconds kFarewell{100};  // for answers that are on their way at the end

// What somebody gets who comes when there is no room.
void TurnAway(Tcp::socket& socket) {
  const HttpAnswer full = ErrorAnswer(503, "full", "too many connections; close pages of the console that are not used");
  const std::string bytes = HeadOf(full, true) + full.body;
  Error ignored;
  socket.non_blocking(true, ignored);
  socket.write_some(asio::buffer(bytes), ignored);
}

}  // namespace

class Server::Loop {
 public:
  Loop(FrontOptions options, std::uint16_t port, std::function<void(std::string_view)> onErrors, ServerLimits limits)
      : m_limits(limits),
        m_acceptor(Listen(m_io, port)),
        m_port(m_acceptor.local_endpoint().port()),
        m_guard(m_port, m_token, options.isReadOnly),
        m_front(
            std::move(options), [this] { OnNews(); }, std::move(onErrors)),
        m_shared{m_front,
                 m_guard,
                 m_limits,
                 {},
                 [this](const std::shared_ptr<Connection>& one) {
                   m_connections.erase(std::remove(m_connections.begin(), m_connections.end(), one), m_connections.end());
                 }},
        m_link(m_io),
        m_signals(m_io),
        m_tick(m_io),
        m_retry(m_io) {
    m_link.assign(::dup(m_front.Link().Descriptor()));
  }

  Server::End Run(std::function<void()> onOpen, const std::function<void()>& onTick) {
    m_onOpen = std::move(onOpen);
    m_opensBy = std::chrono::steady_clock::now() + kSoon;
    m_signals.add(SIGINT);
    m_signals.add(SIGTERM);
    m_signals.add(SIGHUP);
    AwaitSignal();
    AwaitLink();
    AwaitTick(onTick);
    Accept();
    m_front.Link().Start();
    m_io.run();
    CloseAll();
    return m_end;
  }

  void Stop() {
    asio::post(m_io, [this] { BeginEnd(); });
  }

  std::uint16_t Port() const { return m_port; }
  const Token& GetToken() const { return m_token; }

 private:
  static Tcp::acceptor Listen(asio::io_context& io, std::uint16_t port) {
    try {
      return Tcp::acceptor(io, {asio::ip::address_v4::loopback(), port}, true);
    } catch (const boost::system::system_error& error) {
      throw std::system_error(error.code().value(), std::generic_category(),
                              "cannot listen on 127.0.0.1, port " + std::to_string(port));
    }
  }

  void Accept() {
    m_acceptor.async_accept([this](Error error, Tcp::socket socket) {
      if (error == asio::error::operation_aborted) {
        return;
      }
      if (error) {  // the process has no descriptor left, for example; one may come back
        m_retry.expires_after(kTick);
        m_retry.async_wait([this](Error aborted) {
          if (!aborted) {
            Accept();
          }
        });
        return;
      }
      Admit(std::move(socket));
      Accept();
    });
  }

  void Admit(Tcp::socket socket) {
    Error error;
    const Tcp::endpoint peer = socket.remote_endpoint(error);
    if (error || !peer.address().is_loopback()) {
      return;
    }
    if (m_connections.size() >= m_limits.connections && !MakeRoom()) {
      TurnAway(socket);
      return;
    }
    socket.set_option(Tcp::no_delay(true), error);
    const auto connection = std::make_shared<Connection>(std::move(socket), m_shared);
    m_connections.push_back(connection);
    connection->Start();
  }

  // Ends the oldest connection that has not shown the token: others could hold all of them open, and lock the owner out.
  bool MakeRoom() {
    const auto stranger = std::find_if(m_connections.begin(), m_connections.end(),
                                       [](const std::shared_ptr<Connection>& one) { return !one->IsTrusted(); });
    if (stranger == m_connections.end()) {
      return false;
    }
    std::shared_ptr<Connection>(*stranger)->Close();
    return true;
  }

  void AwaitLink() {
    m_link.async_wait(asio::posix::descriptor_base::wait_read, [this](Error error) {
      if (error) {
        return;
      }
      m_front.Link().Work();
      AwaitLink();
    });
  }

  void AwaitTick(const std::function<void()>& onTick) {
    m_tick.expires_after(kTick);
    m_tick.async_wait([this, onTick](Error error) {
      if (error) {
        return;
      }
      const auto now = std::chrono::steady_clock::now();
      m_front.Link().Tick(now);
      if (now >= m_opensBy) {
        Open();
      }
      for (const std::shared_ptr<Connection>& one : Copies()) {
        one->Ping(now);
      }
      if (onTick) {
        onTick();
      }
      AwaitTick(onTick);
    });
  }

  void AwaitSignal() {
    m_signals.async_wait([this](Error error, int signal) {
      if (error) {
        return;
      }
      if (m_isEnding) {
        m_end.signal = signal;
        m_front.Link().Kill();
        m_io.stop();
        return;
      }
      BeginEnd();
      AwaitSignal();
    });
  }

  void BeginEnd() {
    if (std::exchange(m_isEnding, true)) {
      return;
    }
    Error ignored;
    m_acceptor.close(ignored);
    if (m_front.Link().GetState() == HostLink::State::Ended) {
      SayFarewell();
    } else {
      m_front.Link().Stop(HostLink::Clock::now());
    }
  }

  // There are new events; one of them may be about the host process.
  void OnNews() {
    for (const std::shared_ptr<Connection>& one : Copies()) {
      one->OnEvents();
    }
    HostLink& link = m_front.Link();
    m_wasUp = m_wasUp || link.GetState() == HostLink::State::Up;
    if (m_wasUp) {
      Open();
    }
    if (link.GetState() != HostLink::State::Ended) {
      return;
    }
    // Nobody has seen the page with this project yet, so whoever has typed the command gets the reason.
    m_end.hasFailed = link.HasFailed() && !m_wasUp;
    m_end.exitStatus = link.ExitStatus();
    m_end.reason = link.Reason();
    if (m_isEnding || m_end.hasFailed) {
      SayFarewell();
    } else {
      Open();
    }
  }

  void Open() {
    if (const auto open = std::exchange(m_onOpen, nullptr); open && !m_isEnding) {
      open();
    }
  }

  void SayFarewell() {
    m_retry.expires_after(kFarewell);
    m_retry.async_wait([this](Error) { m_io.stop(); });
  }

  void CloseAll() {
    for (const std::shared_ptr<Connection>& one : Copies()) {
      one->Close();
    }
  }

  // Connections leave the list while it is walked.
  std::vector<std::shared_ptr<Connection>> Copies() const { return m_connections; }

  const ServerLimits m_limits;
  const Token m_token;
  asio::io_context m_io{1};
  Tcp::acceptor m_acceptor;
  const std::uint16_t m_port;
  const Guard m_guard;
  Front m_front;
  Connection::Shared m_shared;
  std::vector<std::shared_ptr<Connection>> m_connections;  // the oldest first
  asio::posix::stream_descriptor m_link;
  asio::signal_set m_signals;
  asio::steady_timer m_tick;
  asio::steady_timer m_retry;
  std::function<void()> m_onOpen;
  std::chrono::steady_clock::time_point m_opensBy;
  Server::End m_end;
  bool m_isEnding = false;
  bool m_wasUp = false;
};

Server::Server(FrontOptions options, std::uint16_t port, std::function<void(std::string_view)> onErrors, ServerLimits limits)
    : m_loop(std::make_unique<Loop>(std::move(options), port, std::move(onErrors), limits)) {}
Server::~Server() = default;

std::uint16_t Server::Port() const {
  return m_loop->Port();
}

std::string Server::Address() const {
  return "http://127.0.0.1:" + std::to_string(Port()) + "/#" + GetToken().Text();
}

const Token& Server::GetToken() const {
  return m_loop->GetToken();
}

Server::End Server::Run(const std::function<void()>& onOpen, const std::function<void()>& onTick) {
  return m_loop->Run(onOpen, onTick);
}

void Server::Stop() {
  m_loop->Stop();
}

}  // namespace devhost
