#ifndef DEVHOST_PROJECT_PROJECT_H
#define DEVHOST_PROJECT_PROJECT_H

#include <stdexcept>
#include <string>
#include <vector>

#include "devhost/driver/DriverEntry.h"
#include "devhost/driver/VariableEntry.h"

namespace devhost {

// What is wrong with a project file, in one line: "FILE:LINE: what is wrong; what is allowed".
class ProjectError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The drivers that a host is to load, in that order, and the variables that it is to have.
struct Project {
  std::vector<DriverEntry> drivers;
  std::vector<VariableEntry> variables;
};

// Reads a project file:
//
//   <project>
//     <driver id="1" name="agent" module="snmp_configuration_agent.so"/>
//     <driver id="12" name="kitchen" module="simulated_device.so">
//       <config folder="{project}/kitchen"/>
//     </driver>
//     <variable device="5" id="7" name="lamp" hidden="false" trapEnabled="false"/>
//     <userVariable device="6" id="1" name="scene"/>
//   </project>
//
// A module without a slash lies in `moduleFolder`, one with a slash is relative to the project file; it has to exist.
// "{project}" in the text and attributes of <config> becomes the absolute folder of the project file. What else <config>
// holds is the driver's business. A pair of device and id stands for one variable, ordinary or user variable; hidden and
// trapEnabled are false when they are missing. Throws ProjectError.
//
// A `folder` that is not empty is the one that "{project}" becomes instead: for a project that is played on copies of its
// devices' files.
Project ReadProject(const std::string& path, const std::string& moduleFolder, const std::string& folder = "");

// The project that a host without a project file has: the agent alone, as driver 1. Throws ProjectError when its module is
// not in `moduleFolder`.
Project AgentAlone(const std::string& moduleFolder);

}  // namespace devhost

#endif
