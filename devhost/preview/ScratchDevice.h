#ifndef DEVHOST_PREVIEW_SCRATCH_DEVICE_H
#define DEVHOST_PREVIEW_SCRATCH_DEVICE_H

#include <string>
#include <vector>

#include "devhost/preview/DeviceAnswers.h"
#include "host/H7BaseAgentDriver.h"
#include "host/ISupportSNMP.h"

namespace devhost {

// A device that consists of a device's answers. It keeps what setters and CopyTo bring there, and has no controller: actions
// fail. It sets erased flags as the device drivers of this project do; another driver may set them otherwise.
class ScratchDevice : public H7BaseAgentDriver, public ISupportSNMP {
 public:
  // `content` outlives the driver, and holds the new settings and the new file in the end.
  ScratchDevice(IInstanceManager& instanceManager, DeviceAnswers& content);
  ~ScratchDevice() override;

  // Announces the device to an agent that is there, under the driver's id.
  int Initialize(unsigned long driverId, H7XML::INode& config, H7XML::INode* persisted) override;

  bool GetIsManagedDevice() override { return m_content.isManaged; }
  void SetIsManagedDevice(bool managed) override { m_content.isManaged = managed; }
  bool GetIsConfigDirty() override { return m_content.isConfigDirty; }
  void SetIsConfigDirty(bool dirty) override { m_content.isConfigDirty = dirty; }
  bool GetEnabledSetting() override { return m_content.isEnabled; }
  void SetEnabledSetting(bool enabled) override { m_content.isEnabled = enabled; }
  std::string GetCommunityReadSetting() override { return m_content.communityRead.value; }
  void SetCommunityReadSetting(std::string community) override { m_content.communityRead.Set(std::move(community)); }
  bool GetWasCommunityReadSettingErased() override { return m_content.communityRead.wasErased; }
  std::string GetCommunityWriteSetting() override { return m_content.communityWrite.value; }
  void SetCommunityWriteSetting(std::string community) override { m_content.communityWrite.Set(std::move(community)); }
  bool GetWasCommunityWriteSettingErased() override { return m_content.communityWrite.wasErased; }
  std::string GetSysContactSetting() override { return m_content.sysContact.value; }
  void SetSysContactSetting(std::string contact) override { m_content.sysContact.Set(std::move(contact)); }
  bool GetWasSysContactSettingErased() override { return m_content.sysContact.wasErased; }
  bool GetUsePrimaryContactSetting() override { return m_content.usesPrimaryContact; }
  void SetUsePrimaryContactSetting(bool use) override { m_content.usesPrimaryContact = use; }
  std::string GetSysLocationSetting() override { return m_content.sysLocation.value; }
  void SetSysLocationSetting(std::string location) override { m_content.sysLocation.Set(std::move(location)); }
  bool GetWasSysLocationSettingErased() override { return m_content.sysLocation.wasErased; }
  bool GetUseProjectOwnerAddressSetting() override { return m_content.usesProjectOwnerAddress; }
  void SetUseProjectOwnerAddressSetting(bool use) override { m_content.usesProjectOwnerAddress = use; }
  std::string GetSysNameSetting() override { return m_content.sysName.value; }
  void SetSysNameSetting(std::string name) override { m_content.sysName.Set(std::move(name)); }
  bool GetWasSysNameSettingErased() override { return m_content.sysName.wasErased; }
  bool GetUseRoomDeviceSetting() override { return m_content.usesRoomDevice; }
  void SetUseRoomDeviceSetting(bool use) override { m_content.usesRoomDevice = use; }
  std::vector<TrapTarget> GetTrapTargetsSetting() override { return m_content.trapTargets.value; }
  void SetTrapTargetsSetting(std::vector<TrapTarget> targets) override { m_content.trapTargets.Set(std::move(targets)); }
  void ClearTrapTargetSetting() override { m_content.trapTargets.Set({}); }
  void AddTrapTargetSetting(std::string target, std::string community, std::string port) override;
  bool GetWasTrapTargetsSettingErased() override { return m_content.trapTargets.wasErased; }
  void AgentAvailable() override;
  // Both answer as the device did when it was asked for its file.
  int CopyFrom(const std::string& path, std::string& config) override;
  int CopyTo(const std::string& path, const std::string& config) override;
  int RebootController() override { return kNoController; }
  int StopMasterAgent() override { return kNoController; }
  int StartMasterAgent() override { return kNoController; }
  std::string GetSNMPVersion() override { return m_content.version; }
  bool IsSNMPVersionValid(const std::string& version) override;

 private:
  static constexpr int kNoController = -1;

  DeviceAnswers& m_content;
  unsigned long m_driverId = 0;
};

}  // namespace devhost

#endif
