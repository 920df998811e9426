#include "drivers/localsnmpd/SnmpProbe.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <system_error>

namespace drivers {

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

sockaddr_in LocalAddress(std::uint16_t port) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

devhost::FileDescriptor OpenUdpSocket() {
  return devhost::FileDescriptor(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

bool CallWithAddress(int (*call)(int, const sockaddr*, socklen_t), int socket, std::uint16_t port) {
  const sockaddr_in address = LocalAddress(port);
  return call(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

bool IsAnswer(const Byte* data, std::size_t size) {
  if (size < 2 || data[0] != 0x30) {
    return false;
  }
  // Lengths from 128 on take more bytes, whose number stands in the first one.
  const std::size_t header = 2U + ((data[1] & 0x80U) != 0 ? data[1] & 0x7fU : 0U);
  const std::size_t needed = header + sizeof kVersion + 1 + sizeof kMessageId;
  return size >= needed && std::equal(std::begin(kVersion), std::end(kVersion), data + header) &&
         std::equal(std::begin(kMessageId), std::end(kMessageId), data + header + sizeof kVersion + 1);
}

// The sockets, by their inode numbers, that are bound to the port of 127.0.0.1.
std::set<std::string> SocketsOf(std::uint16_t port) {
  char local[32];
  std::snprintf(local, sizeof local, "%08X:%04X", static_cast<unsigned int>(htonl(INADDR_LOOPBACK)),
                static_cast<unsigned int>(port));
  std::set<std::string> inodes;
  std::ifstream table("/proc/net/udp");
  std::string line;
  while (std::getline(table, line)) {
    // sl, local, remote, state, queues, timer, retransmits, user, time-out, inode
    std::istringstream stream(line);
    std::array<std::string, 10> fields;
    for (std::string& field : fields) {
      stream >> field;
    }
    if (fields[1] == local) {
      inodes.insert(fields[9]);
    }
  }
  return inodes;
}

}  // namespace

SnmpProbe::SnmpProbe(std::uint16_t port) : m_socket(OpenUdpSocket()) {
  if (m_socket.IsOpen() && !CallWithAddress(&::connect, m_socket.Get(), port)) {
    m_socket.Close();
  }
}

bool SnmpProbe::Ask(std::chrono::milliseconds wait) const {
  if (!m_socket.IsOpen() || ::send(m_socket.Get(), kDiscovery, sizeof kDiscovery, 0) < 0) {
    return false;
  }
  pollfd ready = {m_socket.Get(), POLLIN, 0};
  if (::poll(&ready, 1, static_cast<int>(wait.count())) <= 0) {
    return false;
  }
  std::array<Byte, 2048> answer = {};
  const ssize_t size = ::recv(m_socket.Get(), answer.data(), answer.size(), 0);
  return size > 0 && IsAnswer(answer.data(), static_cast<std::size_t>(size));
}

bool IsUdpPortFree(std::uint16_t port) {
  const devhost::FileDescriptor socket = OpenUdpSocket();
  return socket.IsOpen() && CallWithAddress(&::bind, socket.Get(), port);
}

bool OwnsUdpPort(pid_t process, std::uint16_t port) {
  const std::set<std::string> inodes = SocketsOf(port);
  std::error_code error;
  const std::string folder = "/proc/" + std::to_string(process) + "/fd";
  for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
    std::error_code gone;
    const std::string target = std::filesystem::read_symlink(entry->path(), gone).string();
    const std::string prefix = "socket:[";
    if (!gone && target.compare(0, prefix.size(), prefix) == 0 &&
        inodes.count(target.substr(prefix.size(), target.size() - prefix.size() - 1)) != 0) {
      return true;
    }
  }
  return false;
}

}  // namespace drivers
