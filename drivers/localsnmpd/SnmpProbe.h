#ifndef DRIVERS_LOCALSNMPD_SNMP_PROBE_H
#define DRIVERS_LOCALSNMPD_SNMP_PROBE_H

#include <sys/types.h>

#include <chrono>
#include <cstdint>

#include "devhost/system/FileDescriptor.h"

namespace drivers {

// Asks whether an SNMP engine serves a UDP port of 127.0.0.1. It sends the discovery of SNMPv3, which every engine answers
// with a report, whatever its communities are.
class SnmpProbe {
 public:
  explicit SnmpProbe(std::uint16_t port);

  // Sends one datagram and waits at most that long. Returns true when a report comes, even one to an earlier call, and
  // returns early when nobody serves the port.
  bool Ask(std::chrono::milliseconds wait) const;

 private:
  devhost::FileDescriptor m_socket;
};

// Whether no process has the UDP port, on 127.0.0.1 or on all addresses.
bool IsUdpPortFree(std::uint16_t port);

// Whether the process has the UDP port of 127.0.0.1.
bool OwnsUdpPort(pid_t process, std::uint16_t port);

}  // namespace drivers

#endif
