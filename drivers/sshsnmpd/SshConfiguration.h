#ifndef DRIVERS_SSHSNMPD_SSH_CONFIGURATION_H
#define DRIVERS_SSHSNMPD_SSH_CONFIGURATION_H

#include <chrono>
#include <string>
#include <vector>

#include "drivers/sshsnmpd/SshConnection.h"
#include "host/INode.h"

namespace drivers {

using Words = std::vector<std::string>;

// What the project says about a controller behind SSH, in attributes of the driver's configuration element.
struct SshConfiguration {
  // What is run with sudo -n: nothing, the four commands, or the reading and writing of the file, too.
  enum class Sudo { No, Commands, All };

  SshServer server;  // host, required; port="1..65535", 22; knownHosts, ~/.ssh/known_hosts of the host's user
  SshLogin login;    // user, required; key="/absolute/path", or the keys of the SSH agent
  std::string file = "/etc/snmp/snmpd.conf";
  Words start;  // words between blanks, which reach the program as they are; empty when there is none
  Words stop;
  Words restart;
  Words reboot;
  Sudo sudo = Sudo::No;
  std::chrono::milliseconds connectTimeout{10000};    // connectTimeout="1..600", in seconds
  std::chrono::milliseconds operationTimeout{30000};  // operationTimeout="1..3600", in seconds
};

// Reads `config` into `result`. Returns what is wrong and what is allowed, in one line, or nothing when it is valid.
std::string ReadSshConfiguration(const H7XML::INode& config, SshConfiguration& result);

}  // namespace drivers

#endif
