#ifndef DRIVERS_LOCALSNMPD_DAEMON_LOG_H
#define DRIVERS_LOCALSNMPD_DAEMON_LOG_H

#include <string>
#include <vector>

#include "drivers/common/SnmpSettings.h"

namespace drivers {

// What the daemon complained of in its log, once each and as "FILE:LINE: Error|Warning: text", with the owner's file under
// its own name. Left out is that a sink has its port in a field of its own: the managed section is written like that.
std::vector<std::string> ReadComplaints(const std::string& log);

// The last lines of the log that are no such complaint, as "snmpd: text": why it could not open its port, say.
std::vector<std::string> ReadOtherLines(const std::string& log);

// All communities that a device knows: those of its settings and those in the text of its snmpd.conf, and the words of each.
std::vector<std::string> CollectSecrets(const SnmpSettings& settings, const std::string& config);

// The line with ***** for each secret that stands in it as a word, behind the file and line of a complaint.
std::string MaskSecrets(std::string line, const std::vector<std::string>& secrets);

// A line for the host's log: of 400 bytes at most and without control characters. Secrets have to be masked before: a piece
// of one would not be found.
std::string Printable(std::string text);

}  // namespace drivers

#endif
