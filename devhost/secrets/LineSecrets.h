#ifndef DEVHOST_SECRETS_LINE_SECRETS_H
#define DEVHOST_SECRETS_LINE_SECRETS_H

#include <functional>
#include <string_view>

namespace devhost {

// Calls `learn` with what in a line of an snmpd.conf is a secret in other texts, too, by the grammar of its directive:
// communities, passphrases and keys, as they are written and as the daemon cuts them, and with all that follows them, since
// the agent reads a community so. Of commands, and of directives that take options, only the values of options such as -c;
// of others without a secret, such as rouser, nothing. Of a line that is not understood, or that may continue the one before
// it, every word.
// It is sure where the grammar gives the word no other meaning.
void LearnSecretsOfLine(std::string_view line, bool continues,
                        const std::function<void(std::string_view secret, bool isSure)>& learn);

}  // namespace devhost

#endif
