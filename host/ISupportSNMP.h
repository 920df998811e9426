#ifndef HOST_ISUPPORT_SNMP_H
#define HOST_ISUPPORT_SNMP_H

#include <string>
#include <vector>

#include "host/HostApi.h"

class TrapTarget;

// What an SNMP-capable device driver offers to the SNMP configuration agent. Implemented by device drivers, published under
// `ISupportSNMP_IID`, called by the agent on the host's driver thread.
//
// Only the device holds its SNMP settings: the agent asks each time and keeps no copy. Texts and lists are passed by value.
//
// An implementation may call back into the agent from inside any of these operations, even to withdraw itself. The agent
// calls a device that has withdrawn only to finish the current operation, and with `AgentAvailable` as long as the device is
// published. So a device that withdraws itself must stay alive until that operation has returned.
//
// "Was erased" flags are true when somebody has emptied the setting on the device on purpose. The agent fills an empty
// setting from snmpd.conf only while its flag is false. Only the device sets and clears these flags.
//
// An operation may throw; the exception passes through the agent to its caller.
//
// The 40 slots and their order are a binary contract. The interface has no virtual destructor, and nobody deletes through
// it. device/TrapTarget.h declares `TrapTarget`.
class H7_HOST_API ISupportSNMP {
 public:
  // Whether the agent manages this device's snmpd.conf.
  /*  1 */ virtual bool GetIsManagedDevice() = 0;
  /*  2 */ virtual void SetIsManagedDevice(bool managed) = 0;
  // Whether settings were changed and are not yet written to snmpd.conf.
  /*  3 */ virtual bool GetIsConfigDirty() = 0;
  /*  4 */ virtual void SetIsConfigDirty(bool dirty) = 0;
  // Whether SNMP is switched on.
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

  // The agent is there: the device looks `ISNMPConfigurationAgent` up and announces itself with `AddSNMPDevice`. Called on
  // every published device each time the agent is initialised.
  /* 33 */ virtual void AgentAvailable() = 0;

  // `CopyFrom` fills `config` with the whole text of the device's snmpd.conf; `CopyTo` installs `config` as the device's
  // snmpd.conf. `path` is the agent's name for the working copy, always the same text. Returns 0 for success; the device
  // chooses the numbers of its failures. A change of settings tolerates -9, which can mean that the device cannot be reached
  // now and keeps the text for later. When `CopyFrom` fails, the device may leave `config` as it was or change it. `config`
  // is valid for the call. It is the agent's own text: a call back into the agent from here may change it.
  /* 34 */ virtual int CopyFrom(const std::string& path, std::string& config) = 0;
  /* 35 */ virtual int CopyTo(const std::string& path, const std::string& config) = 0;

  // Actions on the controller behind the device. Return 0 for success. They need not wait for the controller to come back.
  /* 36 */ virtual int RebootController() = 0;
  /* 37 */ virtual int StopMasterAgent() = 0;
  /* 38 */ virtual int StartMasterAgent() = 0;

  // `GetSNMPVersion` returns the version of the device's SNMP support, as a text that the device chooses.
  // `IsSNMPVersionValid` returns whether the agent can manage a device of that version; the device decides.
  /* 39 */ virtual std::string GetSNMPVersion() = 0;
  /* 40 */ virtual bool IsSNMPVersionValid(const std::string& version) = 0;

 protected:
  ~ISupportSNMP() = default;
};

// The identifier under which a device driver publishes its `ISupportSNMP`.
#define ISupportSNMP_IID "E49A0C76-1D3F-4B82-9E17-60A5D4B8C23D"

#endif
