// A device driver that uses nothing but the headers of host/ and those of the agent: its file is in memory.

#include <string>
#include <vector>

#include "agent/ISNMPConfigurationAgent.h"
#include "device/TrapTarget.h"
#include "host/H7BaseDriver.h"
#include "host/IDriver.h"
#include "host/IInstanceManager.h"
#include "host/ISupportSNMP.h"

namespace {

struct Text {
  std::string value;
  bool erased = false;
  void Set(const std::string& text) {
    erased = text.empty() && (erased || !value.empty());
    value = text;
  }
};

class StraightDevice final : public H7BaseDriver, public IDriver, public ISupportSNMP {
 public:
  explicit StraightDevice(IInstanceManager& instances) : H7BaseDriver(instances, DriverMultiplicity_PerDevice) {}
  ~StraightDevice() override {
    if (ISNMPConfigurationAgent* const agent = Agent()) {
      agent->DeleteSNMPDevice(m_id);
    }
    GetInstanceManager().UnregisterQuery(ISupportSNMP_IID);
  }

  int Initialize(unsigned long driverId, H7XML::INode& config, H7XML::INode* persisted) override {
    H7BaseDriver::Initialize(driverId, config, persisted);
    m_id = driverId;
    GetInstanceManager().RegisterQuery(ISupportSNMP_IID, static_cast<ISupportSNMP*>(this));
    AgentAvailable();
    return 0;
  }
  h7::auto_com<H7XML::INode> GetPersistState(unsigned long) override { return {}; }
  void RegisterCommands() override {}

  bool GetIsManagedDevice() override { return m_managed; }
  void SetIsManagedDevice(bool managed) override { m_managed = managed; }
  bool GetIsConfigDirty() override { return m_dirty; }
  void SetIsConfigDirty(bool dirty) override { m_dirty = dirty; }
  bool GetEnabledSetting() override { return m_enabled; }
  void SetEnabledSetting(bool enabled) override { m_enabled = enabled; }
  std::string GetCommunityReadSetting() override { return m_read.value; }
  void SetCommunityReadSetting(std::string community) override { m_read.Set(community); }
  bool GetWasCommunityReadSettingErased() override { return m_read.erased; }
  std::string GetCommunityWriteSetting() override { return m_write.value; }
  void SetCommunityWriteSetting(std::string community) override { m_write.Set(community); }
  bool GetWasCommunityWriteSettingErased() override { return m_write.erased; }
  std::string GetSysContactSetting() override { return m_contact.value; }
  void SetSysContactSetting(std::string contact) override { m_contact.Set(contact); }
  bool GetWasSysContactSettingErased() override { return m_contact.erased; }
  bool GetUsePrimaryContactSetting() override { return m_usePrimaryContact; }
  void SetUsePrimaryContactSetting(bool use) override { m_usePrimaryContact = use; }
  std::string GetSysLocationSetting() override { return m_location.value; }
  void SetSysLocationSetting(std::string location) override { m_location.Set(location); }
  bool GetWasSysLocationSettingErased() override { return m_location.erased; }
  bool GetUseProjectOwnerAddressSetting() override { return m_useProjectOwnerAddress; }
  void SetUseProjectOwnerAddressSetting(bool use) override { m_useProjectOwnerAddress = use; }
  std::string GetSysNameSetting() override { return m_name.value; }
  void SetSysNameSetting(std::string name) override { m_name.Set(name); }
  bool GetWasSysNameSettingErased() override { return m_name.erased; }
  bool GetUseRoomDeviceSetting() override { return m_useRoomDevice; }
  void SetUseRoomDeviceSetting(bool use) override { m_useRoomDevice = use; }
  std::vector<TrapTarget> GetTrapTargetsSetting() override { return m_targets; }
  void SetTrapTargetsSetting(std::vector<TrapTarget> targets) override { m_targets = targets; }
  void ClearTrapTargetSetting() override { m_targets.clear(); }
  void AddTrapTargetSetting(std::string target, std::string community, std::string port) override {
    m_targets.push_back(TrapTarget(target, community, port));
  }
  bool GetWasTrapTargetsSettingErased() override { return false; }

  void AgentAvailable() override {
    if (ISNMPConfigurationAgent* const agent = Agent()) {
      agent->AddSNMPDevice(m_id, this);
    }
  }
  int CopyFrom(const std::string&, std::string& config) override {
    config = m_file;
    return 0;
  }
  int CopyTo(const std::string&, const std::string& config) override {
    m_file = config;
    return 0;
  }
  int RebootController() override { return 0; }
  int StopMasterAgent() override { return 0; }
  int StartMasterAgent() override { return 0; }
  std::string GetSNMPVersion() override { return "1.0.0"; }
  bool IsSNMPVersionValid(const std::string&) override { return true; }

 private:
  ISNMPConfigurationAgent* Agent() const {
    return static_cast<ISNMPConfigurationAgent*>(GetInstanceManager().Query(ISNMPConfigurationAgent_IID));
  }

  unsigned long m_id = 0;
  bool m_managed = false, m_dirty = false, m_enabled = false;
  bool m_usePrimaryContact = false, m_useProjectOwnerAddress = false, m_useRoomDevice = false;
  Text m_read, m_write, m_contact, m_location, m_name;
  std::vector<TrapTarget> m_targets;
  std::string m_file;
};

IDriver* Create(IInstanceManager& instances) {
  return new StraightDevice(instances);
}

}  // namespace

extern "C" {

H7_HOST_API DriverCreationFunc GetCreationFunc() {
  return &Create;
}

H7_HOST_API extern const char* const versionString;
const char* const versionString = SNMP_DRIVER_VERSION;

}  // extern "C"
