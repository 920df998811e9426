#ifndef DRIVERS_LOCALSNMPD_SNMP_PROBE_H
#define DRIVERS_LOCALSNMPD_SNMP_PROBE_H

#include <sys/types.h>

#include <chrono>
#include <cstdint>

#include "devhost/system/FileDescriptor.h"

namespace drivers {

// Asks whoever serves an UDP port of 127.0.0.1 whether it speaks SNMP: with the discovery of SNMPv3, which every engine
// answers with a report, whatever its communities are.
class SnmpProbe {
 public:
  explicit SnmpProbe(std::uint16_t port);

  // Sends one datagram and waits that long at most; true when a report comes, also one that an earlier call asked for. Comes
  // back early where nobody serves the port.
  bool Ask(std::chrono::milliseconds wait) const;

 private:
  devhost::FileDescriptor m_socket;
};

// Whether nobody has the UDP port, on 127.0.0.1 or on all addresses.
bool IsUdpPortFree(std::uint16_t port);

// Whether it is this process that has the UDP port of 127.0.0.1.
bool OwnsUdpPort(pid_t process, std::uint16_t port);

}  // namespace drivers

#endif
