#include "devhost/commands/CommonOptions.h"

#include <filesystem>
#include <system_error>

namespace devhost {

std::string ModuleFolder(const Arguments& arguments) {
  if (arguments.Has(kModuleFolder)) {
    return arguments.Text(kModuleFolder);
  }
  // Beside the program, wherever it was installed or built.
  std::error_code error;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
  return error ? "." : (program.parent_path().parent_path() / "lib").string();
}

}  // namespace devhost
