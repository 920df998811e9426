#include "devhost/check/ElementRules.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "devhost/check/Rules.h"
#include "devhost/snmpd/NearName.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

struct ChildName {
  const char* name;
  bool isSwitch;
  const char* consequence;  // of its absence; null when there is none
};

constexpr ChildName kSettings[] = {{"snmpIsManagedDevice", true, "the device is no longer managed"},
                                   {"snmpIsConfigDirty", false, nullptr},
                                   {"snmpEnabledSetting", true, "SNMP is switched off"},
                                   {"snmpCommunityReadSetting", false, "the community is removed"},
                                   {"snmpCommunityWriteSetting", false, "the community is removed"},
                                   {"snmpSysContactSetting", false, "emptied"},
                                   {"snmpUsePrimaryContactSetting", true, "switched off"},
                                   {"snmpSysLocationSetting", false, "emptied"},
                                   {"snmpUseProjectOwnerAddressSetting", true, "switched off"},
                                   {"snmpSysNameSetting", false, "emptied"},
                                   {"snmpUseRoomDeviceSetting", true, "switched off"},
                                   {"snmpTrapTargets", false, "all trap targets are removed"},
                                   {"deviceId", false, nullptr}};
constexpr ChildName kTrapParts[] = {{"target", false, nullptr}, {"community", false, nullptr}, {"port", false, nullptr}};

// How the agent reads a switch.
bool IsSwitchValue(const std::string& text) {
  return text == "true" || text == "false" || text == "1" || text == "0";
}

// The name that was probably meant, or "".
template <std::size_t N>
std::string Meant(const std::string& name, const ChildName (&known)[N]) {
  const NearName word(name);
  std::string meant;
  std::size_t least = NearName::kFar;
  for (const ChildName& child : known) {
    const std::size_t distance = word.DistanceTo(NearName(child.name).Text());
    if (distance < least) {
      least = distance;
      meant = child.name;
    }
  }
  return meant;
}

// Judges the children of an element of which the agent reads those with a name in `known`.
template <std::size_t N>
void JudgeChildren(const XmlElement& parent, const ChildName (&known)[N], Report& report) {
  std::set<std::string> seen;
  for (const XmlElement& child : parent.children) {
    const auto found =
        std::find_if(std::begin(known), std::end(known), [&child](const ChildName& one) { return child.name == one.name; });
    report.Begin(kElementIgnoredRule, Severity::Error, child.line);
    if (found == std::end(known)) {
      const std::string meant = Meant(child.name, known);
      report.Add(OneLine(child.name) + ": the agent does not know this element and passes over it",
                 meant.empty() ? "remove the element" : "write " + meant);
    } else if (!seen.insert(child.name).second) {
      report.Add(child.name + ": the element stands here twice, and the agent reads the first one", "remove one of them");
    } else if (found->isSwitch && !IsSwitchValue(child.text)) {
      report.Begin(kSwitchRule, Severity::Error, child.line);
      report.Add(child.name + ": the value is neither on nor off: the agent takes it for false", "write true or false");
    }
  }
}

}  // namespace

void JudgeElements(const XmlElement& settings, Report& report) {
  JudgeChildren(settings, kSettings, report);
  for (const XmlElement& child : settings.children) {
    if (child.name == "snmpTrapTargets") {
      for (const XmlElement& target : child.children) {
        JudgeChildren(target, kTrapParts, report);
      }
    }
  }
}

void JudgeMissing(const XmlElement& settings, const std::set<std::string>* held, Report& report) {
  std::string missing;
  for (const ChildName& setting : kSettings) {
    const bool isThere = std::any_of(settings.children.begin(), settings.children.end(),
                                     [&setting](const XmlElement& child) { return child.name == setting.name; });
    if (!isThere && setting.consequence != nullptr && (held == nullptr || held->count(setting.name) != 0)) {
      missing += (missing.empty() ? "" : ", ") + std::string(setting.name) + " (" + setting.consequence + ")";
    }
  }
  if (!missing.empty()) {
    report.Begin(kSettingMissingRule, Severity::Warning, settings.line);
    report.Add("the element is the whole state of the device, and these settings are missing: " + missing,
               "add each setting that the device is to keep");
  }
}

}  // namespace devhost
