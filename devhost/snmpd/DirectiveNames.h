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

// The name that was probably meant by a word in lower case (NearName.h); "" when none is near. A name with more behind it is
// near, too, when that is not a letter, digit, underscore or hyphen.
std::string_view NearestDirectiveName(std::string_view word, const DirectiveNames::Names& names);

// What stands behind a name in a line, and in texts that repeat such a line.
enum class Follows {
  NotKnown,      // it is not such a name
  Harmless,      // never a community, a passphrase, a key or a command line
  Anything,      // it may be one of these, but the name is an ordinary word in other texts, or like one
  SecretOrText,  // the name is not a directive but what people call a secret, such as "community"
  Secret         // a secret, or something that may hold one, wherever the name stands
};

struct KnownName {
  enum class Spelling { Exact, OneLetterOff, Near };

  Follows follows = Follows::NotKnown;
  // Near also for a word that has more letters in front of a name, or behind it, and is written with letters of other
  // scripts.
  Spelling spelling = Spelling::Near;
};

// What is known about a directive of the usual daemon, about the words that people use for secrets, and about a word that is
// near to one of them (NearName.h). Of several that are as near, the one that hides most.
KnownName FindDirectiveName(std::string_view word);

}  // namespace devhost

#endif
