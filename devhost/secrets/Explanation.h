#ifndef DEVHOST_SECRETS_EXPLANATION_H
#define DEVHOST_SECRETS_EXPLANATION_H

#include <cstddef>
#include <string_view>

namespace devhost {

// How many bytes at the front of a text are an explanation in plain words: the marks of a comment, then words up to the
// first that is not plain. A plain word is made of Latin letters, with the punctuation of a sentence around it, or is a
// number of at most three digits. A sign such as = or a slash, a colon or quote, digits beside letters, a capital behind a
// small letter: such a word is not plain, since communities and keys look like that. Fewer than two plain words explain
// nothing; then only the marks are. Of a comment, a blank must follow the marks, unless the first word is a directive
// without secrets.
std::size_t LengthOfExplanation(std::string_view text);

// Whether a comment is one of Debian's own snmpd.conf, or of the managed section, with its time stamp or without.
bool IsStockComment(std::string_view comment);

// Whether people put such a word beside a secret: secret, key, token, RO ... The names of directives and what is near to
// them are in devhost/snmpd/DirectiveNames.h.
bool TellsOfSecret(std::string_view word);

}  // namespace devhost

#endif
