#include "fuzz/agent/ReferenceAgent.h"

#include <cstdint>
#include <functional>

#include "devhost/text/TypedText.h"
#include "fuzz/agent/ReferenceSection.h"
#include "host/ICmdMessage.h"
#include "host/IDriverManager.h"
#include "host/IInstanceManager.h"
#include "host/IVariableManager.h"
#include "host/LogXMessage.h"
#include "host/UICmdDispatcher.h"
#include "tests/config/SectionModels.h"

namespace fuzz {
namespace {

using devhost::XmlElement;

const unsigned int kEvents[] = {34, 35, 36, 5, 11};

void Quiet(const std::function<void()>& step) {
  try {
    step();
  } catch (...) {
  }
}

XmlElement Element(const std::string& name, const std::string& text = "") {
  XmlElement element;
  element.name = name;
  element.text = text;
  return element;
}

h7::auto_com<H7XML::INode> Reply(const std::string& name, const std::string& text = "") {
  return devhost::MakeXmlNode(Element(name, text));
}

std::string Truth(bool value) {
  return value ? "true" : "false";
}

// Returns the node as a plain value.
XmlElement Value(const H7XML::INode& node) {
  return devhost::ReadXml(devhost::XmlText(node, devhost::XmlStyle::Compact));
}

const XmlElement* Child(const XmlElement& element, const std::string& name) {
  for (const XmlElement& child : element.children) {
    if (child.name == name) {
      return &child;
    }
  }
  return nullptr;
}

std::string ChildText(const XmlElement& element, const std::string& name) {
  const XmlElement* const child = Child(element, name);
  return child == nullptr ? "" : child->text;
}

bool ChildBool(const XmlElement& element, const std::string& name) {
  return devhost::ReadBool(ChildText(element, name));
}

std::string Named(const XmlElement& element, const std::string& name) {
  const std::string* const value = element.FindAttribute(name);
  return value == nullptr ? "" : *value;
}

unsigned long NamedNumber(const XmlElement& element, const std::string& name) {
  return devhost::ReadULong(Named(element, name));
}

// Returns the last parameter of that name, or 0.
unsigned long Parameter(const XmlElement& event, const std::string& name) {
  unsigned long value = 0;
  for (const XmlElement& parameter : event.children) {
    if (Named(parameter, "name") == name) {
      value = devhost::ReadULong(parameter.text);
    }
  }
  return value;
}

}  // namespace

ReferenceAgent::ReferenceAgent(IInstanceManager& instances, Clock& clock)
    : H7BaseAgentDriver(instances, DriverMultiplicity_Single), m_clock(clock), m_variableManager(GetVariableManager()) {
  int listening = 0;
  try {
    for (; listening != 5; ++listening) {
      RegisterListener(*this, kEvents[listening], 0);
    }
  } catch (...) {
    while (listening != 0) {
      --listening;
      Quiet([&] { UnregisterListener(*this, kEvents[listening], 0); });
    }
    throw;
  }
}

ReferenceAgent::~ReferenceAgent() {
  for (const unsigned int event : kEvents) {
    Quiet([&] { UnregisterListener(*this, event, 0); });
  }
  for (auto entry = devices.begin(); entry != devices.end();) {
    const RecordPointer record = entry->second;
    const unsigned long id = entry->first;
    Quiet([&] {
      if (record->device->GetIsManagedDevice()) {
        SetManaged(record->id, false);
      }
    });
    entry = devices.upper_bound(id);
  }
  if (m_publishedWith != nullptr) {
    Quiet([&] { m_publishedWith->UnregisterQuery(ISNMPConfigurationAgent_IID); });
  }
}

int ReferenceAgent::Initialize(unsigned long driverId, H7XML::INode& config, H7XML::INode* persisted) {
  H7BaseAgentDriver::Initialize(driverId, config, persisted);
  if (!m_initialized) {
    IInstanceManager& instances = GetInstanceManager();
    if (instances.RegisterQuery(ISNMPConfigurationAgent_IID, static_cast<ISNMPConfigurationAgent*>(this))) {
      m_publishedWith = &instances;
    }
    m_initialized = true;
  }
  for (ISupportSNMP* const driver : GetDriverManager().ListDrivers<ISupportSNMP>(0, ISupportSNMP_IID)) {
    driver->AgentAvailable();
  }
  if (persisted == nullptr) {
    return 0;
  }
  savedTrapFlags.clear();
  const XmlElement state = Value(*persisted);
  const XmlElement* const variables = Child(state, "variables");
  if (variables != nullptr) {
    for (const XmlElement& child : variables->children) {
      savedTrapFlags[Key(NamedNumber(child, "deviceid"), NamedNumber(child, "variableid"))] =
          devhost::ReadBool(Named(child, "snmpTrapEnabled"));
    }
  }
  return 0;
}

h7::auto_com<H7XML::INode> ReferenceAgent::GetPersistState(unsigned long) {
  XmlElement variables = Element("variables");
  for (auto entry = deviceVariables.begin(); entry != deviceVariables.end();) {
    const Key key = entry->first;
    IVariable* const variable = entry->second;
    if (variable != nullptr) {
      const auto ids = variable->GetIds();
      const std::string name = variable->GetName();
      XmlElement element = Element("variable");
      element.attributes = {{"deviceid", std::to_string(ids.first)},
                            {"variableid", std::to_string(ids.second)},
                            {"name", name},
                            {"snmpTrapEnabled", Truth(variable->TrapEnabled())}};
      variables.children.push_back(element);
    }
    entry = deviceVariables.upper_bound(key);
  }
  XmlElement state = Element("SNMPState");
  state.attributes = {{"version", "1.0.0.0"}};
  state.children = {variables};
  return devhost::MakeXmlNode(state);
}

void ReferenceAgent::RegisterCommands() {
  const auto bind = [this](const char* name, const boost::function<Node(ICmdMessage const&)>& handler) {
    GetUICmdDispatcher().RegisterUICmd(name, handler);
  };
  bind("GetDeviceList", [this](ICmdMessage const&) { return GetDeviceList(); });
  bind("SetDeviceState", [this](ICmdMessage const& message) { return SetDeviceStateCommand(message.GetString("xml")); });
  bind("AddManagedDevice", [this](ICmdMessage const& message) { return SetManaged(message.GetULong("deviceId"), true); });
  bind("DeleteManagedDevice",
       [this](ICmdMessage const& message) { return SetManaged(message.GetULong("deviceId"), false); });
  bind("RebootController",
       [this](ICmdMessage const& message) { return Act(message.GetULong("deviceId"), &ISupportSNMP::RebootController); });
  bind("StopMasterAgent",
       [this](ICmdMessage const& message) { return Act(message.GetULong("deviceId"), &ISupportSNMP::StopMasterAgent); });
  bind("StartMasterAgent",
       [this](ICmdMessage const& message) { return Act(message.GetULong("deviceId"), &ISupportSNMP::StartMasterAgent); });
}

void ReferenceAgent::AddSNMPDevice(unsigned long deviceId, ISupportSNMP* device) {
  if (device == nullptr) {
    LogXMessage(3, "%s", ("Unable to add SNMP device " + std::to_string(deviceId) + "l.").c_str());
    return;
  }
  if (devices.count(deviceId) == 0) {
    devices[deviceId] = std::make_shared<Record>(Record{deviceId, device, "6", "2", ""});
  }
  Notify("DeviceAdded", deviceId);
}

void ReferenceAgent::DeleteSNMPDevice(unsigned long deviceId) {
  devices.erase(deviceId);
  Notify("DeviceDeleted", deviceId);
}

bool ReferenceAgent::SetDeviceState(unsigned long deviceId) {
  const RecordPointer record = Find(deviceId);
  if (!record) {
    return false;
  }
  if (Read(*record) != 0) {
    return false;
  }
  return Write(*record) == 0;
}

void ReferenceAgent::OnSystemEvent(H7XML::INode& node) {
  const XmlElement event = Value(node);
  const std::string name = Named(event, "name");
  const Key key(Parameter(event, "iddevice"), Parameter(event, "idvariable"));
  const bool isKey = key.first != 0 && key.second != 0;
  if (name == "OnProjectLoaded") {
    BuildList(userVariables, true);
    BuildList(deviceVariables, false);
    for (auto entry = savedTrapFlags.begin(); entry != savedTrapFlags.end();) {
      const Key saved = entry->first;
      const bool enabled = entry->second;
      if (deviceVariables.count(saved) != 0 && deviceVariables[saved] != nullptr) {
        deviceVariables[saved]->TrapEnabled() = enabled;
      }
      entry = savedTrapFlags.upper_bound(saved);
    }
  } else if (name == "OnVariableAdded" && isKey) {
    Add(deviceVariables, key);
  } else if (name == "OnUserVariableAdded" && isKey) {
    Add(userVariables, key);
  } else if (name == "OnVariableRemoved" && isKey) {
    deviceVariables.erase(key);
    userVariables.erase(key);
  } else if (name == "OnItemRemoved" && Parameter(event, "iditem") != 0) {
    Variables others;
    for (const auto& entry : deviceVariables) {
      if (entry.first.first != Parameter(event, "iditem")) {
        others.insert(entry);
      }
    }
    deviceVariables = others;
  }
}

ReferenceAgent::RecordPointer ReferenceAgent::Find(unsigned long deviceId) const {
  return devices.count(deviceId) == 0 ? nullptr : devices.at(deviceId);
}

void ReferenceAgent::Notify(const std::string& name, unsigned long deviceId) {
  XmlElement notification = Element(name);
  // The notification contains a signed number.
  const std::int64_t id = static_cast<std::int64_t>(deviceId);
  notification.children = {Element("id", std::to_string(id > INT32_MAX ? id - (std::int64_t{1} << 32) : id))};
  ConSendDataToUI(*devhost::MakeXmlNode(notification));
}

h7::auto_com<H7XML::INode> ReferenceAgent::GetDeviceList() {
  XmlElement list = Element("managedDevices");
  for (auto entry = devices.begin(); entry != devices.end();) {
    const unsigned long id = entry->first;
    const RecordPointer record = entry->second;
    const std::string version = record->device->GetSNMPVersion();
    if (record->device->IsSNMPVersionValid(version)) {
      Read(*record);
      list.children.push_back(Settings(*record));
    }
    entry = devices.upper_bound(id);
  }
  return devhost::MakeXmlNode(list);
}

devhost::XmlElement ReferenceAgent::Settings(Record& record) {
  ISupportSNMP& device = *record.device;
  XmlElement root = Element("managedDevice");
  const auto add = [&](const char* name, const std::string& text) { root.children.push_back(Element(name, text)); };
  add("snmpIsManagedDevice", Truth(device.GetIsManagedDevice()));
  add("snmpIsConfigDirty", Truth(device.GetIsConfigDirty()));
  add("snmpEnabledSetting", Truth(device.GetEnabledSetting()));
  add("snmpCommunityReadSetting", device.GetCommunityReadSetting());
  add("snmpCommunityWriteSetting", device.GetCommunityWriteSetting());
  add("snmpSysContactSetting", device.GetSysContactSetting());
  add("snmpUsePrimaryContactSetting", Truth(device.GetUsePrimaryContactSetting()));
  add("snmpSysLocationSetting", device.GetSysLocationSetting());
  add("snmpUseProjectOwnerAddressSetting", Truth(device.GetUseProjectOwnerAddressSetting()));
  add("snmpSysNameSetting", device.GetSysNameSetting());
  add("snmpUseRoomDeviceSetting", Truth(device.GetUseRoomDeviceSetting()));
  XmlElement targets = Element("snmpTrapTargets");
  for (const TrapTarget& trap : device.GetTrapTargetsSetting()) {
    XmlElement target = Element("trapTarget");
    target.children = {Element("target", trap.target), Element("community", trap.community), Element("port", trap.port)};
    targets.children.push_back(target);
  }
  root.children.push_back(targets);
  add("deviceId", std::to_string(record.id));
  return root;
}

h7::auto_com<H7XML::INode> ReferenceAgent::SetDeviceStateCommand(const std::string& xml) {
  if (xml.empty()) {
    return Reply("Fail");
  }
  XmlElement settings;
  try {
    settings = devhost::ReadXml(xml);
  } catch (const devhost::XmlError&) {
    return Reply("Fail");
  }
  const unsigned long deviceId = devhost::ReadULong(ChildText(settings, "deviceId"));
  const RecordPointer record = Find(deviceId);
  if (!record) {
    return Reply("Fail");
  }
  ISupportSNMP& device = *record->device;
  device.SetIsManagedDevice(ChildBool(settings, "snmpIsManagedDevice"));
  device.SetEnabledSetting(ChildBool(settings, "snmpEnabledSetting"));
  device.SetCommunityReadSetting(ChildText(settings, "snmpCommunityReadSetting"));
  device.SetCommunityWriteSetting(ChildText(settings, "snmpCommunityWriteSetting"));
  device.SetSysContactSetting(ChildText(settings, "snmpSysContactSetting"));
  device.SetUsePrimaryContactSetting(ChildBool(settings, "snmpUsePrimaryContactSetting"));
  device.SetSysLocationSetting(ChildText(settings, "snmpSysLocationSetting"));
  device.SetUseProjectOwnerAddressSetting(ChildBool(settings, "snmpUseProjectOwnerAddressSetting"));
  device.SetSysNameSetting(ChildText(settings, "snmpSysNameSetting"));
  device.SetUseRoomDeviceSetting(ChildBool(settings, "snmpUseRoomDeviceSetting"));
  device.ClearTrapTargetSetting();
  const XmlElement* const targets = Child(settings, "snmpTrapTargets");
  if (targets != nullptr) {
    for (const XmlElement& target : targets->children) {
      device.AddTrapTargetSetting(ChildText(target, "target"), ChildText(target, "community"), ChildText(target, "port"));
    }
  }
  device.SetIsConfigDirty(true);
  const int read = Read(*record);
  if (read != 0 && read != -9) {
    return Reply("ReadFail");
  }
  const int written = Write(*record);
  if (written != 0 && written != -9) {
    return Reply("WriteFail");
  }
  if (written == 0) {
    device.SetIsConfigDirty(false);
  }
  DmInvalidateState();
  Notify("DeviceChanged", deviceId);
  return Reply("Success");
}

h7::auto_com<H7XML::INode> ReferenceAgent::SetManaged(unsigned long deviceId, bool managed) {
  const RecordPointer record = Find(deviceId);
  if (!record) {
    return Reply("Fail");
  }
  record->device->SetIsManagedDevice(managed);
  DmInvalidateState();
  Notify(managed ? "ManagedDeviceAdded" : "ManagedDeviceDeleted", deviceId);
  return Reply("deviceId", std::to_string(deviceId));
}

h7::auto_com<H7XML::INode> ReferenceAgent::Act(unsigned long deviceId, int (ISupportSNMP::*action)()) {
  const RecordPointer record = Find(deviceId);
  if (!record || (record->device->*action)() != 0) {
    return Reply("Fail");
  }
  return Reply("Success");
}

int ReferenceAgent::Read(Record& record) {
  const int status = record.device->CopyFrom("/etc/snmp/snmpd.conf.local", record.config);
  if (status != 0) {
    return status;
  }
  Traps traps;
  for (const std::string& line : section_models::LinesInside(record.config)) {
    FillLine(record, line, traps);
  }
  if (!traps.targets.empty()) {
    record.device->SetTrapTargetsSetting(traps.targets);
  }
  return 0;
}

// Reads each line as if it stood alone in a section, so that the device gets the same questions in the same order.
void ReferenceAgent::FillLine(Record& record, const std::string& line, Traps& traps) {
  ISupportSNMP& device = *record.device;
  section_models::Device read;
  read.agentXTimeout = record.agentXTimeout;
  section_models::Fill("Halvoren Section Start\n" + line, read);
  const auto has = [&](const char* word) { return line.find(word) != std::string::npos; };
  if (has("rocommunity")) {
    if (!device.GetWasCommunityReadSettingErased() && device.GetCommunityReadSetting().empty()) {
      device.SetCommunityReadSetting(read.communityRead.value);
    }
  } else if (has("rwcommunity")) {
    if (!device.GetWasCommunityWriteSettingErased() && device.GetCommunityWriteSetting().empty()) {
      device.SetCommunityWriteSetting(read.communityWrite.value);
    }
  } else if (has("agentXTimeout")) {
    record.agentXTimeout = read.agentXTimeout;
  } else if (has("agentXRetries")) {
    // The value is read but not kept.
  } else if (has("sysContact")) {
    if (!device.GetWasSysContactSettingErased() && device.GetSysContactSetting().empty()) {
      device.SetSysContactSetting(read.sysContact.value);
    }
  } else if (has("sysLocation")) {
    if (!device.GetWasSysLocationSettingErased() && device.GetSysLocationSetting().empty()) {
      device.SetSysLocationSetting(read.sysLocation.value);
    }
  } else if (has("sysName")) {
    if (!device.GetWasSysNameSettingErased() && device.GetSysNameSetting().empty()) {
      device.SetSysNameSetting(read.sysName.value);
    }
  } else if (has("trap2sink")) {
    if (!traps.wanted) {
      traps.wanted = !device.GetWasTrapTargetsSettingErased() && device.GetTrapTargetsSetting().empty();
    }
    if (*traps.wanted) {
      traps.targets.push_back(read.traps.at(0));
    }
  }
}

int ReferenceAgent::Write(Record& record) {
  ISupportSNMP& device = *record.device;
  SectionValues values;
  values.time = m_clock.Ask();
  values.communityRead = device.GetCommunityReadSetting();
  values.communityWrite = device.GetCommunityWriteSetting();
  values.agentXTimeout = record.agentXTimeout;
  values.agentXRetries = record.agentXRetries;
  values.sysContact = device.GetSysContactSetting();
  values.sysLocation = device.GetSysLocationSetting();
  values.sysName = device.GetSysNameSetting();
  values.trapTargets = device.GetTrapTargetsSetting();
  record.config = section_models::Merge(Section(values), record.config);
  return device.CopyTo("/etc/snmp/snmpd.conf.local", record.config);
}

void ReferenceAgent::BuildList(Variables& variables, bool user) {
  variables.clear();
  std::string xml;
  m_variableManager->ListVariables(xml, user);
  XmlElement list;
  try {
    list = devhost::ReadXml(xml);
  } catch (const devhost::XmlError&) {
    return;
  }
  for (const XmlElement& variable : list.children) {
    if (NamedNumber(variable, "hidden") == 0) {
      Add(variables, Key(NamedNumber(variable, "deviceid"), NamedNumber(variable, "variableid")));
    }
  }
}

void ReferenceAgent::Add(Variables& variables, const Key& key) {
  if (variables.count(key) == 0) {
    IVariable* const variable = m_variableManager->FindVariable(key.first, key.second);
    variables[key] = variable;
  }
}

}  // namespace fuzz
