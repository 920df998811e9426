#include "devhost/secrets/SecretOptions.h"

#include <cstring>

#include "devhost/text/Words.h"

namespace devhost {

namespace {

// The options of the snmp commands that have a value, and those of them whose value is a secret.
constexpr char kWithValue[] = "YmMDvrtcZeEnulxXaApT3sSLIPOC";
constexpr char kSecret[] = "cAX";

bool IsOneOf(const char* set, char letter) {
  return letter != '\0' && std::strchr(set, letter) != nullptr;
}

}  // namespace

std::optional<std::size_t> SecretOptionWalk::Step(const std::string& word) {
  if (m_values != 0) {
    --m_values;
    return m_values == 0 && m_isSecret ? std::optional<std::size_t>(0) : std::nullopt;
  }
  if (word.size() < 2 || word.front() != '-' || word[1] == '-') {
    return std::nullopt;
  }
  // Letters without a value may stand together, and a value may stand in the same word as its letter.
  std::size_t at = 1;
  while (at < word.size() && !IsOneOf(kWithValue, word[at])) {
    ++at;
  }
  if (at == word.size()) {
    return std::nullopt;
  }
  const char letter = word[at];
  const bool joined = at + 1 < word.size();
  m_values = (joined ? 0 : 1) + (letter == '3' ? 1 : 0);  // -3M KEY
  m_isSecret = letter == '3' || IsOneOf(kSecret, letter);
  return joined && IsOneOf(kSecret, letter) ? std::optional<std::size_t>(at + 1) : std::nullopt;
}

std::vector<SecretWord> SecretOptions(const std::vector<std::string>& words) {
  std::vector<SecretWord> secrets;
  SecretOptionWalk walk;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::optional<std::size_t> offset = walk.Step(words[i]);
    if (offset) {
      secrets.push_back({i, *offset});
    }
  }
  return secrets;
}

bool IsSnmpCommand(std::string_view word) {
  const std::size_t slash = word.rfind('/');
  const std::string_view name = slash == std::string_view::npos ? word : word.substr(slash + 1);
  return StartsWith(name, "snmp") && name.size() > 5 && !StartsWith(name, "snmptrapd") && !StartsWith(name, "snmpd") &&
         name.find_first_not_of("abcdefghijklmnopqrstuvwxyz") == std::string_view::npos;
}

}  // namespace devhost
