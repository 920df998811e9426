#ifndef DEVHOST_CONSOLE_SERVER_H
#define DEVHOST_CONSOLE_SERVER_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "devhost/console/Front.h"
#include "devhost/console/Token.h"

namespace devhost {

// The bounds of connections. Tests shorten them.
struct ServerLimits {
  std::size_t connections = 64;
  std::chrono::milliseconds head{10'000};   // from the end of one request to the whole head of the next
  std::chrono::milliseconds body{30'000};   // from the head to the end of the body
  std::chrono::milliseconds write{30'000};  // until a client has taken what it was sent
  std::chrono::milliseconds ping{15'000};   // between two signs of life of a stream without events
};

// The console on the network: listens on the loopback address 127.0.0.1, and on no other. One thread serves all clients and
// the host process, and never waits for one of them.
class Server {
 public:
  // How the console came to its end.
  struct End {
    int signal = 0;           // the second signal that asked for it: it did not wait for the host process
    bool hasFailed = false;   // the project could not be started at all
    int exitStatus = 0;       // of the host process
    std::string reason = "";  // why the host process ended; "" when it was asked to and did
  };

  // Listens at once, on a free port when `port` is 0. `onErrors` gets what the host process writes to standard error. Throws
  // std::system_error when the port cannot be had.
  Server(FrontOptions options, std::uint16_t port, std::function<void(std::string_view)> onErrors, ServerLimits limits = {});
  ~Server();

  std::uint16_t Port() const;
  // The address of the page with the token, which stands in the fragment: browsers send that to nobody.
  std::string Address() const;
  const Token& GetToken() const;

  // Starts the host process and serves until SIGINT, SIGTERM or SIGHUP; then it asks the host process to stop, and waits for
  // that. A second signal ends both at once. `onOpen` is called once, when there is a page worth opening: when the project
  // has started, or takes more than kSoon for that, or the host process has ended without a reason. `onTick` is called about
  // once a second.
  End Run(const std::function<void()>& onOpen = {}, const std::function<void()>& onTick = {});
  static constexpr std::chrono::seconds kSoon{2};

  // Does what the first signal does; from another thread, too.
  void Stop();

 private:
  class Loop;
  std::unique_ptr<Loop> m_loop;
};

}  // namespace devhost

#endif
