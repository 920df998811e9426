// The options of the snmp commands.
#include <cstring>

#include "devhost/snmpd/SecretPlaces.h"

namespace devhost {

namespace {

constexpr char kWithValue[] = "YmMDvrtcZeEnulxXaApT3sSLIPOC";
constexpr char kSecret[] = "cAX";

bool IsOneOf(const char* set, char letter) {
  return letter != '\0' && std::strchr(set, letter) != nullptr;
}

bool StartsWith(std::string_view text, std::string_view start) {
  return text.substr(0, start.size()) == start;
}

}  // namespace

std::vector<SecretWord> SecretOptions(const std::vector<std::string>& words) {
  std::vector<SecretWord> secrets;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string& word = words[i];
    if (word.size() < 2 || word.front() != '-' || word[1] == '-') {
      continue;
    }
    // Letters without a value may stand together, and the value in the same word as its letter.
    std::size_t at = 1;
    while (at < word.size() && !IsOneOf(kWithValue, word[at])) {
      ++at;
    }
    if (at == word.size()) {
      continue;
    }
    const char letter = word[at];
    const bool joined = at + 1 < word.size();
    i += joined ? 0 : 1;
    if (IsOneOf(kSecret, letter)) {
      secrets.push_back({i, joined ? at + 1 : 0});
    } else if (letter == '3') {  // -3M KEY
      secrets.push_back({++i, 0});
    }
  }
  while (!secrets.empty() && secrets.back().index >= words.size()) {
    secrets.pop_back();
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
