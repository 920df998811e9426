#include "devhost/project/ChosenDevice.h"

#include <stdexcept>
#include <string_view>

#include "devhost/project/DriverNames.h"
#include "devhost/project/Project.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

constexpr std::string_view kAgentModule = "snmp_configuration_agent.so";

// What a message says is allowed in place of the agent.
std::string AllowedDevice(const Project& project) {
  for (const DriverEntry& driver : project.drivers) {
    if (!IsAgent(driver)) {
      return "a device of the project, such as " + driver.name;
    }
  }
  return "a project with a device in it";
}

}  // namespace

bool IsAgent(const DriverEntry& driver) {
  return std::string_view(driver.module).substr(driver.module.rfind('/') + 1) == kAgentModule;
}

ChosenDevice ChooseDevice(const std::string& file, const Project& project, const std::string& word) {
  ChosenDevice chosen;
  try {
    const unsigned long id = DriverNames(project.drivers).Find(word);
    for (const DriverEntry& driver : project.drivers) {
      chosen.device = driver.id == id ? driver : chosen.device;
      chosen.agent = chosen.agent.module.empty() && IsAgent(driver) ? driver : chosen.agent;
    }
  } catch (const std::runtime_error& error) {
    throw ProjectError(file + ": " + error.what());
  }
  if (chosen.agent.module.empty()) {
    throw ProjectError(file + ": no driver of the project has the module " + std::string(kAgentModule) +
                       "; allowed: a project with the agent in it");
  }
  if (IsAgent(chosen.device)) {
    throw ProjectError(file + ": " + Quoted(word) + " is the agent, not a device; allowed: " + AllowedDevice(project));
  }
  return chosen;
}

}  // namespace devhost
