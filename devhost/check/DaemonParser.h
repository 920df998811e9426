#ifndef DEVHOST_CHECK_DAEMON_PARSER_H
#define DEVHOST_CHECK_DAEMON_PARSER_H

#include <string>

#include "devhost/check/Report.h"

namespace devhost {

// Lets snmpd parse the text as it would at its start, without serving anything, and reports each of its complaints. `path`
// is the regular file that holds the text, or empty. Returns why the daemon could not be asked; empty when it was.
std::string AskDaemon(const std::string& path, const std::string& text, Report& report);

}  // namespace devhost

#endif
