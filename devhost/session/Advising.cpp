#include "devhost/session/Advising.h"

#include <cstddef>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <string>

#include "devhost/check/Advice.h"
#include "devhost/contract/Validate.h"
#include "devhost/json/FindingObject.h"
#include "devhost/operations/DeviceSettings.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

using nlohmann::ordered_json;

namespace {

// By the children of the element.
const std::map<std::string, std::string>& Fields() {
  static const std::map<std::string, std::string> kFields = {{"snmpEnabledSetting", "enabled"},
                                                             {"snmpCommunityReadSetting", "readCommunity"},
                                                             {"snmpCommunityWriteSetting", "writeCommunity"},
                                                             {"snmpSysContactSetting", "contact"},
                                                             {"snmpUsePrimaryContactSetting", "usePrimaryContact"},
                                                             {"snmpSysLocationSetting", "location"},
                                                             {"snmpUseProjectOwnerAddressSetting", "useOwnerAddress"},
                                                             {"snmpSysNameSetting", "name"},
                                                             {"snmpUseRoomDeviceSetting", "useRoomDevice"},
                                                             {"snmpTrapTargets", "trapTargets"}};
  return kFields;
}

// Which field each line of an element is about, in the layout of SettingsElement: one line for each text.
std::map<std::size_t, std::string> FieldsByLine(const XmlElement& root) {
  std::map<std::size_t, std::string> fields = {{root.line, ""}};
  for (const XmlElement& setting : root.children) {
    const auto known = Fields().find(setting.name);
    const std::string field = known == Fields().end() ? "" : known->second;
    fields.emplace(setting.line, field);
    for (std::size_t i = 0; i != setting.children.size(); ++i) {
      const std::string target = field + "[" + std::to_string(i) + "]";
      fields.emplace(setting.children[i].line, target);
      for (const XmlElement& part : setting.children[i].children) {
        fields.emplace(part.line, target + "." + part.name);
      }
    }
  }
  return fields;
}

std::string FieldOf(const std::map<std::size_t, std::string>& fields, std::size_t line) {
  const auto after = fields.upper_bound(line);
  return after == fields.begin() ? "" : std::prev(after)->second;
}

ordered_json ObjectOf(const Finding& finding, const std::string& field) {
  ordered_json object = FindingObject(finding);
  object["field"] = field;
  return object;
}

// Whether one of the fields is that one, or has it as a part.
bool Holds(const std::set<std::string>& fields, const std::string& field) {
  return fields.count(field) != 0 || fields.count(field.substr(0, field.rfind('.'))) != 0;
}

}  // namespace

std::vector<Finding> Shown(std::vector<Finding> findings, const Masker& secrets) {
  for (Finding& finding : findings) {
    finding.reason = secrets.Sentence(finding.reason);
    finding.remedy = secrets.Sentence(finding.remedy);
  }
  return findings;
}

ordered_json AdviseOnFields(const DeviceAnswers& settings, const DeviceAnswers& now, const Masker& secrets) {
  constexpr unsigned long kAnyDevice = 1;
  const std::string element = SettingsElement(settings, kAnyDevice);
  const XmlElement root = ReadXml(element);
  const std::map<std::size_t, std::string> fields = FieldsByLine(root);
  const std::set<std::string> held = HeldSettings(SettingsElement(now, kAnyDevice));
  ordered_json objects = ordered_json::array();
  std::set<std::string> judged;
  for (const Finding& finding : Shown(Advise(element, "settings", secrets.ShowsSecrets(), &held), secrets)) {
    const std::string field = FieldOf(fields, finding.line);
    judged.insert(field);
    objects.push_back(ObjectOf(finding, field));
  }
  // They stop nobody, since the agent takes such settings, and they say less than a rule that knows the daemon.
  for (const Mismatch& mismatch : Validate(root, SettingsRequest())) {
    const std::string field = FieldOf(fields, mismatch.line);
    if (!Holds(judged, field)) {
      objects.push_back(ObjectOf(
          {"settings", mismatch.line, Severity::Warning, NameOf(mismatch.kind), mismatch.reason, mismatch.remedy}, field));
    }
  }
  return objects;
}

}  // namespace devhost
