// scripts/abi reads this file; it is not built. It makes the compiler lay out every class and every table that crosses the
// border between host and module, and the classes of the plug-in whose layout others rely on.

#include "agent/SNMPConfigurationAgent.h"
#include "device/SNMPDevice.h"
#include "device/TrapTarget.h"
#include "host/H7BaseAgentDriver.h"
#include "host/ICmdMessage.h"
#include "host/IDocument.h"
#include "host/IDriver.h"
#include "host/IDriverManager.h"
#include "host/IInstanceManager.h"
#include "host/INode.h"
#include "host/INodeList.h"
#include "host/ISupportSNMP.h"
#include "host/ISystemEventCallback.h"
#include "host/IVariable.h"
#include "host/IVariableManager.h"
#include "host/UICmdDispatcher.h"

// A call through a table makes the compiler lay the table out.
void Tables(SNMPConfigurationAgent& agent, ISNMPConfigurationAgent& published, ISupportSNMP& device, IDriver& driver,
            H7BaseDriver& base, H7BaseAgentDriver& agentBase, ISystemEventCallback& listener, ICmdMessage& message,
            UICmdDispatcher& dispatcher, IDriverManager& drivers, IInstanceManager& instances, IVariable& variable,
            IVariableManager& variables, H7XML::INode& node, H7XML::INodeList& list, H7XML::IDocument& document) {
  agent.RegisterCommands();
  published.DeleteSNMPDevice(0);
  device.AgentAvailable();
  driver.RegisterCommands();
  base.RegisterCommands();
  agentBase.RegisterCommands();
  listener.OnSystemEvent(node);
  message.Has("");
  dispatcher.RegisterUICmd("", boost::function<h7::auto_com<H7XML::INode>(ICmdMessage const&)>());
  std::vector<void*> found;
  drivers.FindDrivers(0, "", found);
  instances.Query("");
  variable.GetName();
  variables.FindVariable(0, 0);
  node.AddRef();
  list.AddRef();
  document.AddRef();
}

// Using the size of a class makes the compiler lay the class out.
unsigned long Classes() {
  return sizeof(SNMPConfigurationAgent) + sizeof(SNMPDevice) + sizeof(TrapTarget) + sizeof(managed_section::Texts) +
         sizeof(AutoQueryInstanceRegisterer) + sizeof(VariableKey) + sizeof(h7::auto_com<H7XML::INode>);
}
