#ifndef TESTS_DEVHOST_CONSOLE_CLIENT_H
#define TESTS_DEVHOST_CONSOLE_CLIENT_H

#include <chrono>
#include <cstdint>
#include <map>
#include <string>

#include "devhost/system/FileDescriptor.h"

namespace devhost {

// What a client has received.
struct Received {
  int status = 0;  // 0 when the connection ended before there was one
  std::string head;
  std::map<std::string, std::string> headers;  // names in lower case
  std::string body;
};

// A client that writes exactly the bytes that a test gives it, over a real socket.
class Client {
 public:
  // Connects to 127.0.0.1. `buffer` is the size of its receive buffer, 0 for the system's.
  explicit Client(std::uint16_t port, int buffer = 0);

  // Its own port.
  std::uint16_t Port() const;
  // Writes all of it, as far as the other side takes it within the deadline; whether it took all.
  bool Send(const std::string& bytes);
  void EndSending();
  // Reads an answer with a Content-Length; `isHead` for the answer to a HEAD.
  Received Read(bool isHead = false);
  // Reads until `end` has come and returns all up to there; what has come when the time is over or the connection ends.
  std::string ReadUntil(const std::string& end, std::chrono::milliseconds time = std::chrono::seconds(60));
  // Whether the other side closes within the time.
  bool IsClosed(std::chrono::milliseconds time = std::chrono::seconds(60));

 private:
  bool Fill(std::chrono::steady_clock::time_point deadline);

  FileDescriptor m_socket;
  std::string m_received;
};

// An ordinary request of the page, as it stands on the network. `more` are header lines, each with its line end.
std::string Ask(std::uint16_t port, const std::string& token, const std::string& method, const std::string& target,
                const std::string& body = "", const std::string& more = "");

}  // namespace devhost

#endif
