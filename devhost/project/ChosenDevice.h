#ifndef DEVHOST_PROJECT_CHOSEN_DEVICE_H
#define DEVHOST_PROJECT_CHOSEN_DEVICE_H

#include <string>

#include "devhost/driver/DriverEntry.h"

namespace devhost {

struct Project;

// One device of a project, with the agent that configures it.
struct ChosenDevice {
  DriverEntry agent;
  DriverEntry device;
};

// Whether the driver is the agent, which the name of its module says.
bool IsAgent(const DriverEntry& driver);

// The device that `word`, a name or an id, stands for, and the agent. Drivers are not loaded to see which of them is the
// agent, so the name of its module decides. Throws ProjectError, which names `file`, when the project lacks one of them or
// `word` stands for an agent.
ChosenDevice ChooseDevice(const std::string& file, const Project& project, const std::string& word);

}  // namespace devhost

#endif
