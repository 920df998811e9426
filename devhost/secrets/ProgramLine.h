#ifndef DEVHOST_SECRETS_PROGRAM_LINE_H
#define DEVHOST_SECRETS_PROGRAM_LINE_H

#include <string>
#include <string_view>
#include <vector>

namespace devhost {

// A command line in which only the program, options of one letter, addresses and words of at most three bytes are shown, and
// the harmless values of options of the SNMP programs. The words of a quoted command count as words.
struct ProgramLine {
  std::vector<std::string> words;
  // The values of an SNMP program's options that hold a secret.
  std::vector<std::string> secrets;
};

ProgramLine ShownProgramLine(const std::vector<std::string>& words);

// An address or an object identifier in numbers.
bool IsNumericAddress(std::string_view word);

}  // namespace devhost

#endif
