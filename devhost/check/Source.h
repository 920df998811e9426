#ifndef DEVHOST_CHECK_SOURCE_H
#define DEVHOST_CHECK_SOURCE_H

#include <optional>
#include <string>
#include <string_view>

#include "devhost/snmpd/Directive.h"

namespace devhost {

// Who may use a community: an address or a host's name, perhaps with a mask. The daemon knows "default" for everybody, and
// takes an exclamation mark for all but these.
struct Source {
  std::string text;   // as the line has it
  bool isV6 = false;  // of the family of addresses that the directive is for
};

// The source that the line gives; nothing where it gives none, or is not about a community.
std::optional<Source> ReadSource(const Directive& setting);

// Whether the daemon would look up the name of a host, and ask name servers for it. Not for "localhost", which every machine
// knows.
bool IsLookedUp(const Source& source);

// Why the daemon rejects the source, in words that quote nothing; "" when it takes it, or when that depends on name servers.
std::string WhyNoSource(const Source& source);

}  // namespace devhost

#endif
