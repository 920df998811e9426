#ifndef DEVHOST_OPERATIONS_DEVICE_SETTINGS_H
#define DEVHOST_OPERATIONS_DEVICE_SETTINGS_H

#include <set>
#include <string>
#include <vector>

#include "devhost/driver/DriverEntry.h"

namespace devhost {

class Host;
class Masker;
struct DeviceAnswers;

// One setting that two settings elements hold differently, as it may be shown.
struct SettingChange {
  std::string name;  // of the element: "snmpSysNameSetting"; "snmpTrapTargets" for the whole list
  std::string
      before;  // "" when it was empty; a trap target is "TARGET COMMUNITY PORT", several stand with ", " between them
  std::string after;
};

// The settings of a device that answers so, as a device settings element of all thirteen children that can be sent to the
// agent. `deviceId` is the device's id.
std::string SettingsElement(const DeviceAnswers& answers, unsigned long deviceId);

// The settings that the agent would list for a device that answers so, as such an element: what the device does not hold is
// read from the managed section of its file. The agent works on a scratch device in a host of its own, inside the life of
// `around` unless that is null. Throws HostError when the agent cannot do that.
//
// The agent's reader takes the port of a trap target for a part of its community, unless the community is in quotes. Here
// both are as they stand in the file.
std::string EffectiveSettings(const DriverEntry& agent, const DriverEntry& device, const DeviceAnswers& answers,
                              Host* around = nullptr);

// The names of the settings in such an element that hold something: a text, a switch that is on, trap targets. None for "".
// Throws XmlError for what is not well-formed.
std::set<std::string> HeldSettings(const std::string& settings);

// The settings that differ, in the order of `after`; secrets are compared, then masked. Throws XmlError for what is not a
// device settings element.
std::vector<SettingChange> CompareSettings(const std::string& before, const std::string& after, Masker& masker);

}  // namespace devhost

#endif
