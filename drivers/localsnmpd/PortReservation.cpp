#include "drivers/localsnmpd/PortReservation.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <cstddef>
#include <cstring>
#include <random>
#include <string>

#include "drivers/localsnmpd/UdpPort.h"

namespace drivers {

namespace {

const std::uint16_t kFirstPort = 20000;
const std::uint16_t kPorts = 10000;

// A socket of that name; not open when another process has it.
devhost::FileDescriptor TakeName(std::uint16_t port) {
  const std::string name = "local_snmpd/udp/" + std::to_string(port);
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  // A first byte of zero: the name is not that of a file.
  std::memcpy(address.sun_path + 1, name.data(), name.size());
  const std::size_t size = offsetof(sockaddr_un, sun_path) + 1 + name.size();
  devhost::FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (socket.IsOpen() &&
      ::bind(socket.Get(), reinterpret_cast<const sockaddr*>(&address), static_cast<socklen_t>(size)) != 0) {
    socket.Close();
  }
  return socket;
}

}  // namespace

PortReservation::PortReservation() {
  std::random_device random;
  const unsigned int start = random();
  for (unsigned int step = 0; step < kPorts; ++step) {
    const auto port = static_cast<std::uint16_t>(kFirstPort + (start % kPorts + step) % kPorts);
    devhost::FileDescriptor name = TakeName(port);
    if (name.IsOpen() && IsUdpPortFree(port)) {
      m_name = std::move(name);
      m_port = port;
      return;
    }
  }
}

}  // namespace drivers
