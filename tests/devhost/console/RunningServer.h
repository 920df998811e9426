#ifndef TESTS_DEVHOST_CONSOLE_RUNNING_SERVER_H
#define TESTS_DEVHOST_CONSOLE_RUNNING_SERVER_H

#include <string>
#include <thread>

#include "devhost/console/Server.h"
#include "tests/devhost/console/Client.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {

// A console on a free port with the scripted host process, on a thread of its own.
class RunningServer {
 public:
  struct Setup {
    bool isReadOnly = false;
    std::string mode = {};  // of the scripted host process
    ServerLimits limits = {};
  };

  RunningServer() : RunningServer(Setup()) {}
  explicit RunningServer(const Setup& setup)
      : m_server(
            OptionsOf(setup), 0, [](std::string_view) {}, setup.limits),
        m_thread([this] { m_end = m_server.Run(); }) {}
  ~RunningServer() { Stop(); }

  std::uint16_t Port() const { return m_server.Port(); }
  std::string Address() const { return m_server.Address(); }
  std::string Token() const { return m_server.GetToken().Text(); }

  // Stops it in order and says how that went.
  Server::End Stop() {
    if (m_thread.joinable()) {
      m_server.Stop();
      m_thread.join();
    }
    return m_end;
  }
  // Waits until it stops by itself.
  Server::End Await() {
    m_thread.join();
    return m_end;
  }
  // What the host process wrote when its input ended.
  std::string Kept() const { return folder.Read("kept"); }

  // An ordinary request of the page.
  std::string Request(const std::string& method, const std::string& path, const std::string& body = "",
                      const std::string& more = "") const {
    return Ask(Port(), Token(), method, "/api/v1" + path, body, more);
  }
  // One exchange on a connection of its own.
  Received Exchange(const std::string& request) const {
    Client client(Port());
    client.Send(request);
    return client.Read();
  }
  Received Get(const std::string& path) const { return Exchange(Request("GET", path)); }
  // Asks until the state of the host process is this one; the last answer.
  std::string AwaitState(const std::string& state) const {
    Received answer;
    for (int i = 0; i < 1200; ++i) {
      answer = Get("/session");
      if (answer.body.find("\"state\":\"" + state + "\"") != std::string::npos) {
        break;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return answer.body;
  }

  const testsupport::ScratchFolder folder;

 private:
  FrontOptions OptionsOf(const Setup& setup) const {
    FrontOptions options;
    options.version = "1.2.3";
    options.project = "project.xml";
    options.isReadOnly = setup.isReadOnly;
    options.program = SCRIPTED_HOST;
    options.words = {"ScriptedHost", folder.Path("kept"), setup.mode};
    return options;
  }

  Server m_server;
  Server::End m_end;
  std::thread m_thread;
};

}  // namespace devhost

#endif
