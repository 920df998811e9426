#include "devhost/project/ChosenDevice.h"

#include <stdexcept>
#include <string_view>

#include "devhost/project/DriverNames.h"
#include "devhost/project/Project.h"

namespace devhost {

namespace {

constexpr std::string_view kAgentModule = "snmp_configuration_agent.so";

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
  return chosen;
}

}  // namespace devhost
