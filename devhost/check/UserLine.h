#ifndef DEVHOST_CHECK_USER_LINE_H
#define DEVHOST_CHECK_USER_LINE_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "devhost/snmpd/Directive.h"

namespace devhost {

// The length of the keys that the daemon makes with this authentication; 0 when it does not know it.
std::size_t AuthKeyLength(std::string_view kind);
// The length of the key that this encryption needs; 0 when the daemon does not know it.
std::size_t PrivacyKeyLength(std::string_view kind);
// Whether the text is a row of hexadecimal bytes, perhaps behind 0x; how many, or 0 when it is none.
std::size_t HexLength(std::string_view text);

// A createUser line behind the engine that it may name.
struct UserLine {
  std::string engine;              // of the option -e
  bool hasEngine = false;          // whether that option is there
  std::vector<std::string> words;  // user, kind, passphrase, kind, passphrase; -m or -l and a key in place of a passphrase
};

UserLine ReadUserLine(const Directive& setting);

// Whether a key follows in place of a passphrase.
bool IsKeyOption(std::string_view word);

// Why the daemon does not make the user, in words that quote nothing; "" when it does.
std::string WhyNoUser(const UserLine& user);

}  // namespace devhost

#endif
