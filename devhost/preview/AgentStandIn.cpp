#include "devhost/preview/AgentStandIn.h"

#include <exception>
#include <string>

#include "host/H7XML.h"
#include "host/IDriverManager.h"
#include "host/IInstanceManager.h"
#include "host/ISupportSNMP.h"
#include "host/UICmdDispatcher.h"

namespace devhost {

namespace {

// The agent's name for the file; see config/ManagedSection.h.
constexpr char kWorkingPath[] = "/etc/snmp/snmpd.conf.local";

// Asks one device for its answers, and remembers which operation was called last.
class Questions {
 public:
  explicit Questions(DeviceAnswers& answers) : m_answers(answers) {}

  const std::string& Operation() const { return m_operation; }

  // The file first, because a driver may learn its settings from it.
  void AskAll(ISupportSNMP& device) {
    m_device = &device;
    try {
      AskVersionAndFile();
    } catch (...) {
      AskTextsToHideThem();
      throw;
    }
    AskTexts();
    AskSwitches();
  }

 private:
  using D = ISupportSNMP;

  template <class Answer>
  void Ask(const std::string& operation, Answer (D::*getter)(), Answer& answer) {
    m_operation = operation;
    answer = (m_device->*getter)();
  }

  template <class Value>
  void AskErasable(const std::string& name, Value (D::*getter)(), bool (D::*wasErased)(), ErasableSetting<Value>& answer) {
    Ask("Get" + name + "Setting", getter, answer.value);
    Ask("GetWas" + name + "SettingErased", wasErased, answer.wasErased);
  }

  void AskVersionAndFile() {
    Ask("GetSNMPVersion", &D::GetSNMPVersion, m_answers.version);
    m_operation = "IsSNMPVersionValid";
    m_answers.isVersionValid = m_device->IsSNMPVersionValid(m_answers.version);
    m_operation = "CopyFrom";
    m_answers.copyStatus = m_device->CopyFrom(kWorkingPath, m_answers.file);
  }

  void AskTexts() {
    AskErasable("CommunityRead", &D::GetCommunityReadSetting, &D::GetWasCommunityReadSettingErased, m_answers.communityRead);
    AskErasable("CommunityWrite", &D::GetCommunityWriteSetting, &D::GetWasCommunityWriteSettingErased,
                m_answers.communityWrite);
    AskErasable("SysContact", &D::GetSysContactSetting, &D::GetWasSysContactSettingErased, m_answers.sysContact);
    AskErasable("SysLocation", &D::GetSysLocationSetting, &D::GetWasSysLocationSettingErased, m_answers.sysLocation);
    AskErasable("SysName", &D::GetSysNameSetting, &D::GetWasSysNameSettingErased, m_answers.sysName);
    AskErasable("TrapTargets", &D::GetTrapTargetsSetting, &D::GetWasTrapTargetsSettingErased, m_answers.trapTargets);
  }

  // What the driver has said may quote them.
  void AskTextsToHideThem() {
    const std::string failed = m_operation;
    try {
      AskTexts();
    } catch (...) {
      // The first failure is the one to report.
    }
    m_operation = failed;
  }

  void AskSwitches() {
    Ask("GetIsManagedDevice", &D::GetIsManagedDevice, m_answers.isManaged);
    Ask("GetIsConfigDirty", &D::GetIsConfigDirty, m_answers.isConfigDirty);
    Ask("GetEnabledSetting", &D::GetEnabledSetting, m_answers.isEnabled);
    Ask("GetUsePrimaryContactSetting", &D::GetUsePrimaryContactSetting, m_answers.usesPrimaryContact);
    Ask("GetUseProjectOwnerAddressSetting", &D::GetUseProjectOwnerAddressSetting, m_answers.usesProjectOwnerAddress);
    Ask("GetUseRoomDeviceSetting", &D::GetUseRoomDeviceSetting, m_answers.usesRoomDevice);
  }

  DeviceAnswers& m_answers;
  ISupportSNMP* m_device = nullptr;
  std::string m_operation = "AgentAvailable";
};

}  // namespace

AgentStandIn::AgentStandIn(IInstanceManager& instanceManager, unsigned long deviceId, DeviceAnswers& answers)
    : H7BaseAgentDriver(instanceManager, DriverMultiplicity_Single), m_deviceId(deviceId), m_answers(answers) {}

AgentStandIn::~AgentStandIn() {
  GetInstanceManager().UnregisterQuery(ISNMPConfigurationAgent_IID);
}

int AgentStandIn::Initialize(unsigned long driverId, H7XML::INode& config, H7XML::INode* persisted) {
  H7BaseAgentDriver::Initialize(driverId, config, persisted);
  GetInstanceManager().RegisterQuery(ISNMPConfigurationAgent_IID, static_cast<ISNMPConfigurationAgent*>(this));
  return 0;
}

void AgentStandIn::RegisterCommands() {
  GetUICmdDispatcher().RegisterUICmd(kCommand, [this](const ICmdMessage& message) { return OnAsk(message); });
}

void AgentStandIn::AddSNMPDevice(unsigned long deviceId, ISupportSNMP* device) {
  if (device != nullptr) {
    m_devices.emplace(deviceId, device);
  }
}

void AgentStandIn::DeleteSNMPDevice(unsigned long deviceId) {
  m_devices.erase(deviceId);
}

bool AgentStandIn::SetDeviceState(unsigned long) {
  return false;
}

// As an agent that starts after the devices does: it tells all devices that it is there.
ISupportSNMP* AgentStandIn::FindDevice() {
  if (m_devices.count(m_deviceId) == 0) {
    for (ISupportSNMP* const device : GetDriverManager().ListDrivers<ISupportSNMP>(0, ISupportSNMP_IID)) {
      device->AgentAvailable();
    }
  }
  const auto found = m_devices.find(m_deviceId);
  return found == m_devices.end() ? nullptr : found->second;
}

h7::auto_com<H7XML::INode> AgentStandIn::OnAsk(const ICmdMessage&) {
  Questions questions(m_answers);
  try {
    ISupportSNMP* const device = FindDevice();
    if (device != nullptr) {
      questions.AskAll(*device);
    } else {
      m_answers.problem = "does not announce itself to the agent, so the agent cannot change its settings";
    }
  } catch (const std::exception& error) {
    m_answers.problem = "an exception came out of " + questions.Operation() + ": " + error.what();
  } catch (...) {
    m_answers.problem = "something that is not an exception came out of " + questions.Operation();
  }
  return H7XML::CreateXmlNode("Asked", "");
}

}  // namespace devhost
