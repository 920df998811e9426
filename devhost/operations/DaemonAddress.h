#ifndef DEVHOST_OPERATIONS_DAEMON_ADDRESS_H
#define DEVHOST_OPERATIONS_DAEMON_ADDRESS_H

#include <optional>
#include <string>

#include "devhost/driver/DriverEntry.h"
#include "devhost/snmp/UdpAddress.h"

namespace devhost {

// Where the daemon of a device can be asked.
struct DaemonAddress {
  std::optional<UdpAddress> udp;  // nothing when nobody knows
  bool hasOwnAgentX = false;      // the driver gives its daemon another AgentX socket than the file does
  bool isOutOfReach = false;      // it listens on another machine, for that machine alone
  std::string remark;             // why nobody knows, or why it is out of reach; or ""
};

// Finds it in the configuration of the driver. A driver that is given a `host` has its daemon there, on the port that the
// `agentaddress` lines of the file name, or on 161. The daemon of local_snmpd.so is on the `port` of 127.0.0.1 that the
// project gives it. No other driver has a daemon.
//
// `file` is the snmpd.conf of the device.
DaemonAddress FindDaemonAddress(const DriverEntry& device, const std::string& file);

// The same for a file of this machine without a project: its daemon is on this machine, where the first of the
// `agentaddress` lines that names a UDP address has it, or on 161.
DaemonAddress AddressOfFile(const std::string& file);

// What `--address` gives: HOST or HOST:PORT. Throws SnmpError for what is not one.
UdpAddress ReadDaemonAddress(const std::string& text);

}  // namespace devhost

#endif
