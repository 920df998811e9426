#include "devhost/check/ElementRules.h"

#include <algorithm>

#include "devhost/check/Rules.h"
#include "devhost/contract/Validate.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

// Judges the children of an element of which the agent reads those that `shape` has.
void JudgeChildren(const XmlElement& parent, const ElementShape& shape, Report& report) {
  std::set<std::string> seen;
  for (const XmlElement& child : parent.children) {
    const ElementShape* const known = shape.FindChild(child.name);
    report.Begin(kElementIgnoredRule, Severity::Error, child.line);
    if (known == nullptr) {
      const std::string meant = MeantChild(shape, child.name);
      report.Add(OneLine(child.name) + ": the agent does not know this element and passes over it",
                 meant.empty() ? "remove the element" : "write " + meant);
    } else if (!seen.insert(child.name).second) {
      report.Add(child.name + ": the element stands here twice, and the agent reads the first one", "remove one of them");
    } else if (known->ifMissing != nullptr && known->text == TextKind::Switch && !IsOfKind(known->text, child.text)) {
      report.Begin(kSwitchRule, Severity::Error, child.line);
      report.Add(child.name + ": the value is neither on nor off: the agent takes it for false", "write true or false");
    }
  }
}

}  // namespace

void JudgeElements(const XmlElement& settings, Report& report) {
  JudgeChildren(settings, SettingsRequest(), report);
  for (const XmlElement& child : settings.children) {
    if (child.name == "snmpTrapTargets") {
      // Each of its children is a trap target to the agent, whatever its name.
      const ElementShape& shape = SettingsRequest().FindChild(child.name)->children.front();
      for (const XmlElement& target : child.children) {
        JudgeChildren(target, shape, report);
      }
    }
  }
}

void JudgeMissing(const XmlElement& settings, const std::set<std::string>* held, Report& report) {
  std::string missing;
  for (const ElementShape& setting : SettingsRequest().children) {
    const bool isThere = std::any_of(settings.children.begin(), settings.children.end(),
                                     [&setting](const XmlElement& child) { return child.name == setting.name; });
    if (!isThere && setting.ifMissing != nullptr && (held == nullptr || held->count(setting.name) != 0)) {
      missing += (missing.empty() ? "" : ", ") + std::string(setting.name) + " (" + setting.ifMissing + ")";
    }
  }
  if (!missing.empty()) {
    // Left out on purpose looks the same as left out by mistake. Whoever gives a setting up can say so by an empty element.
    report.Begin(kSettingMissingRule, Severity::Error, settings.line);
    report.Add("the element is the whole state of the device, and these settings are missing: " + missing,
               "add each setting: its value to keep it, empty (a switch: false) to give it up");
  }
}

void JudgeDeviceId(const XmlElement& settings, Report& report) {
  const auto id = std::find_if(settings.children.begin(), settings.children.end(),
                               [](const XmlElement& child) { return child.name == "deviceId"; });
  const bool isMissing = id == settings.children.end();
  if (isMissing || !IsOfKind(TextKind::Id, id->text)) {
    report.Begin(kDeviceIdRule, Severity::Error, isMissing ? settings.line : id->line);
    report.Add(isMissing ? "deviceId: the element is missing, and the agent takes 0 for the device"
                         : "deviceId: the value is not an id, and the agent may take it for another device",
               std::string("write the id of the device, ") + MeaningOf(TextKind::Id));
  }
}

}  // namespace devhost
