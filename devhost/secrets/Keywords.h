#ifndef DEVHOST_SECRETS_KEYWORDS_H
#define DEVHOST_SECRETS_KEYWORDS_H

#include <cstddef>
#include <string_view>

namespace devhost {

// What is known about a directive of an snmpd.conf.
enum class Keyword {
  Unknown,   // the daemon has no such directive
  Harmless,  // its words are never a community, a passphrase, a key or a command line
  Hidden,    // they may be one
  Secret     // the same, and the name is not an ordinary word: wherever it stands in a text, it begins a directive
};

// How sure it is that a word is the directive.
enum class Spelling {
  Exact,  // in capitals or not: the daemon ignores case
  Near    // one letter is wrong, missing, too many or swapped with the next one; short names have to be exact
};

// What is known about the directive of that name. Of several that are near, the one that hides most.
Keyword FindKeyword(std::string_view name, Spelling spelling);

// The letters, digits and underscores at the front of a text: a name, wherever it ends.
std::string_view NameAt(std::string_view text);

}  // namespace devhost

#endif
