#include "devhost/contract/Shapes.h"

#include <algorithm>
#include <utility>

namespace devhost {

namespace {

using Holds = ElementShape::Holds;

struct Setting {
  const char* name;
  bool isSwitch;
  const char* ifMissing;
};

// In the order of a reply.
constexpr Setting kSettings[] = {{"snmpIsManagedDevice", true, "the device is no longer managed"},
                                 {"snmpIsConfigDirty", true, nullptr},
                                 {"snmpEnabledSetting", true, "SNMP is switched off"},
                                 {"snmpCommunityReadSetting", false, "the community is removed"},
                                 {"snmpCommunityWriteSetting", false, "the community is removed"},
                                 {"snmpSysContactSetting", false, "emptied"},
                                 {"snmpUsePrimaryContactSetting", true, "switched off"},
                                 {"snmpSysLocationSetting", false, "emptied"},
                                 {"snmpUseProjectOwnerAddressSetting", true, "switched off"},
                                 {"snmpSysNameSetting", false, "emptied"},
                                 {"snmpUseRoomDeviceSetting", true, "switched off"}};

ElementShape Text(const char* name, TextKind kind) {
  return {name, Holds::Text, kind};
}

ElementShape Parent(const char* name, std::vector<ElementShape> children) {
  ElementShape parent{name, Holds::Children};
  parent.children = std::move(children);
  return parent;
}

// The same, at most once or without a bound.
ElementShape Optional(ElementShape shape, std::size_t most) {
  shape.least = 0;
  shape.most = most;
  return shape;
}

// The agent writes the texts that a device holds, whatever they are; a tool should send what an SNMP daemon can serve.
ElementShape Settings(bool isReply) {
  const auto kind = [isReply](TextKind requested) { return isReply ? TextKind::Any : requested; };
  ElementShape target = Parent("trapTarget", {Text("target", kind(TextKind::FilledLine)),
                                              Text("community", kind(TextKind::Line)), Text("port", kind(TextKind::Port))});
  target.isOrdered = isReply;
  ElementShape settings{"managedDevice", Holds::Children};
  for (const Setting& setting : kSettings) {
    const TextKind ofSwitch = isReply ? TextKind::WrittenSwitch : TextKind::Switch;
    settings.children.push_back(Text(setting.name, setting.isSwitch ? ofSwitch : kind(TextKind::Line)));
    settings.children.back().ifMissing = setting.ifMissing;
  }
  settings.children.push_back(Parent("snmpTrapTargets", {Optional(std::move(target), ElementShape::kUnbounded)}));
  settings.children.back().ifMissing = "all trap targets are removed";
  settings.children.push_back(Text("deviceId", TextKind::Id));
  settings.isOrdered = isReply;
  return settings;
}

ElementShape State() {
  ElementShape variable{"variable", Holds::Nothing};
  variable.attributes = {{"deviceid", TextKind::Id},
                         {"variableid", TextKind::Id},
                         {"name", TextKind::Any},
                         {"snmpTrapEnabled", TextKind::WrittenSwitch}};
  ElementShape state = Parent("SNMPState", {Parent("variables", {Optional(std::move(variable), ElementShape::kUnbounded)})});
  state.attributes = {{"version", TextKind::Any}};
  return state;
}

ElementShape Variable(const char* name) {
  ElementShape variable{name, Holds::Nothing};
  variable.attributes = {{"device", TextKind::Id},
                         {"id", TextKind::Id},
                         {"name", TextKind::Filled},
                         {"hidden", TextKind::WrittenSwitch, false},
                         {"trapEnabled", TextKind::WrittenSwitch, false}};
  return Optional(std::move(variable), ElementShape::kUnbounded);
}

ElementShape ProjectFile() {
  ElementShape driver = Parent("driver", {Optional({"config", Holds::Anything}, 1)});
  driver.attributes = {{"id", TextKind::Id}, {"name", TextKind::DriverName}, {"module", TextKind::Filled}};
  driver.most = ElementShape::kUnbounded;
  ElementShape project = Parent("project", {std::move(driver), Variable("variable"), Variable("userVariable")});
  project.unique = {{{"driver"}, {"id"}}, {{"driver"}, {"name"}}, {{"variable", "userVariable"}, {"device", "id"}}};
  return project;
}

std::vector<DocumentShape> MakeDocuments() {
  std::vector<DocumentShape> documents = {{Settings(false), "settings-request.xsd"},
                                          {Settings(true), "settings-reply.xsd", true}};
  documents.push_back({Parent("managedDevices", {Optional(Settings(true), ElementShape::kUnbounded)}), "replies.xsd", true});
  documents.push_back({Text("deviceId", TextKind::Id), "replies.xsd", true});
  for (const char* const result : {"Success", "Fail", "ReadFail", "WriteFail"}) {
    documents.push_back({{result, Holds::Nothing}, "replies.xsd", true});
  }
  for (const char* const notification :
       {"DeviceAdded", "DeviceDeleted", "ManagedDeviceAdded", "ManagedDeviceDeleted", "DeviceChanged"}) {
    documents.push_back({Parent(notification, {Text("id", TextKind::SignedId)}), "notifications.xsd", true});
  }
  documents.push_back({State(), "state.xsd", true});
  documents.push_back({ProjectFile(), "project.xsd"});
  return documents;
}

}  // namespace

const ElementShape* ElementShape::FindChild(const std::string& childName) const {
  const auto found = std::find_if(children.begin(), children.end(),
                                  [&childName](const ElementShape& child) { return childName == child.name; });
  return found == children.end() ? nullptr : &*found;
}

const std::vector<DocumentShape>& Documents() {
  static const std::vector<DocumentShape> documents = MakeDocuments();
  return documents;
}

const ElementShape& SettingsRequest() {
  return Documents().front().root;
}

const DocumentShape* FindDocument(const std::string& root, bool asReply) {
  const DocumentShape* found = nullptr;
  for (const DocumentShape& document : Documents()) {
    if (root == document.root.name && (found == nullptr || document.isReply == asReply)) {
      found = &document;
    }
  }
  return found;
}

}  // namespace devhost
