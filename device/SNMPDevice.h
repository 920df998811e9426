#ifndef DEVICE_SNMP_DEVICE_H
#define DEVICE_SNMP_DEVICE_H

#include <string>
#include <vector>

#include "device/TrapTarget.h"
#include "host/INode.h"
#include "host/auto_com.h"

class ISupportSNMP;

// The agent's record of one SNMP-capable device: a thin facade in front of the device's `ISupportSNMP`.
//
// The device stays the only holder of its settings: every operation below the heading "Passed on" is one call to the
// operation of the same name (host/ISupportSNMP.h says what each means), with arguments, result and exceptions passed
// through unchanged. The record keeps four things of its own: the id, the two AgentX values as text, and the text of the
// device's snmpd.conf while it is being read or written.
//
// The device is not owned, never null, and is not touched by construction or destruction. Records are shared: the registry
// holds one reference, every operation that works on a device holds another, so a record outlives its removal from the
// registry while it is in use.
class SNMPDevice {
 public:
  SNMPDevice(unsigned long deviceId, ISupportSNMP* device);
  SNMPDevice(const SNMPDevice&) = delete;
  SNMPDevice& operator=(const SNMPDevice&) = delete;

  unsigned long GetDeviceId() const { return m_deviceId; }

  // Kept in the record.
  // AgentX time-out in seconds and number of retries, as text: "6" and "2" at first. A file changes the time-out only.
  const std::string& GetAgentXTimeout() const { return m_agentXTimeout; }
  void SetAgentXTimeout(std::string timeout);
  const std::string& GetAgentXRetries() const { return m_agentXRetries; }
  // Leaves the record as it is: the retries stay what the record was made with. Kept on purpose, files in the field rely on
  // the value that is written.
  void SetAgentXRetries(std::string retries);
  // The whole text of snmpd.conf. Meaningful from a CopyFrom to the reading that follows, and from the writing of a new
  // section to the CopyTo that follows. The reference holds until the next SetConfig or CopyFrom.
  const std::string& GetConfig() const { return m_config; }
  void SetConfig(std::string config);

  // Fills the record's text with the device's current snmpd.conf / installs the record's text as the device's snmpd.conf.
  // Returns the device's status, 0 for success.
  int CopyFrom(const std::string& path);
  int CopyTo(const std::string& path);

  // Asks the device for its version text and returns the device's own verdict on it.
  bool GetIsValidVersion();

  // The device settings element of this device, freshly made (docs/device-settings.md). Never an empty handle.
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
