#ifndef DEVHOST_COMMANDS_PRINT_FINDINGS_H
#define DEVHOST_COMMANDS_PRINT_FINDINGS_H

#include <string>
#include <vector>

#include "devhost/check/Finding.h"

namespace devhost {

class Output;

// Prints the findings of one file and, as text, a last line that counts them. Returns whether there were others than notes.
bool PrintFindings(const std::vector<Finding>& findings, const std::string& file, bool json, Output& out);

}  // namespace devhost

#endif
