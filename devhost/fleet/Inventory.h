#ifndef DEVHOST_FLEET_INVENTORY_H
#define DEVHOST_FLEET_INVENTORY_H

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

namespace devhost {

// What is wrong with an inventory, in one line: "FILE:LINE: what is wrong; what is allowed".
class InventoryError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// One device of a fleet. Paths in the inventory are relative to its folder; here they are as the program can open them.
struct FleetDevice {
  std::string project;   // the project file
  std::string name;      // of its driver
  unsigned long id = 0;  // of its driver
  std::string settings;  // file of the settings element that it is to have; "" when the inventory names none
  std::string file;      // its snmpd.conf, where that is on this machine; "" when the inventory names none
  std::string state;     // folder with the states of the project's drivers; "" when none are kept
  std::size_t line = 0;  // of the inventory
};

// Reads an inventory, and its projects to see that they have these devices:
//
//   <fleet settings="common.xml">
//     <project file="house/project.xml" state="house/state">
//       <device name="kitchen" settings="kitchen.xml" file="house/kitchen/snmpd.conf"/>
//       <device name="attic"/>
//     </project>
//     <project file="barn/project.xml"/>
//   </fleet>
//
// The nearest settings count. A project that lists no device stands for all its drivers but the agent. A device stands in an
// inventory once. Throws InventoryError, and ProjectError for a project that is wrong.
std::vector<FleetDevice> ReadInventory(const std::string& path, const std::string& moduleFolder);

}  // namespace devhost

#endif
