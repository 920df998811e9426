#ifndef DRIVERS_COMMON_SETTING_NAMES_H
#define DRIVERS_COMMON_SETTING_NAMES_H

#include <functional>
#include <string>

#include "drivers/common/SnmpSettings.h"

// The settings by the names that project files, device commands and scripts use.
//
//   switches (true or false)            managed configDirty enabled usePrimaryContact useProjectOwnerAddress useRoomDevice
//   texts, with an erased flag          communityRead communityWrite sysContact sysLocation sysName
//   the list, with an erased flag       trapTargets
namespace drivers {

// Reads a switch: true and false, or 1 and 0. Returns false when `text` is neither; `value` is then unchanged.
bool ReadSwitch(const std::string& text, bool& value);

// Sets a text or a switch. Returns what is wrong and what is allowed, in one line, and changes nothing; or nothing.
std::string SetSettingByName(SnmpSettings& settings, const std::string& name, const std::string& value);

// Empties a text or the list and sets its erased flag. Returns the same.
std::string EraseSettingByName(SnmpSettings& settings, const std::string& name);

// One setting as text. `erased` is null where the setting has no such flag. The value of trapTargets is their number.
struct NamedSetting {
  const char* name;
  std::string value;
  const bool* erased;
};

// Visits every setting, in the order in which the interface of a device lists them.
void VisitSettings(const SnmpSettings& settings, const std::function<void(const NamedSetting&)>& visit);

}  // namespace drivers

#endif
