#ifndef DRIVERS_LOCALSNMPD_DAEMON_LOG_H
#define DRIVERS_LOCALSNMPD_DAEMON_LOG_H

#include <string>
#include <vector>

#include "drivers/localsnmpd/ServedConfig.h"

namespace drivers {

// What the host's log gets of a daemon's output: its complaints as "FILE:LINE: Error|Warning: TEXT", at most 50 of them,
// with the file and line that `places` has for a line of the served file. When the daemon has failed, the last of its other
// lines follow as "snmpd: TEXT": they may say why it could not open its port. Only the daemon's own words are shown, never
// what it quotes.
std::vector<std::string> LinesForLog(const std::string& output, const std::vector<ServedConfig::Place>& places,
                                     bool hasFailed);

}  // namespace drivers

#endif
