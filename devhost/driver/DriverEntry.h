#ifndef DEVHOST_DRIVER_DRIVER_ENTRY_H
#define DEVHOST_DRIVER_DRIVER_ENTRY_H

#include <string>

namespace devhost {

// One driver of a project, as the project file names it.
struct DriverEntry {
  unsigned long id = 0;     // unique in the project, at most 32 bits
  std::string name;         // for messages; unique in the project
  std::string module;       // path of the driver module
  std::string configXml;    // the text of its configuration element, "<config/>" when it has none
  std::string origin = {};  // where the project file names it, for messages: "FILE:LINE"; empty when that is not known
};

// How messages name a driver: driver 12 "kitchen".
inline std::string TitleOf(const DriverEntry& entry) {
  return "driver " + std::to_string(entry.id) + " \"" + entry.name + "\"";
}

}  // namespace devhost

#endif
