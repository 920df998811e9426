#include "tests/devhost/console/Client.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <sstream>
#include <stdexcept>

namespace devhost {

namespace {

using Clock = std::chrono::steady_clock;

bool WaitFor(int socket, short events, Clock::time_point deadline) {
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
  struct pollfd ready = {socket, events, 0};
  return left > 0 && ::poll(&ready, 1, static_cast<int>(left)) > 0;
}

void TakeHead(const std::string& head, Received& received) {
  std::istringstream lines(head);
  std::string line;
  std::getline(lines, line);
  received.status = line.size() > 12 ? std::stoi(line.substr(9, 3)) : 0;
  while (std::getline(lines, line) && line != "\r") {
    const std::size_t colon = line.find(':');
    std::string name = line.substr(0, colon);
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    received.headers[name] = line.substr(colon + 2, line.size() - colon - 3);
  }
}

}  // namespace

Client::Client(std::uint16_t port, int buffer) : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  if (buffer != 0) {
    ::setsockopt(m_socket.Get(), SOL_SOCKET, SO_RCVBUF, &buffer, sizeof buffer);
  }
  struct sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (::connect(m_socket.Get(), reinterpret_cast<struct sockaddr*>(&address), sizeof address) != 0) {
    throw std::runtime_error("no connection to port " + std::to_string(port));
  }
}

std::uint16_t Client::Port() const {
  struct sockaddr_in address = {};
  socklen_t size = sizeof address;
  ::getsockname(m_socket.Get(), reinterpret_cast<struct sockaddr*>(&address), &size);
  return ntohs(address.sin_port);
}

bool Client::Send(const std::string& bytes) {
  const auto deadline = Clock::now() + std::chrono::seconds(60);
  std::size_t sent = 0;
  while (sent < bytes.size() && WaitFor(m_socket.Get(), POLLOUT, deadline)) {
    const ssize_t count = ::send(m_socket.Get(), bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (count <= 0) {
      break;
    }
    sent += static_cast<std::size_t>(count);
  }
  return sent == bytes.size();
}

void Client::EndSending() {
  ::shutdown(m_socket.Get(), SHUT_WR);
}

bool Client::Fill(Clock::time_point deadline) {
  std::array<char, 65536> block{};
  if (!WaitFor(m_socket.Get(), POLLIN, deadline)) {
    return false;
  }
  const ssize_t count = ::recv(m_socket.Get(), block.data(), block.size(), 0);
  m_received.append(block.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
  return count > 0;
}

Received Client::Read(bool isHead) {
  const auto deadline = Clock::now() + std::chrono::seconds(60);
  Received received;
  std::size_t end = m_received.find("\r\n\r\n");
  while (end == std::string::npos) {
    if (!Fill(deadline)) {
      return received;
    }
    end = m_received.find("\r\n\r\n");
  }
  received.head = m_received.substr(0, end + 4);
  TakeHead(received.head, received);
  m_received.erase(0, end + 4);
  const std::size_t length = isHead || received.headers.count("content-length") == 0
                                 ? 0
                                 : static_cast<std::size_t>(std::stoul(received.headers["content-length"]));
  while (m_received.size() < length && Fill(deadline)) {
  }
  received.body = m_received.substr(0, length);
  m_received.erase(0, std::min(length, m_received.size()));
  return received;
}

std::string Client::ReadUntil(const std::string& end, std::chrono::milliseconds time) {
  const auto deadline = Clock::now() + time;
  while (m_received.find(end) == std::string::npos && Fill(deadline)) {
  }
  const std::size_t found = m_received.find(end);
  const std::size_t length = found == std::string::npos ? m_received.size() : found + end.size();
  std::string text = m_received.substr(0, length);
  m_received.erase(0, length);
  return text;
}

bool Client::IsClosed(std::chrono::milliseconds time) {
  const auto deadline = Clock::now() + time;
  while (Fill(deadline)) {
  }
  return Clock::now() < deadline;
}

std::string Ask(std::uint16_t port, const std::string& token, const std::string& method, const std::string& target,
                const std::string& body, const std::string& more) {
  const bool hasBody = method == "POST" || method == "PUT";
  std::string request = method + " " + target + " HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(port) + "\r\n";
  request += token.empty() ? "" : "X-Devhost-Token: " + token + "\r\n";
  request += hasBody ? "Content-Type: application/json\r\nContent-Length: " + std::to_string(body.size()) + "\r\n" : "";
  return request + more + "\r\n" + body;
}

}  // namespace devhost
