#ifndef DEVHOST_SNMP_UDP_ADDRESS_H
#define DEVHOST_SNMP_UDP_ADDRESS_H

#include <sys/socket.h>

#include <optional>
#include <string>
#include <string_view>

namespace devhost {

// Where a daemon or a receiver of traps is, as people write it.
struct UdpAddress {
  std::string host;  // a name or an address; that of IPv6 without its brackets
  std::string port;
  bool isV6 = false;
};

// Reads "HOST", "HOST:PORT" or "[ADDRESS]:PORT", with "udp:" or "udp6:" in front or not. As for the daemon, an address of
// IPv6 needs its brackets, or "udp6:" in front. Nothing for another transport and for what is not an address; a port is a
// number from 1 to 65535.
std::optional<UdpAddress> ReadUdpAddress(std::string_view text, std::string_view usualPort);

// "kitchen.example:161", "[::1]:161".
std::string TextOf(const UdpAddress& address);

// Where packets go: an address without names.
struct SocketAddress {
  sockaddr_storage storage = {};
  socklen_t size = 0;

  const sockaddr* Get() const { return reinterpret_cast<const sockaddr*>(&storage); }
  // As the library of Net-SNMP takes it: "udp:192.0.2.5:161".
  std::string Text() const;
};

// Asks the resolver of this machine, which has time-outs of its own. Nothing when the name is not found.
std::optional<SocketAddress> Resolve(const UdpAddress& address);

}  // namespace devhost

#endif
