#ifndef DEVHOST_CHECK_SETTINGS_TEXT_H
#define DEVHOST_CHECK_SETTINGS_TEXT_H

#include <cstddef>
#include <string>
#include <vector>

#include "devhost/xml/XmlReader.h"

namespace devhost {

// Where a line of the section comes from.
struct SettingOrigin {
  std::string setting;   // the element's name, "" for the markers
  std::size_t line = 0;  // of the element in its file
};

// The lines that the settings of a device settings element become in the managed section, between its markers.
struct SettingsText {
  std::string text;
  std::vector<SettingOrigin> origins;       // one for each line of the text
  std::vector<SettingOrigin> lineBreakers;  // the settings whose value holds a line feed
};

// Names are looked for as the agent does: the first child of each name counts, the root's own name does not.
SettingsText RenderSettings(const XmlElement& settings);

}  // namespace devhost

#endif
