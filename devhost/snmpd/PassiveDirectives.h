#ifndef DEVHOST_SNMPD_PASSIVE_DIRECTIVES_H
#define DEVHOST_SNMPD_PASSIVE_DIRECTIVES_H

#include <string_view>

namespace devhost {

// Whether a daemon that reads a directive with this keyword, in lower case, only remembers what it says: it opens no file
// that the directive names, runs no program, opens no socket, and becomes nobody else. It may still look up the name of a
// host that stands in place of an address.
// A directive that is not known here is not passive.
bool IsPassiveDirective(std::string_view keyword);

}  // namespace devhost

#endif
