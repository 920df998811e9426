#include "tests/kit/InstalledKit.h"

#include <filesystem>
#include <stdexcept>

const InstalledKit& InstalledKit::Get() {
  static const InstalledKit kit;
  return kit;
}

InstalledKit::InstalledKit() {
  const ShellResult result = RunInShell("'" CMAKE_PROGRAM "' --install '" BUILD_FOLDER "' --prefix '" + FirstPath() + "'");
  if (result.status != 0) {
    throw std::runtime_error("cannot install the build: " + result.output);
  }
  std::filesystem::rename(FirstPath(), Path());
}

ShellResult InstalledKit::Run(const std::string& command, const std::string& folder) const {
  return RunInShell("cd '" + folder + "' && export PATH='" + Path("bin") + "':\"$PATH\" CMAKE_PREFIX_PATH='" + Path() +
                    "' PKG_CONFIG_PATH='" + Path("lib/pkgconfig") + "' CXX='" COMPILER "' && " + command);
}
