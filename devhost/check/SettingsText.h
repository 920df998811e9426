#ifndef DEVHOST_CHECK_SETTINGS_TEXT_H
#define DEVHOST_CHECK_SETTINGS_TEXT_H

#include <cstddef>
#include <map>
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
  // Where a line of the text, counted from 1, comes from.
  const SettingOrigin& OriginOf(std::size_t line) const;

  std::string text;
  std::map<std::size_t, SettingOrigin> origins;  // by the first line of what comes from there
  std::vector<SettingOrigin> lineBreakers;       // the settings whose value holds a line feed
};

// Renders `settings`. As in the agent, the first child of each name counts and the root's own name is ignored.
SettingsText RenderSettings(const XmlElement& settings);

}  // namespace devhost

#endif
