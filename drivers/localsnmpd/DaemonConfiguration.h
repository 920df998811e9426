#ifndef DRIVERS_LOCALSNMPD_DAEMON_CONFIGURATION_H
#define DRIVERS_LOCALSNMPD_DAEMON_CONFIGURATION_H

#include <chrono>
#include <cstdint>
#include <string>

#include "host/INode.h"

namespace drivers {

// What the project says about a device's daemon, in attributes of the driver's configuration element. All may be missing.
struct DaemonConfiguration {
  std::uint16_t port = 0;                          // port="1024..65535"; "auto", or none: 0, a free one is to be chosen
  std::string program;                             // program="/absolute/path"; none: to be looked for
  std::chrono::milliseconds rebootPause{500};      // rebootPause="0..60000", how long a rebooting controller is away
  std::chrono::milliseconds startDeadline{30000};  // startDeadline="1..600", in seconds: the time to answer in
};

// Reads `config` into `result`. What is wrong and what is allowed, in one line; empty when all is well.
std::string ReadDaemonConfiguration(const H7XML::INode& config, DaemonConfiguration& result);

// Where the daemon's program stands: `configured` when it can be run; where none was configured, snmpd in PATH or in the
// folders for daemons, which PATH often lacks. Empty when it is nowhere.
std::string FindDaemonProgram(const std::string& configured);

}  // namespace drivers

#endif
