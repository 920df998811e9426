#ifndef DRIVERS_LOCALSNMPD_DAEMON_LOG_H
#define DRIVERS_LOCALSNMPD_DAEMON_LOG_H

#include <string>
#include <vector>

#include "drivers/common/SnmpSettings.h"
#include "drivers/localsnmpd/ServedConfig.h"

namespace drivers {

// All communities that a device knows: those of its settings and those in the text of its snmpd.conf, and the words of each.
// The longest come first.
std::vector<std::string> CollectSecrets(const SnmpSettings& settings, const std::string& config);

// What the host's log gets of a daemon's output: its complaints as "FILE:LINE: Error|Warning: TEXT", at most 50 of them,
// with the file and line that `places` has for a line of the served file. When the daemon has failed, the last of its other
// lines follow as "snmpd: TEXT": they may say why it could not open its port. A line has at most 400 bytes, no control
// characters, and ***** for each of the `secrets` that stands in the daemon's words as a word.
std::vector<std::string> LinesForLog(const std::string& output, const std::vector<ServedConfig::Place>& places,
                                     bool hasFailed, const std::vector<std::string>& secrets);

}  // namespace drivers

#endif
