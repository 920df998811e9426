#ifndef DRIVERS_LOCALSNMPD_DAEMON_CONFIGURATION_H
#define DRIVERS_LOCALSNMPD_DAEMON_CONFIGURATION_H

#include <chrono>
#include <cstdint>
#include <string>

#include "host/INode.h"

namespace drivers {

// What the project says about a device's daemon, in attributes of the driver's configuration element. All are optional.
struct DaemonConfiguration {
  std::uint16_t port = 0;                          // port="1024..65535"; 0 for "auto" or none: choose a free one
  std::string program;                             // program="/absolute/path"; "" for none: look for it
  std::chrono::milliseconds rebootPause{500};      // rebootPause="0..60000", how long a rebooting controller is away
  std::chrono::milliseconds startDeadline{30000};  // startDeadline="1..600", in seconds: how long until it answers
};

// Reads `config` into `result`. Returns what is wrong and what is allowed, in one line, or nothing when it is valid.
std::string ReadDaemonConfiguration(const H7XML::INode& config, DaemonConfiguration& result);

// The path of the daemon's program: `configured` if it can be run; if none is configured, snmpd in PATH or in the folders
// for daemons, which PATH often lacks. Empty when there is none.
std::string FindDaemonProgram(const std::string& configured);

}  // namespace drivers

#endif
