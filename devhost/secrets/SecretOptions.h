#ifndef DEVHOST_SECRETS_SECRET_OPTIONS_H
#define DEVHOST_SECRETS_SECRET_OPTIONS_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace devhost {

// A secret in the word number `index`. It starts at `offset`.
struct SecretWord {
  std::size_t index = 0;
  std::size_t offset = 0;
};

// Finds secrets among the words behind an snmp command, or behind a directive with the same options, one word at a time.
class SecretOptionWalk {
 public:
  // Takes the next word. Returns where in it a community or passphrase begins, or nothing.
  std::optional<std::size_t> Step(const std::string& word);

 private:
  int m_values = 0;         // how many of the next words are values of the last option
  bool m_isSecret = false;  // whether the last of these values is a secret
};

// Returns the secrets among the words behind an snmp command, or behind a directive with the same options.
std::vector<SecretWord> SecretOptions(const std::vector<std::string>& words);

// Returns whether the word is one of the snmp commands, with or without its folder. The daemons are not, because they have
// other options.
bool IsSnmpCommand(std::string_view word);

}  // namespace devhost

#endif
