#include "tests/drivers/support/SnmpResponder.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <filesystem>

SnmpResponder::SnmpResponder(std::uint16_t port, const std::string& answer, const std::string& after)
    : m_answer(answer), m_thread([this, port, after] { Serve(port, after); }) {
  while (after.empty() && !m_serving) {
    std::this_thread::yield();
  }
}

SnmpResponder::~SnmpResponder() {
  m_done = true;
  m_thread.join();
}

std::string SnmpResponder::Report() {
  const unsigned char bytes[] = {0x30, 0x6c, 0x02, 0x01, 0x03, 0x30, 0x0f, 0x02, 0x02, 0x01, 0x02,
                                 0x02, 0x03, 0x00, 0xff, 0xe3, 0x04, 0x01, 0x00, 0x02, 0x01, 0x03};
  return std::string(std::begin(bytes), std::end(bytes)) + std::string(88, '\0');
}

void SnmpResponder::Serve(std::uint16_t port, const std::string& after) {
  while (!after.empty() && !m_done && !std::filesystem::exists(after)) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  const int socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const bool isBound = ::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  m_serving = true;
  while (isBound && !m_done) {
    pollfd ready = {socket, POLLIN, 0};
    std::array<char, 2048> request = {};
    socklen_t size = sizeof address;
    if (::poll(&ready, 1, 5) > 0 &&
        ::recvfrom(socket, request.data(), request.size(), 0, reinterpret_cast<sockaddr*>(&address), &size) > 0) {
      ::sendto(socket, m_answer.data(), m_answer.size(), 0, reinterpret_cast<const sockaddr*>(&address), size);
    }
  }
  ::close(socket);
}
