#ifndef DEVHOST_CONFORM_DEVICE_H
#define DEVHOST_CONFORM_DEVICE_H

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "devhost/conform/Trial.h"
#include "device/TrapTarget.h"
#include "host/ISupportSNMP.h"

namespace devhost {

// A device under test, whose operations are noted before they are called. From inside Bench::Act only.
class Device {
 public:
  // Both outlive it.
  Device(ISupportSNMP& device, Trail& trail) : m_device(&device), m_trail(&trail) {}

  // Calls one operation: device.Call("CopyFrom", &ISupportSNMP::CopyFrom, path, text).
  template <class Result, class... Parameters, class... Given>
  Result Call(const std::string& slot, Result (ISupportSNMP::*operation)(Parameters...), Given&&... given) {
    m_trail->Note(slot);
    return (m_device->*operation)(std::forward<Given>(given)...);
  }

  // The operations that several checks need.
  int CopyFrom(std::string& text);
  int CopyTo(const std::string& text);
  // The same where a failure is to be expected, and an exception is one.
  int TryCopyTo(const std::string& text);
  void AgentAvailable() { Call("AgentAvailable", &ISupportSNMP::AgentAvailable); }
  std::vector<TrapTarget> Traps() { return Call("GetTrapTargetsSetting", &ISupportSNMP::GetTrapTargetsSetting); }
  void SetTraps(const std::vector<TrapTarget>& targets) {
    Call("SetTrapTargetsSetting", &ISupportSNMP::SetTrapTargetsSetting, targets);
  }
  void ClearTraps() { Call("ClearTrapTargetSetting", &ISupportSNMP::ClearTrapTargetSetting); }
  void AddTrap(const TrapTarget& trap) {
    Call("AddTrapTargetSetting", &ISupportSNMP::AddTrapTargetSetting, trap.target, trap.community, trap.port);
  }

  ISupportSNMP* Get() const { return m_device; }

 private:
  ISupportSNMP* m_device;
  Trail* m_trail;
};

// One of the twelve settings of a device, as a text: a switch is "true" or "false", the list has a line for each target.
struct Setting {
  enum class Kind { Switch, Text, List };

  std::string name;  // "SysName"
  Kind kind;
  std::string setter;  // the name of the operation
  std::function<std::string(Device&)> get;
  // A text sets the list to one target with that name, an empty one to no target.
  std::function<void(Device&, const std::string&)> set;
  std::function<bool(Device&)> wasErased;  // none for a switch
  std::string ownSwitch;                   // of a text that the project gives while this switch is on; "" for none
};

// All of them, in the order of the slots.
const std::vector<Setting>& Settings();

// Calls of all operations but the three that would do something to a controller, an operation or a few that belong together
// each. They leave settings and file as they are, but for the list of trap targets.
const std::vector<std::function<void(Device&)>>& Operations();

// Calls all of these.
void CallAll(Device& device);

// Not freed when CopyTo has returned: a device that uses it then is what file-text-borrowed is about.
inline const std::string kOrdinaryText = "# an ordinary text\nsysName kitchen\n";

// Gives the device an ordinary text as its file, since a new one may have none. Returns why that cannot be read back, or "".
std::string GiveAFile(Device& device);

// The list as a text: see Setting.
std::string TextOf(const std::vector<TrapTarget>& targets);

}  // namespace devhost

#endif
