#ifndef DEVHOST_DRIVER_MODULE_NOTE_H
#define DEVHOST_DRIVER_MODULE_NOTE_H

#include <string>
#include <string_view>

namespace devhost {

// What a module says about itself in its file, without being loaded: kit/ModuleNote.cpp writes it. A fact that the module
// does not state is "".
struct ModuleNote {
  std::string version;           // of the module, the text of its `versionString`
  std::string contract;          // hosts, modules and drivers with one number fit together
  std::string enterpriseNumber;  // of the product; only the agent has one
  std::string processor;         // "amd64", "arm64", "armhf", "i386", or "processor N" with the number of any other
};

// Reads the note in `file`, the content of a module for whatever processor. Throws ModuleError, which calls the module
// `name`, when it is not a module or has no note.
ModuleNote ReadModuleNote(std::string_view file, const std::string& name);

}  // namespace devhost

#endif
