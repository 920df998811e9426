#ifndef DEVHOST_PREVIEW_FILE_DIFFERENCE_H
#define DEVHOST_PREVIEW_FILE_DIFFERENCE_H

#include <string>

namespace devhost {

class Masker;

// The difference between a device's snmpd.conf and what it would become, as a unified diff of which every line ends in a
// line feed; "" when only the time at which the managed section was generated differs. `name` stands in the diff's head.
// The real texts are compared, since a community that changes is a change; the result shows what `masker` shows of them.
// Control characters but tabs are made visible. The program diff reads the texts from memory. Throws ProgramError or
// FileError when it cannot.
std::string FileDifference(const std::string& name, const std::string& before, const std::string& after, Masker& masker);

}  // namespace devhost

#endif
