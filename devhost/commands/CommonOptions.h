#ifndef DEVHOST_COMMANDS_COMMON_OPTIONS_H
#define DEVHOST_COMMANDS_COMMON_OPTIONS_H

#include <string>

#include "devhost/commands/Command.h"

// Options and arguments that mean the same in several commands.
namespace devhost {

inline const CommandOption kHelp{"--help", "", "Print this help"};
inline const CommandOption kVersion{"--version", "", "Print the version"};
inline const CommandOption kShowSecrets{"--show-secrets", "", "Print secrets and all else as they are, not as *****"};
inline const CommandOption kJson{"--json", "", "Print one JSON object for each finding, on a line of its own"};
inline const CommandOption kModuleFolder{"--module-dir", "DIR", "Where driver modules lie (default: beside libdevhost.so)",
                                         CommandOption::Takes::Folder};
inline const CommandOption kSettings{"settings", "", "File of a device settings element, - for standard input",
                                     CommandOption::Takes::Path, true};

// The option with a function that suggests its values.
inline CommandOption With(CommandOption option, CommandOption::Suggest suggest) {
  option.suggest = suggest;
  return option;
}

// The folder that `kModuleFolder` names, or its default, which follows the library wherever it was installed or built.
std::string ModuleFolder(const Arguments& arguments);

}  // namespace devhost

#endif
