#ifndef DEVHOST_COMMANDS_FINDING_TEXT_H
#define DEVHOST_COMMANDS_FINDING_TEXT_H

#include <string>

#include "devhost/check/Finding.h"

namespace devhost {

// "FILE:LINE: error: REASON [RULE]", then the remedy, indented: two lines whatever the texts hold. Without ":LINE" when it
// is about the whole file.
std::string FindingText(const Finding& finding);

// The same as one JSON object and a line feed. Bytes that are no UTF-8 are replaced by U+FFFD.
std::string FindingJson(const Finding& finding);

}  // namespace devhost

#endif
