#include "devhost/operations/DeviceSettings.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

#include "devhost/engine/Host.h"
#include "devhost/preview/DeviceAnswers.h"
#include "devhost/preview/ScratchDevice.h"
#include "devhost/secrets/Masker.h"
#include "devhost/xml/XmlReader.h"
#include "host/ToString.h"

namespace devhost {

namespace {

XmlElement Element(const std::string& name, const std::string& text) {
  XmlElement element;
  element.name = name;
  element.text = text;
  return element;
}

XmlElement TargetElement(const TrapTarget& target) {
  XmlElement element = Element("trapTarget", "");
  element.children = {Element("target", target.target), Element("community", target.community),
                      Element("port", target.port)};
  return element;
}

// Nobody listens: what the agent says about a scratch device has been heard in the preview.
struct NoObserver : HostObserver {
  void OnOccurrence(const Occurrence&) override {}
};

// The words of a trap target that the reader took for one community: "  public  162".
TrapTarget AsItStandsInTheFile(const TrapTarget& target) {
  const std::string& read = target.community;
  const std::size_t begin = read.find_first_not_of(' ');
  if (begin == 0 || begin == std::string::npos || !target.port.empty()) {
    return target;
  }
  const std::size_t end = std::min(read.find(' ', begin), read.size());
  const std::size_t port = std::min(read.find_first_not_of(' ', end), read.size());
  return {target.target, read.substr(begin, end - begin), read.substr(port)};
}

// A community without the quotes that the agent writes around one with a space. Its reader keeps them, so they would be
// written twice.
std::string WithoutQuotes(const std::string& read) {
  const bool isQuoted = read.size() > 2 && read.front() == '"' && read.back() == '"';
  return isQuoted && read.find(' ') != std::string::npos ? read.substr(1, read.size() - 2) : read;
}

// The text of one setting, for people. Of a trap target, the texts of its parts.
std::string TextOf(const XmlElement& element) {
  std::string text = element.text;
  const std::string_view separator = element.name == "snmpTrapTargets" ? ", " : " ";
  for (const XmlElement& child : element.children) {
    const std::string part = TextOf(child);
    text += (text.empty() || part.empty() ? "" : std::string(separator)) + part;
  }
  return text;
}

bool AreEqual(const XmlElement& one, const XmlElement& other) {
  return one.name == other.name && one.text == other.text && one.children.size() == other.children.size() &&
         std::equal(one.children.begin(), one.children.end(), other.children.begin(), AreEqual);
}

// The child of that name, or an empty one.
XmlElement Child(const XmlElement& root, const std::string& name) {
  const auto found = std::find_if(root.children.begin(), root.children.end(),
                                  [&name](const XmlElement& child) { return child.name == name; });
  return found == root.children.end() ? Element(name, "") : *found;
}

}  // namespace

std::string SettingsElement(const DeviceAnswers& answers, unsigned long deviceId) {
  XmlElement targets = Element("snmpTrapTargets", "");
  for (const TrapTarget& target : answers.trapTargets.value) {
    targets.children.push_back(TargetElement(target));
  }
  XmlElement root = Element("managedDevice", "");
  root.children = {Element("snmpIsManagedDevice", h7::ToString(answers.isManaged)),
                   Element("snmpIsConfigDirty", h7::ToString(answers.isConfigDirty)),
                   Element("snmpEnabledSetting", h7::ToString(answers.isEnabled)),
                   Element("snmpCommunityReadSetting", answers.communityRead.value),
                   Element("snmpCommunityWriteSetting", answers.communityWrite.value),
                   Element("snmpSysContactSetting", answers.sysContact.value),
                   Element("snmpUsePrimaryContactSetting", h7::ToString(answers.usesPrimaryContact)),
                   Element("snmpSysLocationSetting", answers.sysLocation.value),
                   Element("snmpUseProjectOwnerAddressSetting", h7::ToString(answers.usesProjectOwnerAddress)),
                   Element("snmpSysNameSetting", answers.sysName.value),
                   Element("snmpUseRoomDeviceSetting", h7::ToString(answers.usesRoomDevice)),
                   std::move(targets),
                   Element("deviceId", h7::ToString(deviceId))};
  return XmlText(root, XmlStyle::Indented) + "\n";
}

std::string EffectiveSettings(const DriverEntry& agent, const DriverEntry& device, const DeviceAnswers& answers,
                              Host* around) {
  DeviceAnswers content = answers;
  {
    NoObserver nobody;
    Host host = around != nullptr ? Host(nobody, *around) : Host(nobody);
    host.Load(agent);
    DriverEntry scratch = device;
    scratch.configXml.clear();
    host.Load(scratch, [&content](IInstanceManager& instances) { return new ScratchDevice(instances, content); });
    host.Command(agent.id, "GetDeviceList", {});
  }
  if (answers.trapTargets.value.empty()) {
    std::transform(content.trapTargets.value.begin(), content.trapTargets.value.end(), content.trapTargets.value.begin(),
                   AsItStandsInTheFile);
  }
  if (answers.communityRead.value.empty()) {
    content.communityRead.value = WithoutQuotes(content.communityRead.value);
  }
  if (answers.communityWrite.value.empty()) {
    content.communityWrite.value = WithoutQuotes(content.communityWrite.value);
  }
  return SettingsElement(content, device.id);
}

std::set<std::string> HeldSettings(const std::string& settings) {
  std::set<std::string> held;
  if (settings.empty()) {
    return held;
  }
  for (const XmlElement& setting : ReadXml(settings).children) {
    if (!setting.children.empty() || (!setting.text.empty() && setting.text != "false")) {
      held.insert(setting.name);
    }
  }
  return held;
}

std::vector<SettingChange> CompareSettings(const std::string& before, const std::string& after, Masker& masker) {
  const XmlElement old = ReadXml(before);
  const XmlElement young = ReadXml(after);
  masker.Xml(before);  // for the secrets that stand elsewhere in the settings after
  const XmlElement shownYoung = ReadXml(masker.Xml(after));
  const XmlElement shownOld = ReadXml(masker.Xml(before));
  std::vector<SettingChange> changes;
  for (std::size_t i = 0; i != young.children.size(); ++i) {
    const XmlElement& setting = young.children[i];
    if (!AreEqual(Child(old, setting.name), setting)) {
      changes.push_back(
          {shownYoung.children[i].name, TextOf(Child(shownOld, setting.name)), TextOf(Child(shownYoung, setting.name))});
    }
  }
  return changes;
}

}  // namespace devhost
