#ifndef DEVHOST_CHECK_TRAP_SESSION_H
#define DEVHOST_CHECK_TRAP_SESSION_H

#include <optional>
#include <string>

#include "devhost/snmpd/Directive.h"

namespace devhost {

// What a trapsess line says, with the options that the SNMP programs have on their command lines.
struct TrapSession {
  std::string problem;  // why the daemon adds no target, in words that quote nothing; "" when the options are good
  std::string target;
  bool isV3 = true;      // unless the line names another version
  bool hasName = false;  // the user, or the community, that the version needs
};

// Reads the line; nothing for lines with another directive.
std::optional<TrapSession> ReadTrapSession(const Directive& setting);

}  // namespace devhost

#endif
