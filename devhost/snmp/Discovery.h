#ifndef DEVHOST_SNMP_DISCOVERY_H
#define DEVHOST_SNMP_DISCOVERY_H

#include <sys/socket.h>

#include <chrono>
#include <cstddef>

#include "devhost/system/FileDescriptor.h"

namespace devhost {

// What has become of a datagram.
enum class UdpEnd {
  Answered,
  Silent,   // nobody has said anything in time
  Refused,  // the machine is there, and nobody has the port
  NoRoute,
  Failed  // this machine would not send it
};

// In words: "no answer", "refused".
const char* Describe(UdpEnd end);

// What an error of a UDP socket says about the datagrams before it.
UdpEnd EndOf(int error);

// Finds out whether an SNMP engine has an address. It sends the discovery of SNMPv3, which every engine answers with a
// report, whatever its communities are, so it needs to know none.
class Discovery {
 public:
  // Opens a socket. The address is not kept.
  Discovery(const sockaddr* address, socklen_t size);

  // Sends one datagram and waits at most that long. Also a report to an earlier call is an answer.
  UdpEnd Ask(std::chrono::milliseconds wait) const;

 private:
  FileDescriptor m_socket;
  int m_error = 0;  // of the socket that is not open
};

}  // namespace devhost

#endif
