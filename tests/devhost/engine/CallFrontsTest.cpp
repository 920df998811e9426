#include "devhost/engine/CallFronts.h"

#include <gmock/gmock.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "agent/ISNMPConfigurationAgent.h"
#include "devhost/engine/HostCore.h"
#include "tests/support/RecordingDevice.h"

namespace devhost {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testsupport::TrapText;

struct SilentObserver : HostObserver {
  void OnOccurrence(const Occurrence&) override {}
};

class AFront : public testing::Test {
 protected:
  SilentObserver m_observer;
  HostCore m_core{m_observer};
  Journal m_journal;
  testsupport::RecordingDevice m_device{7, m_journal};
  const std::shared_ptr<ISupportSNMP> m_front = MakeDeviceFront(m_core.calls, m_device);
};

// Everything that the interface can be asked, with an answer that is not the default one.
std::vector<std::string> Ask(ISupportSNMP& device) {
  using Device = ISupportSNMP;
  std::vector<std::string> answers;
  for (bool (Device::*getter)() :
       {&Device::GetIsManagedDevice, &Device::GetIsConfigDirty, &Device::GetEnabledSetting,
        &Device::GetWasCommunityReadSettingErased, &Device::GetWasCommunityWriteSettingErased,
        &Device::GetWasSysContactSettingErased, &Device::GetUsePrimaryContactSetting,
        &Device::GetWasSysLocationSettingErased, &Device::GetUseProjectOwnerAddressSetting,
        &Device::GetWasSysNameSettingErased, &Device::GetUseRoomDeviceSetting, &Device::GetWasTrapTargetsSettingErased}) {
    answers.push_back((device.*getter)() ? "true" : "false");
  }
  for (std::string (Device::*getter)() :
       {&Device::GetCommunityReadSetting, &Device::GetCommunityWriteSetting, &Device::GetSysContactSetting,
        &Device::GetSysLocationSetting, &Device::GetSysNameSetting, &Device::GetSNMPVersion}) {
    answers.push_back((device.*getter)());
  }
  answers.push_back(TrapText(device.GetTrapTargetsSetting()));
  answers.push_back(device.IsSNMPVersionValid("2.0") ? "valid" : "not valid");
  std::string text = "not filled";
  for (const int status : {device.CopyFrom("path", text), device.CopyTo("path", "new text"), device.RebootController(),
                           device.StopMasterAgent(), device.StartMasterAgent()}) {
    answers.push_back(std::to_string(status));
  }
  answers.push_back(text);
  return answers;
}

void Change(ISupportSNMP& device) {
  using Device = ISupportSNMP;
  for (void (Device::*setter)(bool) :
       {&Device::SetIsManagedDevice, &Device::SetIsConfigDirty, &Device::SetEnabledSetting,
        &Device::SetUsePrimaryContactSetting, &Device::SetUseProjectOwnerAddressSetting, &Device::SetUseRoomDeviceSetting}) {
    (device.*setter)(true);
  }
  const std::string longText(100, 'x');
  int count = 0;
  for (void (Device::*setter)(std::string) :
       {&Device::SetCommunityReadSetting, &Device::SetCommunityWriteSetting, &Device::SetSysContactSetting,
        &Device::SetSysLocationSetting, &Device::SetSysNameSetting}) {
    (device.*setter)(longText + std::to_string(++count));
  }
  device.SetTrapTargetsSetting({TrapTarget("10.0.0.5", "public", "162")});
  device.AgentAvailable();
}

TEST_F(AFront, PassesEveryOperationOnAndItsResultBack) {
  m_device.file = "sysName box\n";
  m_device.version = "1.5";
  int status = 0;
  for (testsupport::Statuses* const statuses : {&m_device.copyTo, &m_device.reboot, &m_device.stop, &m_device.start}) {
    statuses->always = --status;
  }
  for (bool* const flag : {&m_device.communityReadErased, &m_device.sysContactErased, &m_device.sysNameErased}) {
    *flag = true;
  }
  Change(m_device);
  const std::vector<std::string> answers = Ask(m_device);
  const std::vector<std::string> calls = m_journal.Take();
  ASSERT_EQ(calls.size(), 38U);

  Change(*m_front);
  EXPECT_THAT(Ask(*m_front), ElementsAreArray(answers));
  EXPECT_THAT(m_journal.Take(), ElementsAreArray(calls));

  m_front->ClearTrapTargetSetting();
  m_front->AddTrapTargetSetting("10.0.0.5", "public", "162");
  EXPECT_THAT(m_journal.Take(), ElementsAre("7.ClearTrapTargetSetting", "7.AddTrapTargetSetting 10.0.0.5|public|162"));
}

TEST_F(AFront, GivesTheFileAsTheHostHasChangedIt) {
  m_device.file = "sysName box\n";
  m_core.calls.editCopies = [](unsigned long driverId, int status, std::string& config) {
    EXPECT_EQ(driverId, 0U) << "nobody's";
    config += "sysContact Ada\n";
    return status - 1;
  };
  std::string text;
  EXPECT_EQ(m_front->CopyFrom("path", text), -1);
  EXPECT_EQ(text, "sysName box\nsysContact Ada\n");
  EXPECT_EQ(m_device.file, "sysName box\n");
}

TEST_F(AFront, LetsAnExceptionPass) {
  m_journal.SetHook([](const std::string&) { throw std::out_of_range("not today"); });
  EXPECT_THROW(m_front->GetSysNameSetting(), std::out_of_range);
}

class Agent final : public ISNMPConfigurationAgent {
 public:
  void AddSNMPDevice(unsigned long deviceId, ISupportSNMP* device) override {
    calls.push_back("Add " + std::to_string(deviceId) + (device == nullptr ? " null" : ""));
  }
  void DeleteSNMPDevice(unsigned long deviceId) override { calls.push_back("Delete " + std::to_string(deviceId)); }
  bool SetDeviceState(unsigned long deviceId) override { return deviceId == 7; }

  std::vector<std::string> calls;
};

TEST_F(AFront, PassesTheOperationsOfAnAgentOn) {
  Agent agent;
  const std::shared_ptr<ISNMPConfigurationAgent> front = MakeAgentFront(m_core.calls, agent);
  front->AddSNMPDevice(7, &m_device);
  front->AddSNMPDevice(8, nullptr);
  front->DeleteSNMPDevice(7);
  EXPECT_THAT(agent.calls, ElementsAre("Add 7", "Add 8 null", "Delete 7"));
  EXPECT_TRUE(front->SetDeviceState(7));
  EXPECT_FALSE(front->SetDeviceState(8));
}

}  // namespace
}  // namespace devhost
