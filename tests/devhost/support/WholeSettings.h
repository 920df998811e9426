#ifndef TESTS_DEVHOST_SUPPORT_WHOLE_SETTINGS_H
#define TESTS_DEVHOST_SUPPORT_WHOLE_SETTINGS_H

#include <string>

#include "devhost/contract/Shapes.h"

namespace devhost {

// These settings, and all others empty or off, so that none is missing.
inline std::string WholeSettings(std::string children) {
  for (const ElementShape& setting : SettingsRequest().children) {
    const std::string tag = std::string("<") + setting.name;
    if (setting.ifMissing != nullptr && children.find(tag) == std::string::npos) {
      children += tag + ">" + (setting.text == TextKind::Switch ? "false" : "") + "</" + setting.name + ">";
    }
  }
  return children;
}

}  // namespace devhost

#endif
