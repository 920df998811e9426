#ifndef DEVHOST_COMMANDS_EMBEDDED_FILES_H
#define DEVHOST_COMMANDS_EMBEDDED_FILES_H

#include <string>
#include <vector>

namespace devhost {

// A file of the source tree that the build has put into the program.
struct EmbeddedFile {
  std::string name;  // without a folder
  std::string text;
};

// All files of examples/driver/.
const std::vector<EmbeddedFile>& ExampleFiles();

// All files of devhost/commands/shells/.
const std::vector<EmbeddedFile>& ShellFiles();

}  // namespace devhost

#endif
