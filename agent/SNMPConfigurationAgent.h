#ifndef AGENT_SNMP_CONFIGURATION_AGENT_H
#define AGENT_SNMP_CONFIGURATION_AGENT_H

#include <boost/shared_ptr.hpp>
#include <memory>
#include <string>

#include "agent/AutoQueryInstanceRegisterer.h"
#include "agent/DeviceMap.h"
#include "agent/ISNMPConfigurationAgent.h"
#include "config/ManagedSection.h"
#include "host/H7BaseAgentDriver.h"
#include "host/ISystemEventCallback.h"
#include "host/auto_com.h"
#include "variables/VariableMaps.h"

class ICmdMessage;
class ISupportSNMP;
class IVariableManager;

// The agent: one driver of the project. Its operations are grouped by the room that holds their bodies.
//
// It starts no thread and takes no lock: the host does not overlap its calls. Nested calls are legal; a device may call back
// from inside any call that reaches it. The agent's own code throws nothing; what the host, a device or an allocation throws
// passes through. Bases, virtual operations and data members stand in an order that is a binary contract.
class SNMPConfigurationAgent : public H7BaseAgentDriver, public ISNMPConfigurationAgent, public ISystemEventCallback {
 public:
  // agent/: life.
  // Makes an agent for the host, which deletes it through the pointer that comes back.
  static IDriver* Create(IInstanceManager& instanceManager);
  explicit SNMPConfigurationAgent(IInstanceManager& instanceManager);
  // Every managed device is set back to unmanaged, and the tool told so. Whatever a device or the host throws meanwhile, the
  // others are still released.
  ~SNMPConfigurationAgent() override;
  // Publishes the agent (until that was done or refused once), signals it to every SNMP-capable driver, takes over the saved
  // trap flags when `persisted` is not null. Returns 0.
  int Initialize(unsigned long driverId, H7XML::INode& config, H7XML::INode* persisted) override;
  // variables/: the state to keep: the trap-enabled flags of the project's ordinary variables as they are now.
  h7::auto_com<H7XML::INode> GetPersistState(unsigned long reserved) override;
  // agent/: binds the commands of the configuration tool.
  void RegisterCommands() override;

  // agent/: the registry, as device drivers use it (agent/ISNMPConfigurationAgent.h).
  void AddSNMPDevice(unsigned long deviceId, ISupportSNMP* device) override;
  void DeleteSNMPDevice(unsigned long deviceId) override;
  bool SetDeviceState(unsigned long deviceId) override;

  // variables/: keeps the index of variables current.
  void OnSystemEvent(H7XML::INode& event) override;

  // agent/: replies and notifications.
  // Sends the notification `name` with "id" and, unless it is -1, "state".
  void MySendDataToUI(std::string name, int id, int state);
  // Sets the device's managed flag and tells the tool. Returns the reply: "deviceId", or "Fail" for an unknown id.
  h7::auto_com<H7XML::INode> SetManagedState(unsigned long deviceId, bool managed);

  // Command handlers (docs/ui-commands.md). Each returns the reply, never an empty handle.
  // device/:
  h7::auto_com<H7XML::INode> OnReqGetDeviceList(ICmdMessage const& message);
  h7::auto_com<H7XML::INode> OnReqSetDeviceState(ICmdMessage const& message);
  // agent/:
  h7::auto_com<H7XML::INode> OnReqAddManagedDevice(ICmdMessage const& message);
  h7::auto_com<H7XML::INode> OnReqDeleteManagedDevice(ICmdMessage const& message);
  h7::auto_com<H7XML::INode> OnReqRebootController(ICmdMessage const& message);
  h7::auto_com<H7XML::INode> OnReqStopMasterAgent(ICmdMessage const& message);
  h7::auto_com<H7XML::INode> OnReqStartMasterAgent(ICmdMessage const& message);

  // config/: a device's snmpd.conf (docs/managed-section.md). Each takes a reference of its own to the record.
  // Copies the file from the device and fills empty settings from it. Returns the device's status; unless it is 0, nothing
  // was filled.
  int ReadConfig(boost::shared_ptr<SNMPDevice> device);
  // Rebuilds the managed section and copies the file to the device. Returns the device's status; the record keeps the new
  // text whatever it is.
  int WriteConfig(boost::shared_ptr<SNMPDevice> device);
  // The two without the copying: the record's text to settings, settings to the record's text.
  void MergeFromConfig(boost::shared_ptr<SNMPDevice> device);
  void MergeToConfig(boost::shared_ptr<SNMPDevice> device);

  // variables/: the index of variables.
  // Rebuilds `map` from the host's list. A list that cannot be read leaves the map empty.
  void BuildVariableList(VariableMap& map, bool userVariables, bool includeHidden);
  // Puts the saved flags onto the live variables of `map`. Saved flags without a variable are kept.
  void ApplySNMPTrapEnabled(VariableMap& map);
  // True when the pair was added; a pair that is there already keeps its variable, and the host is not asked.
  bool AddToMap(VariableMap& map, unsigned long deviceId, unsigned long variableId);
  bool AddVariableToMap(VariableMap& map, H7XML::INode& event);
  // True when the pair was there.
  bool RemoveFromMap(VariableMap& map, unsigned long deviceId, unsigned long variableId);
  // How many entries of the device were there.
  unsigned int RemoveFromMap(VariableMap& map, unsigned long deviceId);
  bool RemoveVariableFromMap(VariableMap& map, H7XML::INode& event);
  // Parameters of an event. An id whose parameter is missing keeps its value.
  void GetIDsFromVariableNode(H7XML::INode& event, unsigned long& deviceId, unsigned long& variableId);
  void GetIDsFromItemNode(H7XML::INode& event, unsigned long& itemId, unsigned long& roomId);

  // variables/: the persisted state (docs/persisted-state.md). The nodes are borrowed.
  void ToXml(H7XML::INode* root);
  void VariableMapToXml(H7XML::INode* parent, VariableMap& map);
  void FromXml(H7XML::INode* state);

 private:
  friend struct SNMPConfigurationAgentTestAccess;

  typedef int (SNMPDevice::*ControllerAction)();
  h7::auto_com<H7XML::INode> RunControllerAction(ICmdMessage const& message, ControllerAction action);

  DeviceMap m_devices;
// The type of this owner is part of the class's layout, so it stays although it is deprecated.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
  std::auto_ptr<AutoQueryInstanceRegisterer> m_registerer;
#pragma GCC diagnostic pop
  IInstanceManager& m_instanceManager;
  IVariableManager* m_variableManager;
  managed_section::Texts m_sectionTexts;
  VariableMap m_deviceVariables;
  VariableMap m_userVariables;
  TrapEnabledMap m_savedTrapFlags;
};

#endif
