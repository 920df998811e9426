#include "devhost/driver/DriverEntry.h"

namespace devhost {

std::string TitleOf(const DriverEntry& entry) {
  return "driver " + std::to_string(entry.id) + " \"" + entry.name + "\"";
}

}  // namespace devhost
