#include "devhost/fleet/Inventory.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <utility>

#include "devhost/project/ChosenDevice.h"
#include "devhost/project/Project.h"
#include "devhost/system/FileText.h"
#include "devhost/text/Words.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

namespace {

class InventoryFile {
 public:
  InventoryFile(const std::string& path, const std::string& moduleFolder) : m_path(path), m_moduleFolder(moduleFolder) {}

  std::vector<FleetDevice> Read() {
    const XmlElement root = Parse();
    if (root.name != "fleet") {
      Refuse(root, "the root element is <" + root.name + ">; allowed: <fleet>");
    }
    Allow(root, {"settings"}, "project");
    FleetDevice pattern;
    pattern.settings = PathOf(root, "settings");
    for (const XmlElement& project : root.children) {
      ReadFleetProject(project, pattern);
    }
    if (m_devices.empty()) {
      Refuse(root, "the fleet has no devices; allowed: one <project file=\"..\"/> or more");
    }
    return std::move(m_devices);
  }

 private:
  [[noreturn]] void Refuse(const XmlElement& element, const std::string& problem) const {
    throw InventoryError(m_path + ":" + std::to_string(element.line) + ": " + problem);
  }

  XmlElement Parse() const {
    try {
      return ReadXml(ReadRegularFile(m_path));
    } catch (const FileError& error) {
      throw InventoryError(error.what());
    } catch (const XmlError& error) {
      throw InventoryError(m_path + ":" + std::to_string(error.Line()) + ":" + std::to_string(error.Column()) +
                           ": the inventory is not well-formed XML: " + OneLine(error.what()));
    }
  }

  // These attributes, these children ("" for none) and no text.
  void Allow(const XmlElement& element, const std::vector<std::string>& attributes, const std::string& child) const {
    for (const XmlAttribute& attribute : element.attributes) {
      if (std::find(attributes.begin(), attributes.end(), attribute.name) == attributes.end()) {
        std::string allowed;
        for (const std::string& each : attributes) {
          allowed += (allowed.empty() ? "" : ", ") + each;
        }
        Refuse(element, "unknown attribute " + Quoted(attribute.name) + " of <" + element.name + ">; allowed: " + allowed);
      }
      if (attribute.value.empty()) {
        Refuse(element, attribute.name + " of <" + element.name + "> is empty; leave it out or write a value");
      }
    }
    for (const XmlElement& each : element.children) {
      if (each.name != child) {
        Refuse(each, "unknown element <" + each.name + "> in <" + element.name +
                         ">; allowed: " + (child.empty() ? "none" : "<" + child + ">"));
      }
    }
    if (!element.text.empty()) {
      Refuse(element, "<" + element.name + "> holds text; allowed: elements only");
    }
  }

  // The attribute as a path that can be opened; "" when there is none.
  std::string PathOf(const XmlElement& element, const char* attribute) const {
    const std::string* const value = element.FindAttribute(attribute);
    return value == nullptr ? "" : (std::filesystem::path(m_path).parent_path() / *value).lexically_normal().string();
  }

  std::string Required(const XmlElement& element, const char* attribute, const char* example) const {
    const std::string* const value = element.FindAttribute(attribute);
    if (value == nullptr) {
      Refuse(element, "<" + element.name + "> has no " + attribute + "; write " + attribute + "=\"" + example + "\"");
    }
    return *value;
  }

  void ReadFleetProject(const XmlElement& element, FleetDevice pattern) {
    Allow(element, {"file", "settings", "state"}, "device");
    Required(element, "file", "project.xml");
    pattern.project = PathOf(element, "file");
    pattern.state = PathOf(element, "state");
    pattern.settings = element.FindAttribute("settings") != nullptr ? PathOf(element, "settings") : pattern.settings;
    const Project project = ReadProject(pattern.project, m_moduleFolder);
    for (const XmlElement& device : element.children) {
      ReadDevice(device, project, pattern);
    }
    if (element.children.empty()) {
      AddAll(element, project, pattern);
    }
  }

  void AddAll(const XmlElement& element, const Project& project, const FleetDevice& pattern) {
    for (const DriverEntry& driver : project.drivers) {
      if (!IsAgent(driver)) {
        Add(element, driver, pattern);
      }
    }
  }

  void ReadDevice(const XmlElement& element, const Project& project, FleetDevice pattern) {
    Allow(element, {"name", "settings", "file"}, "");
    const std::string name = Required(element, "name", "kitchen");
    pattern.settings = element.FindAttribute("settings") != nullptr ? PathOf(element, "settings") : pattern.settings;
    pattern.file = PathOf(element, "file");
    try {
      Add(element, ChooseDevice(pattern.project, project, name).device, pattern);
    } catch (const ProjectError& error) {
      Refuse(element, error.what());
    }
  }

  void Add(const XmlElement& element, const DriverEntry& driver, FleetDevice device) {
    device.name = driver.name;
    device.id = driver.id;
    device.line = element.line;
    // A project has other names through symbolic links, and nobody works on a device twice at once.
    const std::string project = std::filesystem::canonical(device.project).string();
    const auto [first, isNew] = m_lines.emplace(std::pair(project, device.id), element.line);
    if (!isNew) {
      Refuse(element, device.name + " of " + device.project + " stands in line " + std::to_string(first->second) +
                          " already; allowed: each device once");
    }
    m_devices.push_back(std::move(device));
  }

  const std::string m_path;
  const std::string m_moduleFolder;
  std::vector<FleetDevice> m_devices;
  std::map<std::pair<std::string, unsigned long>, std::size_t> m_lines;  // by the project's one path, and the id
};

}  // namespace

std::vector<FleetDevice> ReadInventory(const std::string& path, const std::string& moduleFolder) {
  return InventoryFile(path, moduleFolder).Read();
}

}  // namespace devhost
