#ifndef DEVHOST_COMMANDS_FINDINGS_H
#define DEVHOST_COMMANDS_FINDINGS_H

#include <string>
#include <vector>

#include "devhost/check/Finding.h"
#include "devhost/commands/ExitStatus.h"

namespace devhost {

class Output;

// "FILE:LINE: error: REASON [RULE]", then the remedy, indented: two lines whatever the texts hold. Without ":LINE" when it
// is about the whole file.
std::string FindingText(const Finding& finding);

// The same as one JSON object and a line feed. Bytes that are not UTF-8 are replaced by U+FFFD.
std::string FindingJson(const Finding& finding);

// Prints the findings of one file and, as text, a last line that counts them. Failed when there are any but notes.
ExitStatus PrintFindings(const std::vector<Finding>& findings, const std::string& file, bool json, Output& out);

}  // namespace devhost

#endif
