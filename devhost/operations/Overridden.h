#ifndef DEVHOST_OPERATIONS_OVERRIDDEN_H
#define DEVHOST_OPERATIONS_OVERRIDDEN_H

#include <string>
#include <vector>

#include "devhost/check/Finding.h"

namespace devhost {

// The findings of a check that say that the daemon serves something else than the section has: lines outside the section
// that win over it, lose to it or add to it. `file` is what findings call the text, `path` where it is or will be on this
// machine, which is absolute; with "", nobody knows, and included files are not looked into.
std::vector<Finding> OverridingLines(const std::string& text, const std::string& path, const std::string& file,
                                     bool showSecrets);

}  // namespace devhost

#endif
