#ifndef DEVHOST_PREVIEW_FILE_DIFFERENCE_H
#define DEVHOST_PREVIEW_FILE_DIFFERENCE_H

#include <string>

#include "devhost/system/FileText.h"

namespace devhost {

class Masker;

// Whether two texts of a device's snmpd.conf differ in nothing but the time at which the managed section was generated.
bool IsSameFile(const std::string& before, const std::string& after);

// The difference between two texts of a device's snmpd.conf, as a unified diff of which every line ends in a line feed; ""
// when they are the same file. The names stand in the diff's head.
// The real texts are compared, since a community that changes is a change; the result shows what `masker` shows of them.
// Control characters but tabs are made visible. The program diff reads the texts from memory. Throws ProgramError or
// FileError when it cannot.
std::string FileDifference(const NamedText& before, const NamedText& after, Masker& masker);

}  // namespace devhost

#endif
