#ifndef DEVICE_SNMP_DEVICE_H
#define DEVICE_SNMP_DEVICE_H

#include <string>
#include <vector>

#include "device/TrapTarget.h"
#include "host/INode.h"
#include "host/auto_com.h"

class ISupportSNMP;

// The agent's record of one SNMP-capable device: a thin layer over the device's `ISupportSNMP`.
//
// Only the device holds its settings. Every operation below the heading "Passed on" calls the operation of the same name
// (host/ISupportSNMP.h describes each) and passes arguments, result and exceptions through unchanged. The record keeps four
// things of its own: the id, the two AgentX values as text, and the text of the device's snmpd.conf while it is being read
// or written.
//
// The record does not own the device, which is never null. Construction and destruction do not call it. Records are shared:
// the registry holds one reference, and every operation that works on a device holds another. So a removed record lives
// until its last user is done.
class SNMPDevice {
 public:
  SNMPDevice(unsigned long deviceId, ISupportSNMP* device);
  SNMPDevice(const SNMPDevice&) = delete;
  SNMPDevice& operator=(const SNMPDevice&) = delete;

  unsigned long GetDeviceId() const { return m_deviceId; }

  // Kept in the record.
  // AgentX time-out in seconds and number of retries, as text: "6" and "2" at first. A file changes only the time-out.
  const std::string& GetAgentXTimeout() const { return m_agentXTimeout; }
  void SetAgentXTimeout(std::string timeout);
  const std::string& GetAgentXRetries() const { return m_agentXRetries; }
  // Changes nothing: the retries stay as they are at first. This is kept on purpose, because files in the field rely on the
  // value that is written.
  void SetAgentXRetries(std::string retries);
  // The whole text of snmpd.conf. It is meaningful from a CopyFrom until it has been read, and from the writing of a new
  // section until the CopyTo that follows. The reference is valid until the next SetConfig or CopyFrom.
  const std::string& GetConfig() const { return m_config; }
  void SetConfig(std::string config);

  // `CopyFrom` fills the record's text with the device's current snmpd.conf; `CopyTo` installs the record's text as the
  // device's snmpd.conf. Both return the device's status, 0 for success.
  int CopyFrom(const std::string& path);
  int CopyTo(const std::string& path);

  // Asks the device for its version, and returns whether the device says that the agent can manage it.
  bool GetIsValidVersion();

  // Makes the device settings element of this device (docs/device-settings.md). Never an empty handle.
  h7::auto_com<H7XML::INode> ToXml();

  // Passed on.
  bool GetIsManagedDevice();
  void SetIsManagedDevice(bool managed);
  bool GetIsConfigDirty();
  void SetIsConfigDirty(bool dirty);
  void SetEnabledSetting(bool enabled);
  std::string GetCommunityReadSetting();
  void SetCommunityReadSetting(std::string community);
  bool GetWasCommunityReadSettingErased();
  std::string GetCommunityWriteSetting();
  void SetCommunityWriteSetting(std::string community);
  bool GetWasCommunityWriteSettingErased();
  std::string GetSysContactSetting();
  void SetSysContactSetting(std::string contact);
  bool GetWasSysContactSettingErased();
  void SetUsePrimaryContactSetting(bool use);
  std::string GetSysLocationSetting();
  void SetSysLocationSetting(std::string location);
  bool GetWasSysLocationSettingErased();
  void SetUseProjectOwnerAddressSetting(bool use);
  std::string GetSysNameSetting();
  void SetSysNameSetting(std::string name);
  bool GetWasSysNameSettingErased();
  void SetUseRoomDeviceSetting(bool use);
  std::vector<TrapTarget> GetTrapTargetsSetting();
  void SetTrapTargetsSetting(std::vector<TrapTarget> targets);
  void ClearTrapTargetSetting();
  void AddTrapTargetSetting(std::string target, std::string community, std::string port);
  bool GetWasTrapTargetsSettingErased();
  int RebootController();
  int StopMasterAgent();
  int StartMasterAgent();

 private:
  friend struct SNMPDeviceTestAccess;

  ISupportSNMP* m_device;
  unsigned long m_deviceId;
  std::string m_agentXTimeout;
  std::string m_agentXRetries;
  std::string m_config;
};

#endif
