#ifndef DEVHOST_CHECK_DAEMON_PARSER_H
#define DEVHOST_CHECK_DAEMON_PARSER_H

#include <string>

#include "devhost/check/DaemonText.h"
#include "devhost/check/Report.h"

namespace devhost {

// Lets snmpd parse the text as it would at its start, without serving anything, and reports each of its complaints. It gets
// nothing but the text, so it does nothing that a file says. Returns why the daemon could not be asked; empty when it was.
std::string AskDaemon(const DaemonText& text, Report& report);

}  // namespace devhost

#endif
