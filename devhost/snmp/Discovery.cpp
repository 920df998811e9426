#include "devhost/snmp/Discovery.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <iterator>

namespace devhost {

namespace {

using Byte = unsigned char;

// A request without a user to an engine that is not known, in BER.
const Byte kDiscovery[] = {0x30, 0x39,                          // message
                           0x02, 0x01, 0x03,                    // version 3
                           0x30, 0x0f, 0x02, 0x02, 0x01, 0x02,  // header: message id
                           0x02, 0x03, 0x00, 0xff, 0xe3,        // longest answer
                           0x04, 0x01, 0x04, 0x02, 0x01, 0x03,  // flags: report wanted; user-based security
                           0x04, 0x10, 0x30, 0x0e, 0x04, 0x00, 0x02, 0x01, 0x00, 0x02,  // security: no engine, boots, time,
                           0x01, 0x00, 0x04, 0x00, 0x04, 0x00, 0x04, 0x00,              //   user, keys
                           0x30, 0x11, 0x04, 0x00, 0x04, 0x00,                          // scope: no engine, no context
                           0xa0, 0x0b, 0x02, 0x01, 0x02, 0x02, 0x01, 0x00, 0x02, 0x01, 0x00, 0x30, 0x00};  // get of nothing

// What follows the tag and length of every answer: the version, the header's tag and length, the message id.
const Byte kVersion[] = {0x02, 0x01, 0x03, 0x30};
const Byte kMessageId[] = {0x02, 0x02, 0x01, 0x02};

bool IsReport(const Byte* data, std::size_t size) {
  if (size < 2 || data[0] != 0x30) {
    return false;
  }
  // Lengths from 128 on take more bytes, whose number stands in the first one.
  const std::size_t header = 2U + ((data[1] & 0x80U) != 0 ? data[1] & 0x7fU : 0U);
  const std::size_t needed = header + sizeof kVersion + 1 + sizeof kMessageId;
  return size >= needed && std::equal(std::begin(kVersion), std::end(kVersion), data + header) &&
         std::equal(std::begin(kMessageId), std::end(kMessageId), data + header + sizeof kVersion + 1);
}

}  // namespace

const char* Describe(UdpEnd end) {
  switch (end) {
    case UdpEnd::Answered:
      return "answered";
    case UdpEnd::Silent:
      return "no answer";
    case UdpEnd::Refused:
      return "refused";
    case UdpEnd::NoRoute:
      return "no route";
    case UdpEnd::Failed:
      break;
  }
  return "this machine cannot send it";
}

UdpEnd EndOf(int error) {
  switch (error) {
    case 0:
      return UdpEnd::Silent;
    case ECONNREFUSED:
      return UdpEnd::Refused;
    case EHOSTUNREACH:
    case ENETUNREACH:
    case EHOSTDOWN:
    case ENETDOWN:
    case EADDRNOTAVAIL:  // an address of IPv6 on a machine without any
      return UdpEnd::NoRoute;
    default:
      return UdpEnd::Failed;
  }
}

Discovery::Discovery(const sockaddr* address, socklen_t size)
    : m_socket(::socket(address->sa_family, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
  if (!m_socket.IsOpen() || ::connect(m_socket.Get(), address, size) != 0) {
    m_error = errno;
    m_socket.Close();
  }
}

UdpEnd Discovery::Ask(std::chrono::milliseconds wait) const {
  if (!m_socket.IsOpen()) {
    return EndOf(m_error);
  }
  if (::send(m_socket.Get(), kDiscovery, sizeof kDiscovery, 0) < 0) {
    return EndOf(errno);
  }
  pollfd ready = {m_socket.Get(), POLLIN, 0};
  if (::poll(&ready, 1, static_cast<int>(wait.count())) <= 0) {
    return UdpEnd::Silent;
  }
  std::array<Byte, 2048> answer = {};
  const ssize_t size = ::recv(m_socket.Get(), answer.data(), answer.size(), 0);
  if (size < 0) {
    return EndOf(errno);
  }
  return IsReport(answer.data(), static_cast<std::size_t>(size)) ? UdpEnd::Answered : UdpEnd::Silent;
}

}  // namespace devhost
