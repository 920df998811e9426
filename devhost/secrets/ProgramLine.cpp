#include "devhost/secrets/ProgramLine.h"

#include <algorithm>
#include <string_view>

#include "devhost/secrets/ConfigSecrets.h"
#include "devhost/secrets/KnownSecrets.h"

namespace devhost {

namespace {

constexpr std::size_t npos = std::string_view::npos;

// An SNMP program, also in a shell's command; not a file such as snmpd.conf.
bool NamesSnmpProgram(std::string_view word) {
  for (std::size_t at = word.find("snmp"); at != npos; at = word.find("snmp", at + 1)) {
    const std::size_t end = at + NameAt(word.substr(at)).size();
    if ((at == 0 || NameAt(word.substr(at - 1, 1)).empty()) && word.substr(end, 5) != ".conf") {
      return true;
    }
  }
  return false;
}

bool IsOption(std::string_view word) {
  return word.size() > 1 && word.front() == '-';
}

// An option of the SNMP programs whose value is harmless.
bool IsHarmlessOption(std::string_view option) {
  return IsOption(option) && std::string_view("trmMOvlax").find(option[1]) != npos;
}

// Too short for a secret. Beside the SNMP programs, only numbers are: a short word may be a part of one there.
bool IsShort(std::string_view word, bool isSnmp) {
  return word.size() <= 3 && (!isSnmp || word.find_first_not_of("0123456789") == npos);
}

// One word or part of a word, given the one before it. Adds its secret to `line`.
std::string ShownWord(std::string_view word, std::string_view before, bool isSnmp, bool isPart, ProgramLine& line) {
  if (word.empty() || (NamesSnmpProgram(word) && word.find_first_of("=;:&|'\"") == npos)) {
    return std::string(word);
  }
  const bool isValue = IsOption(before) && before.size() == 2;
  const bool isGlued = !isValue && IsOption(word) && word.size() > 2;
  const bool isHarmless = isSnmp && (isValue || isGlued) && IsHarmlessOption(isGlued ? word : before);
  if (isSnmp && (isValue || isGlued) && !isHarmless) {
    line.secrets.emplace_back(isGlued ? word.substr(2) : word);
  }
  const bool isShown = isHarmless || (!isGlued && !(isValue && isSnmp) &&
                                      (IsOption(word) || IsNumericAddress(word) || IsShort(word, isSnmp || isPart)));
  return isShown ? std::string(word) : kMask;
}

}  // namespace

bool IsNumericAddress(std::string_view word) {
  for (const std::string_view transport : {"udp:", "tcp:"}) {
    word.remove_prefix(word.substr(0, transport.size()) == transport ? transport.size() : 0);
  }
  return word.find_first_not_of("0123456789.:") == npos && std::count(word.begin(), word.end(), '.') > 1;
}

ProgramLine ShownProgramLine(const std::vector<std::string>& words) {
  ProgramLine line;
  std::string before;
  bool isSnmp = false;
  for (std::size_t i = 0; i != words.size(); ++i) {
    const std::string& word = words[i];
    isSnmp = isSnmp || NamesSnmpProgram(word);
    const std::size_t known = line.secrets.size();
    std::string shown;
    for (std::size_t at = 0; at <= word.size();) {
      const std::size_t end = std::min(word.find_first_of(" \t\r\n", at), word.size());
      const std::string piece = word.substr(at, end - at);
      const bool isProgram = i == 0 && at == 0;
      shown += (at == 0 ? "" : " ") + (isProgram ? piece : ShownWord(piece, before, isSnmp, piece != word, line));
      before = isProgram ? "" : piece;
      at = end + 1;
    }
    if (line.secrets.size() != known) {
      line.secrets.push_back(word);
    }
    line.words.push_back(shown);
  }
  return line;
}

}  // namespace devhost
