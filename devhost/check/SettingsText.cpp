#include "devhost/check/SettingsText.h"

#include <algorithm>
#include <iterator>

#include "devhost/check/ConfigText.h"

namespace devhost {

namespace {

// A setting that becomes one line, in the order of the section.
struct LineSetting {
  const char* element;
  const char* keyword;
  bool isCommunity;
};

constexpr LineSetting kCommunities[] = {{"snmpCommunityReadSetting", "rocommunity", true},
                                        {"snmpCommunityWriteSetting", "rwcommunity", true}};
constexpr LineSetting kTexts[] = {{"snmpSysContactSetting", "sysContact", false},
                                  {"snmpSysLocationSetting", "sysLocation", false},
                                  {"snmpSysNameSetting", "sysName", false}};

const XmlElement* Child(const XmlElement& element, const char* name) {
  const auto found = std::find_if(element.children.begin(), element.children.end(),
                                  [name](const XmlElement& child) { return child.name == name; });
  return found == element.children.end() ? nullptr : &*found;
}

std::string Text(const XmlElement& element, const char* name) {
  const XmlElement* const child = Child(element, name);
  return child == nullptr ? std::string() : child->text;
}

// The agent quotes a community that holds a space.
std::string Community(const std::string& text) {
  return text.find(' ') == std::string::npos ? text : "\"" + text + "\"";
}

class Renderer {
 public:
  void Marker(const char* marker) { Add(std::string("# ") + marker, {}); }

  void Setting(const XmlElement& root, const LineSetting& setting) {
    const XmlElement* const element = Child(root, setting.element);
    if (element != nullptr && !element->text.empty()) {
      Add(setting.keyword + std::string("  ") + (setting.isCommunity ? Community(element->text) : element->text),
          {setting.element, element->line});
    }
  }

  void Trap(const XmlElement& element) {
    const std::string community = Text(element, "community");
    const std::string port = Text(element, "port");
    std::string line = "trap2sink  " + Text(element, "target");
    line += community.empty() ? "" : "  " + Community(community);
    line += port.empty() ? "" : "  " + port;
    Add(line, {"snmpTrapTargets", element.line});
  }

  SettingsText Take() { return std::move(m_result); }

 private:
  void Add(const std::string& line, const SettingOrigin& origin) {
    const auto breaks = std::count(line.begin(), line.end(), '\n');
    m_result.text.append(line).append(1, '\n');
    m_result.origins.emplace_hint(m_result.origins.end(), m_line, origin);
    m_line += static_cast<std::size_t>(breaks) + 1;
    if (breaks != 0) {
      m_result.lineBreakers.push_back(origin);
    }
  }

  SettingsText m_result;
  std::size_t m_line = 1;
};

}  // namespace

const SettingOrigin& SettingsText::OriginOf(std::size_t line) const {
  return std::prev(origins.upper_bound(line))->second;
}

SettingsText RenderSettings(const XmlElement& settings) {
  Renderer renderer;
  renderer.Marker(kStartMarker);
  for (const LineSetting& setting : kCommunities) {
    renderer.Setting(settings, setting);
  }
  for (const LineSetting& setting : kTexts) {
    renderer.Setting(settings, setting);
  }
  if (const XmlElement* const traps = Child(settings, "snmpTrapTargets")) {
    for (const XmlElement& trap : traps->children) {
      renderer.Trap(trap);
    }
  }
  renderer.Marker(kEndMarker);
  return renderer.Take();
}

}  // namespace devhost
