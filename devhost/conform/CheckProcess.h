#ifndef DEVHOST_CONFORM_CHECK_PROCESS_H
#define DEVHOST_CONFORM_CHECK_PROCESS_H

#include <string>

#include "devhost/conform/Conform.h"

namespace devhost {

// Makes one check in a process of its own, as RunChecks says. `folder`, absolute, is made for it, and removed with all that
// is in it. Throws std::filesystem::filesystem_error when it cannot be made.
Outcome RunCheckProcess(const Conformance& conformance, const Check& check, const std::string& folder);

// In that process: leaves there what came of the check.
void LeaveOutcome(const Outcome& outcome, const std::string& folder);

}  // namespace devhost

#endif
