#ifndef DEVHOST_DRIVER_VARIABLE_ENTRY_H
#define DEVHOST_DRIVER_VARIABLE_ENTRY_H

#include <string>

namespace devhost {

// One variable of a project.
struct VariableEntry {
  unsigned long deviceId = 0;  // the pair of ids is unique in the project; each id has at most 32 bits
  unsigned long variableId = 0;
  std::string name;
  bool user = false;         // a user variable
  bool hidden = false;       // listed as such
  bool trapEnabled = false;  // the flag
};

}  // namespace devhost

#endif
