#ifndef DEVHOST_SNMPD_DIRECTIVE_NAMES_H
#define DEVHOST_SNMPD_DIRECTIVE_NAMES_H

#include <functional>
#include <set>
#include <string>
#include <string_view>

namespace devhost {

// The names of the directives that a daemon knows, in lower case.
struct DirectiveNames {
  using Names = std::set<std::string, std::less<>>;
  Names daemon;    // in snmpd.conf
  Names programs;  // in snmp.conf; the daemon takes them in a section [snmp] of snmpd.conf, too
};

// Those of the daemon that has printed this list with the option -H, and those that no daemon lists. Nothing in `daemon`
// when it is not such a list.
DirectiveNames ReadDirectiveNames(std::string_view list);

// Those of the daemon of Debian 12, for machines without a daemon.
const DirectiveNames& UsualDirectiveNames();

// The name that was probably meant by a word in lower case; "" when none is near. A name with more behind it is near, too,
// when that is not a letter, digit, underscore or hyphen.
std::string_view NearestDirectiveName(std::string_view word, const DirectiveNames::Names& names);

}  // namespace devhost

#endif
