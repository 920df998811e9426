#ifndef DEVHOST_OPERATIONS_INCLUDED_PARTS_H
#define DEVHOST_OPERATIONS_INCLUDED_PARTS_H

#include <string>

#include "devhost/operations/Plan.h"

namespace devhost {

// Where the device's file is on this machine, for the files that it includes; "" when nobody knows. A driver with a folder
// has it there, if the file there is `file`, which the driver gives. "" for an empty file, too.
std::string PathOf(const Target& target, const std::string& file);

// What is to be said of a file that includes others which cannot be read: because nobody knows where it is, or each for a
// reason of its own. The first such line, in one line; "" where there is none.
std::string UnreadParts(const std::string& file, const std::string& path);

}  // namespace devhost

#endif
