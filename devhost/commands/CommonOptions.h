#ifndef DEVHOST_COMMANDS_COMMON_OPTIONS_H
#define DEVHOST_COMMANDS_COMMON_OPTIONS_H

#include <filesystem>
#include <string>
#include <system_error>

#include "devhost/commands/Command.h"

// Options and arguments that mean the same in several commands.
namespace devhost {

inline const CommandOption kShowSecrets{"--show-secrets", "", "Print communities and passphrases as they are, not as *****"};
inline const CommandOption kJson{"--json", "", "Print one JSON object for each finding, on a line of its own"};
inline const CommandOption kModuleFolder{
    "--module-dir", "DIR", "Where driver modules lie (default: ../lib beside the program)", CommandOption::Takes::Path};
inline const CommandOption kSettings{"settings", "", "File of a device settings element, - for standard input",
                                     CommandOption::Takes::Path, true};

// The folder that `kModuleFolder` names, or its default, which follows the program wherever it was installed or built.
inline std::string ModuleFolder(const Arguments& arguments) {
  std::error_code error;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
  const std::string beside = error ? "." : (program.parent_path().parent_path() / "lib").string();
  return arguments.Has(kModuleFolder) ? arguments.Text(kModuleFolder) : beside;
}

}  // namespace devhost

#endif
