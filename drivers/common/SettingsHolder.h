#ifndef DRIVERS_COMMON_SETTINGS_HOLDER_H
#define DRIVERS_COMMON_SETTINGS_HOLDER_H

#include <string>
#include <utility>
#include <vector>

#include "drivers/common/SnmpSettings.h"
#include "host/ISupportSNMP.h"

namespace drivers {

// The settings of an SNMP-capable device: the first 32 operations of `ISupportSNMP`, on one `SnmpSettings`. It needs no
// host.
class SettingsHolder : public ISupportSNMP {
 public:
  bool GetIsManagedDevice() final { return m_settings.managed; }
  void SetIsManagedDevice(bool managed) final { SetSwitch(m_settings.managed, managed); }
  bool GetIsConfigDirty() final { return m_settings.configDirty; }
  void SetIsConfigDirty(bool dirty) final { SetSwitch(m_settings.configDirty, dirty); }
  bool GetEnabledSetting() final { return m_settings.enabled; }
  void SetEnabledSetting(bool enabled) final { SetSwitch(m_settings.enabled, enabled); }

  std::string GetCommunityReadSetting() final { return m_settings.communityRead.Get(); }
  void SetCommunityReadSetting(std::string community) final { Note(m_settings.communityRead.Set(std::move(community))); }
  bool GetWasCommunityReadSettingErased() final { return m_settings.communityRead.WasErased(); }
  std::string GetCommunityWriteSetting() final { return m_settings.communityWrite.Get(); }
  void SetCommunityWriteSetting(std::string community) final { Note(m_settings.communityWrite.Set(std::move(community))); }
  bool GetWasCommunityWriteSettingErased() final { return m_settings.communityWrite.WasErased(); }

  std::string GetSysContactSetting() final { return m_settings.sysContact.Get(); }
  void SetSysContactSetting(std::string contact) final { Note(m_settings.sysContact.Set(std::move(contact))); }
  bool GetWasSysContactSettingErased() final { return m_settings.sysContact.WasErased(); }
  bool GetUsePrimaryContactSetting() final { return m_settings.usePrimaryContact; }
  void SetUsePrimaryContactSetting(bool use) final { SetSwitch(m_settings.usePrimaryContact, use); }

  std::string GetSysLocationSetting() final { return m_settings.sysLocation.Get(); }
  void SetSysLocationSetting(std::string location) final { Note(m_settings.sysLocation.Set(std::move(location))); }
  bool GetWasSysLocationSettingErased() final { return m_settings.sysLocation.WasErased(); }
  bool GetUseProjectOwnerAddressSetting() final { return m_settings.useProjectOwnerAddress; }
  void SetUseProjectOwnerAddressSetting(bool use) final { SetSwitch(m_settings.useProjectOwnerAddress, use); }

  std::string GetSysNameSetting() final { return m_settings.sysName.Get(); }
  void SetSysNameSetting(std::string name) final { Note(m_settings.sysName.Set(std::move(name))); }
  bool GetWasSysNameSettingErased() final { return m_settings.sysName.WasErased(); }
  bool GetUseRoomDeviceSetting() final { return m_settings.useRoomDevice; }
  void SetUseRoomDeviceSetting(bool use) final { SetSwitch(m_settings.useRoomDevice, use); }

  std::vector<TrapTarget> GetTrapTargetsSetting() final { return m_settings.trapTargets.Get(); }
  void SetTrapTargetsSetting(std::vector<TrapTarget> targets) final { Note(m_settings.trapTargets.Set(std::move(targets))); }
  // Clearing an empty list changes nothing: every request of the tool begins with it.
  void ClearTrapTargetSetting() final { Note(m_settings.trapTargets.Set({})); }
  void AddTrapTargetSetting(std::string target, std::string community, std::string port) final {
    m_settings.trapTargets.Add(TrapTarget(target, community, port));
    SettingsChanged();
  }
  bool GetWasTrapTargetsSettingErased() final { return m_settings.trapTargets.WasErased(); }

 protected:
  ~SettingsHolder() = default;

  SnmpSettings& Settings() { return m_settings; }
  const SnmpSettings& Settings() const { return m_settings; }

  // Called after a setting, or a flag of one, has changed through the operations above.
  virtual void SettingsChanged() {}

 private:
  void Note(bool changed) {
    if (changed) {
      SettingsChanged();
    }
  }
  void SetSwitch(bool& which, bool value) { Note(std::exchange(which, value) != value); }

  SnmpSettings m_settings;
};

}  // namespace drivers

#endif
