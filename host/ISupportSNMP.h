#ifndef HOST_ISUPPORT_SNMP_H
#define HOST_ISUPPORT_SNMP_H

#include <string>
#include <vector>

#include "host/HostApi.h"

class TrapTarget;

// What an SNMP-capable device driver offers to the SNMP configuration agent. Implemented by device drivers, published under
// `ISupportSNMP_IID`, called by the agent on the host's driver thread.
//
// The device is the single holder of its SNMP settings: the agent asks anew each time and keeps no copy. Texts and lists are
// passed by value. An implementation may call back into the agent from inside any of these operations, also to withdraw
// itself. A device that has withdrawn is not called again, other than to finish the operation under way, and with
// `AgentAvailable` as long as it is published; so one that withdraws itself stays alive until that operation has returned.
//
// "Was erased" flags: true when somebody deliberately emptied the setting on the device. The agent fills an empty setting
// from snmpd.conf only while its flag is false. Only the device sets and clears these flags.
//
// An operation may throw; the exception goes through the agent to whoever called it.
//
// The 40 slots and their order are a binary contract; there is no virtual destructor, and nobody deletes through this
// interface. `TrapTarget` is declared in device/TrapTarget.h.
class H7_HOST_API ISupportSNMP {
 public:
  // The agent manages this device's snmpd.conf.
  /*  1 */ virtual bool GetIsManagedDevice() = 0;
  /*  2 */ virtual void SetIsManagedDevice(bool managed) = 0;
  // Settings were changed and are not yet written to snmpd.conf.
  /*  3 */ virtual bool GetIsConfigDirty() = 0;
  /*  4 */ virtual void SetIsConfigDirty(bool dirty) = 0;
  // SNMP is switched on.
  /*  5 */ virtual bool GetEnabledSetting() = 0;
  /*  6 */ virtual void SetEnabledSetting(bool enabled) = 0;

  // Read-only and read-write community.
  /*  7 */ virtual std::string GetCommunityReadSetting() = 0;
  /*  8 */ virtual void SetCommunityReadSetting(std::string community) = 0;
  /*  9 */ virtual bool GetWasCommunityReadSettingErased() = 0;
  /* 10 */ virtual std::string GetCommunityWriteSetting() = 0;
  /* 11 */ virtual void SetCommunityWriteSetting(std::string community) = 0;
  /* 12 */ virtual bool GetWasCommunityWriteSettingErased() = 0;

  // sysContact, and the switch to take it from the project's primary contact.
  /* 13 */ virtual std::string GetSysContactSetting() = 0;
  /* 14 */ virtual void SetSysContactSetting(std::string contact) = 0;
  /* 15 */ virtual bool GetWasSysContactSettingErased() = 0;
  /* 16 */ virtual bool GetUsePrimaryContactSetting() = 0;
  /* 17 */ virtual void SetUsePrimaryContactSetting(bool use) = 0;

  // sysLocation, and the switch to take it from the project owner's address.
  /* 18 */ virtual std::string GetSysLocationSetting() = 0;
  /* 19 */ virtual void SetSysLocationSetting(std::string location) = 0;
  /* 20 */ virtual bool GetWasSysLocationSettingErased() = 0;
  /* 21 */ virtual bool GetUseProjectOwnerAddressSetting() = 0;
  /* 22 */ virtual void SetUseProjectOwnerAddressSetting(bool use) = 0;

  // sysName, and the switch to take it from the room device.
  /* 23 */ virtual std::string GetSysNameSetting() = 0;
  /* 24 */ virtual void SetSysNameSetting(std::string name) = 0;
  /* 25 */ virtual bool GetWasSysNameSettingErased() = 0;
  /* 26 */ virtual bool GetUseRoomDeviceSetting() = 0;
  /* 27 */ virtual void SetUseRoomDeviceSetting(bool use) = 0;

  // Trap destinations, in order.
  /* 28 */ virtual std::vector<TrapTarget> GetTrapTargetsSetting() = 0;
  /* 29 */ virtual void SetTrapTargetsSetting(std::vector<TrapTarget> targets) = 0;
  /* 30 */ virtual void ClearTrapTargetSetting() = 0;
  /* 31 */ virtual void AddTrapTargetSetting(std::string target, std::string community, std::string port) = 0;
  /* 32 */ virtual bool GetWasTrapTargetsSettingErased() = 0;

  // The agent is there: time to look `ISNMPConfigurationAgent` up and to announce the device with `AddSNMPDevice`. Called on
  // every published device each time the agent is initialised.
  /* 33 */ virtual void AgentAvailable() = 0;

  // Fills `config` with the whole text of the device's snmpd.conf / installs `config` as the device's snmpd.conf. `path` is
  // the agent's name for the working copy, always the same text. 0 is success, anything else a failure of the device's own
  // numbering; a change of settings tolerates -9, for a device that cannot be reached now and keeps the text for later, say.
  // `config` keeps or loses its text as the device sees fit when `CopyFrom` fails. It is valid for the call, and it is the
  // agent's own text: a call back into the agent from here may change it.
  /* 34 */ virtual int CopyFrom(const std::string& path, std::string& config) = 0;
  /* 35 */ virtual int CopyTo(const std::string& path, const std::string& config) = 0;

  // Actions on the controller behind the device; 0 is success. They need not wait for the controller to come back.
  /* 36 */ virtual int RebootController() = 0;
  /* 37 */ virtual int StopMasterAgent() = 0;
  /* 38 */ virtual int StartMasterAgent() = 0;

  // The version of the device's SNMP support, in the device's own wording / whether the agent can manage a device of that
  // version: the device's own verdict.
  /* 39 */ virtual std::string GetSNMPVersion() = 0;
  /* 40 */ virtual bool IsSNMPVersionValid(const std::string& version) = 0;

 protected:
  ~ISupportSNMP() = default;
};

// The identifier under which a device driver publishes its `ISupportSNMP`.
#define ISupportSNMP_IID "E49A0C76-1D3F-4B82-9E17-60A5D4B8C23D"

#endif
