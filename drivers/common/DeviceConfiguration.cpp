#include "drivers/common/DeviceConfiguration.h"

#include <set>

#include "drivers/common/MisspeltAttribute.h"
#include "drivers/common/SettingNames.h"
#include "host/INodeList.h"
#include "host/auto_com.h"

namespace drivers {

namespace {

std::string ReadAttributes(const H7XML::INode& config, DeviceConfiguration& result, FolderIs folderIs) {
  const std::string misspelt = FindMisspelt(config, {{"folder", {"dir", "directory"}}, {"version"}, {"versionValid"}});
  if (!misspelt.empty()) {
    return misspelt;
  }
  result.folder = config.GetNamedString("folder");
  if (folderIs == FolderIs::Required && (result.folder.empty() || result.folder.front() != '/')) {
    return "folder is \"" + result.folder + "\"; give the absolute path of the folder that holds the device's snmpd.conf";
  }
  const std::string version = config.GetNamedString("version");
  if (!version.empty()) {
    result.version = version;
  }
  const std::string versionValid = config.GetNamedString("versionValid");
  if (!versionValid.empty() && !ReadSwitch(versionValid, result.versionValid)) {
    return "versionValid is \"" + versionValid + "\"; allowed are true and false";
  }
  return std::string();
}

// Text that nobody reads is likely a mistake.
std::string RefuseContent(const H7XML::INode& element, const std::string& name) {
  const std::string text = element.GetValue();
  if (text.find_first_not_of(" \t\r\n") != std::string::npos) {
    return "the element " + name + " holds the text \"" + text.substr(0, 60) + "\"; put values into attributes";
  }
  return std::string();
}

std::string ReadSetting(const H7XML::INode& element, std::set<std::string>& seen, SnmpSettings& settings) {
  const std::string name = element.GetNamedString("name");
  const std::string wrong = SetSettingByName(settings, name, element.GetNamedString("value"));
  if (!wrong.empty()) {
    return "in a setting element, " + wrong;
  }
  if (!seen.insert(name).second) {
    return "the setting " + name + " is given twice; once is allowed";
  }
  return std::string();
}

std::string ReadTrapTarget(const H7XML::INode& element, SnmpSettings& settings) {
  const std::string target = element.GetNamedString("target");
  if (target.empty()) {
    return "a trapTarget element has no target; give target, and community and port where they are known";
  }
  settings.trapTargets.Add(TrapTarget(target, element.GetNamedString("community"), element.GetNamedString("port")));
  return std::string();
}

}  // namespace

std::string ReadDeviceConfiguration(const H7XML::INode& config, DeviceConfiguration& result, FolderIs folderIs) {
  std::string wrong = ReadAttributes(config, result, folderIs);
  wrong = wrong.empty() ? RefuseContent(config, "config") : wrong;
  std::set<std::string> seen;
  const h7::auto_com<H7XML::INodeList> children = config.GetChildren();
  for (auto child = children->First(); wrong.empty() && child; child = children->Next()) {
    const std::string name = child->GetName();
    if (name == "setting") {
      wrong = ReadSetting(*child, seen, result.settings);
    } else if (name == "trapTarget") {
      wrong = ReadTrapTarget(*child, result.settings);
    } else {
      wrong = "the element " + name + " is unknown; allowed are setting and trapTarget";
    }
    if (wrong.empty()) {
      wrong = RefuseContent(*child, name);
    }
    if (wrong.empty() && child->GetChildren()->First()) {
      wrong = "the element " + name + " holds elements; none are allowed there";
    }
  }
  return wrong;
}

}  // namespace drivers
