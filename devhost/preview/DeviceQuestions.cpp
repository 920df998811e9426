#include "devhost/preview/DeviceQuestions.h"

#include <exception>

#include "host/ISupportSNMP.h"

namespace devhost {

namespace {

// The agent's name for the file; see config/ManagedSection.h.
constexpr char kWorkingPath[] = "/etc/snmp/snmpd.conf.local";

// Asks one device for its answers, and remembers which operation was called last.
class Asker {
 public:
  Asker(ISupportSNMP& device, DeviceAnswers& answers) : m_device(device), m_answers(answers) {}

  const std::string& Operation() const { return m_operation; }

  // The file first, because a driver may learn its settings from it.
  void AskAll() {
    try {
      AskVersion();
      AskFile();
    } catch (...) {
      AskTextsToHideThem();
      throw;
    }
    AskTexts();
    AskSwitches();
  }
  void AskSettings() {
    AskVersion();
    AskTexts();
    AskSwitches();
  }
  void AskFile() {
    m_operation = "CopyFrom";
    m_answers.copyStatus = m_device.CopyFrom(kWorkingPath, m_answers.file);
  }

 private:
  using D = ISupportSNMP;

  template <class Answer>
  void Ask(const std::string& operation, Answer (D::*getter)(), Answer& answer) {
    m_operation = operation;
    answer = (m_device.*getter)();
  }

  template <class Value>
  void AskErasable(const std::string& name, Value (D::*getter)(), bool (D::*wasErased)(), ErasableSetting<Value>& answer) {
    Ask("Get" + name + "Setting", getter, answer.value);
    Ask("GetWas" + name + "SettingErased", wasErased, answer.wasErased);
  }

  void AskVersion() {
    Ask("GetSNMPVersion", &D::GetSNMPVersion, m_answers.version);
    m_operation = "IsSNMPVersionValid";
    m_answers.isVersionValid = m_device.IsSNMPVersionValid(m_answers.version);
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

  ISupportSNMP& m_device;
  DeviceAnswers& m_answers;
  std::string m_operation;
};

}  // namespace

void AskDevice(ISupportSNMP& device, Questions questions, DeviceAnswers& answers) {
  Asker asker(device, answers);
  try {
    if (questions == Questions::Everything) {
      asker.AskAll();
    } else if (questions == Questions::Settings) {
      asker.AskSettings();
    } else {
      asker.AskFile();
    }
  } catch (...) {
    answers.problem = WhatCameOutOf(asker.Operation());
  }
}

std::string WhatCameOutOf(const std::string& operation) {
  try {
    throw;
  } catch (const std::exception& error) {
    return "an exception came out of " + operation + ": " + error.what();
  } catch (...) {
    return "something that is not an exception came out of " + operation;
  }
}

}  // namespace devhost
