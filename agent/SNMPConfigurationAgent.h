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
// It starts no thread and takes no lock: the host never calls from two threads at once. Calls may nest: a device may call
// back from inside any call that it gets. The agent's own code throws nothing; what the host, a device or an allocation
// throws passes through. The order of bases, virtual operations and data members is a binary contract.
class SNMPConfigurationAgent : public H7BaseAgentDriver, public ISNMPConfigurationAgent, public ISystemEventCallback {
 public:
  // agent/: life.
  // Makes an agent for the host, which deletes it through the returned pointer.
  static IDriver* Create(IInstanceManager& instanceManager);
  explicit SNMPConfigurationAgent(IInstanceManager& instanceManager);
  // Sets every managed device back to unmanaged and notifies the tool. Even when a device or the host throws, the other
  // devices are released.
  ~SNMPConfigurationAgent() override;
  // Publishes the agent (unless that was done or refused before), calls `AgentAvailable` on every SNMP-capable driver, and
  // takes over the saved trap flags when `persisted` is not null. Returns 0.
  int Initialize(unsigned long driverId, H7XML::INode& config, H7XML::INode* persisted) override;
  // variables/: returns the state to keep, which is the current trap-enabled flag of each ordinary variable of the project.
  h7::auto_com<H7XML::INode> GetPersistState(unsigned long reserved) override;
  // agent/: binds the commands of the configuration tool.
  void RegisterCommands() override;

  // agent/: the registry, for device drivers (agent/ISNMPConfigurationAgent.h).
  void AddSNMPDevice(unsigned long deviceId, ISupportSNMP* device) override;
  void DeleteSNMPDevice(unsigned long deviceId) override;
  bool SetDeviceState(unsigned long deviceId) override;

  // variables/: keeps the index of variables up to date.
  void OnSystemEvent(H7XML::INode& event) override;

  // agent/: replies and notifications.
  // Sends the notification `name` with "id" and, unless it is -1, "state".
  void MySendDataToUI(std::string name, int id, int state);
  // Sets the device's managed flag and notifies the tool. Returns the reply: "deviceId", or "Fail" for an unknown id.
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
  // Copies the file from the device and fills empty settings from it. Returns the device's status. When that is not 0,
  // nothing was filled.
  int ReadConfig(boost::shared_ptr<SNMPDevice> device);
  // Makes a new managed section and copies the file to the device. Returns the device's status. The record keeps the new
  // text, whatever the status is.
  int WriteConfig(boost::shared_ptr<SNMPDevice> device);
  // The same without copying: from the record's text to the settings, and from the settings to the record's text.
  void MergeFromConfig(boost::shared_ptr<SNMPDevice> device);
  void MergeToConfig(boost::shared_ptr<SNMPDevice> device);

  // variables/: the index of variables.
  // Rebuilds `map` from the host's list. A list that cannot be read leaves the map empty.
  void BuildVariableList(VariableMap& map, bool userVariables, bool includeHidden);
  // Sets the saved flags on the variables in `map`. Saved flags without a variable are kept.
  void ApplySNMPTrapEnabled(VariableMap& map);
  // Returns whether the pair was added. A pair that is already there keeps its variable, and the host is not asked.
  bool AddToMap(VariableMap& map, unsigned long deviceId, unsigned long variableId);
  bool AddVariableToMap(VariableMap& map, H7XML::INode& event);
  // Returns whether the pair was there.
  bool RemoveFromMap(VariableMap& map, unsigned long deviceId, unsigned long variableId);
  // Returns how many entries of the device were there.
  unsigned int RemoveFromMap(VariableMap& map, unsigned long deviceId);
  bool RemoveVariableFromMap(VariableMap& map, H7XML::INode& event);
  // Read the parameters of an event. An id whose parameter is missing keeps its value.
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
// The type of this smart pointer is part of the class's layout, so it stays although it is deprecated.
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
