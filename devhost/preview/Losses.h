#ifndef DEVHOST_PREVIEW_LOSSES_H
#define DEVHOST_PREVIEW_LOSSES_H

#include <string>
#include <vector>

#include "devhost/check/Finding.h"

namespace devhost {

// What a write drops from a device's snmpd.conf: a finding for each line of `before` that is not in `after` any more, unless
// it is one of the agent's settings, which has changed. Where a rule of the check says so for a range of lines, its first
// line has the finding. `name` stands for the file.
std::vector<Finding> LossesOf(const std::string& before, const std::string& after, const std::string& name,
                              bool showSecrets);

}  // namespace devhost

#endif
