#ifndef DEVHOST_COMMANDS_EMBEDDED_FILES_H
#define DEVHOST_COMMANDS_EMBEDDED_FILES_H

#include <vector>

#include "devhost/system/EmbeddedFile.h"

namespace devhost {

// All files of examples/driver/.
const std::vector<EmbeddedFile>& ExampleFiles();

// All files of devhost/commands/shells/.
const std::vector<EmbeddedFile>& ShellFiles();

}  // namespace devhost

#endif
