#ifndef AGENT_ISNMP_CONFIGURATION_AGENT_H
#define AGENT_ISNMP_CONFIGURATION_AGENT_H

class ISupportSNMP;

// What the SNMP configuration agent offers to SNMP-capable device drivers. The host's instance manager publishes it under
// `ISNMPConfigurationAgent_IID` from the agent's first `Initialize` until its destruction. Look it up before each use and
// convert the pointer back to exactly this interface.
//
// A device may call it from inside any call that the agent makes into the device, but not from another thread. The order of
// the operations is a binary contract.
class ISNMPConfigurationAgent {
 public:
  // Announces a device. `deviceId` is the driver's id in the project. The agent does not own `device`, which must stay valid
  // until `DeleteSNMPDevice`. A null device is logged and ignored. While an id is registered, a second announcement does not
  // replace the first device, but the tool still gets "DeviceAdded".
  /* 1 */ virtual void AddSNMPDevice(unsigned long deviceId, ISupportSNMP* device) = 0;

  // Withdraws a device. The tool gets "DeviceDeleted", even when the id was never announced. When an operation on the device
  // is running further up the stack, it still finishes.
  /* 2 */ virtual void DeleteSNMPDevice(unsigned long deviceId) = 0;

  // Brings the device's snmpd.conf up to date with its settings: reads the file, fills settings that are empty, rewrites the
  // managed section and passes the file back. Returns false when the id is unknown or a copy failed.
  /* 3 */ virtual bool SetDeviceState(unsigned long deviceId) = 0;

 protected:
  ~ISNMPConfigurationAgent() = default;
};

// The identifier under which the agent publishes its `ISNMPConfigurationAgent`.
#define ISNMPConfigurationAgent_IID "8C31E6F2-04AB-4f97-A6D5-3B92C7E10F58"

#endif
