#include "devhost/commands/CommonOptions.h"

#include <filesystem>
#include <system_error>

#include "devhost/driver/DriverModule.h"

namespace devhost {

namespace {

const char kInThisLibrary = 0;

}  // namespace

std::string ModuleFolder(const Arguments& arguments) {
  if (arguments.Has(kModuleFolder)) {
    return arguments.Text(kModuleFolder);
  }
  std::error_code error;
  const std::filesystem::path library = std::filesystem::canonical(ModuleFileOf(&kInThisLibrary), error);
  return error ? "." : library.parent_path().string();
}

}  // namespace devhost
