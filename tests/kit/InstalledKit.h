#ifndef TESTS_KIT_INSTALLED_KIT_H
#define TESTS_KIT_INSTALLED_KIT_H

#include <string>

#include "tests/module/Shell.h"
#include "tests/support/ScratchFolder.h"

// The build, installed once for all tests of the process and then moved to another folder.
class InstalledKit {
 public:
  static const InstalledKit& Get();

  // Where it is now, and where it was installed.
  std::string Path(const std::string& name = "") const { return m_folder.Path("moved/" + name); }
  std::string FirstPath() const { return m_folder.Path("installed"); }

  // Runs a command with the kit's programs on the path, the kit where CMake and pkg-config find it, and the compiler of this
  // build; `folder` is where it starts.
  ShellResult Run(const std::string& command, const std::string& folder) const;

 private:
  InstalledKit();
  testsupport::ScratchFolder m_folder;
};

#endif
