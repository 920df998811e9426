#ifndef DEVHOST_PREVIEW_FILE_DIFFERENCE_H
#define DEVHOST_PREVIEW_FILE_DIFFERENCE_H

#include <string>

namespace devhost {

// The difference between a device's snmpd.conf and what it would become, as a unified diff of which every line ends in a
// line feed; "" when only the time at which the managed section was generated differs. `name` stands in the diff's head.
// Secrets are masked in the result unless `showSecrets` is set, never before: a community that changes is a change. Control
// characters but tabs are made visible. The program diff reads the
// texts from memory. Throws ProgramError or FileError when it cannot.
std::string FileDifference(const std::string& name, const std::string& before, const std::string& after, bool showSecrets);

}  // namespace devhost

#endif
