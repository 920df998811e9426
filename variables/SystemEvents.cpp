#include <string>

#include "agent/SNMPConfigurationAgent.h"
#include "host/H7XML.h"

namespace {

// Stores the values of two parameters. Of several with one name the last one counts; a missing one changes nothing.
void ReadIds(const H7XML::INode& event, const char* firstName, unsigned long& first, const char* secondName,
             unsigned long& second) {
  const h7::auto_com<H7XML::INodeList> parameters = event.GetChildren();
  for (h7::auto_com<H7XML::INode> parameter = parameters->First(); parameter; parameter = parameters->Next()) {
    const std::string name = parameter->GetNamedString("name");
    if (name == firstName) {
      first = parameter->GetValueULong();
    } else if (name == secondName) {
      second = parameter->GetValueULong();
    }
  }
}

}  // namespace

void SNMPConfigurationAgent::OnSystemEvent(H7XML::INode& event) {
  const std::string name = event.GetNamedString("name");
  if (name == "OnProjectLoaded") {
    BuildVariableList(m_userVariables, true, false);
    BuildVariableList(m_deviceVariables, false, false);
    ApplySNMPTrapEnabled(m_deviceVariables);
  } else if (name == "OnVariableAdded") {
    AddVariableToMap(m_deviceVariables, event);
  } else if (name == "OnUserVariableAdded") {
    AddVariableToMap(m_userVariables, event);
  } else if (name == "OnVariableRemoved") {
    RemoveVariableFromMap(m_deviceVariables, event);
    RemoveVariableFromMap(m_userVariables, event);
  } else if (name == "OnItemRemoved") {
    unsigned long itemId = 0;
    unsigned long roomId = 0;
    GetIDsFromItemNode(event, itemId, roomId);
    if (itemId != 0) {
      // An item that has variables is a device. User variables stay as they are; their pointers are never used.
      RemoveFromMap(m_deviceVariables, itemId);
    }
  }
}

void SNMPConfigurationAgent::GetIDsFromVariableNode(H7XML::INode& event, unsigned long& deviceId,
                                                    unsigned long& variableId) {
  ReadIds(event, "iddevice", deviceId, "idvariable", variableId);
}

void SNMPConfigurationAgent::GetIDsFromItemNode(H7XML::INode& event, unsigned long& itemId, unsigned long& roomId) {
  ReadIds(event, "iditem", itemId, "idroom", roomId);
}
