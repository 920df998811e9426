#include <string>

#include "agent/SNMPConfigurationAgent.h"
#include "host/H7XML.h"
#include "host/IVariable.h"
#include "host/IVariableManager.h"
#include "reentry/WalkByKey.h"

void SNMPConfigurationAgent::BuildVariableList(VariableMap& map, bool userVariables, bool includeHidden) {
  map.clear();
  std::string xml;
  m_variableManager->ListVariables(xml, userVariables);
  const h7::auto_com<H7XML::IDocument> document = H7XML::CreateXmlDocument(xml);
  if (!document) {
    return;
  }
  const h7::auto_com<H7XML::INode> root = document->GetRootElement();
  if (!root) {
    return;
  }
  const h7::auto_com<H7XML::INodeList> variables = root->GetChildren();
  for (h7::auto_com<H7XML::INode> variable = variables->First(); variable; variable = variables->Next()) {
    const unsigned long deviceId = variable->GetNamedULong("deviceid");
    const unsigned long variableId = variable->GetNamedULong("variableid");
    const unsigned long hidden = variable->GetNamedULong("hidden");
    if (includeHidden || hidden == 0) {
      AddToMap(map, deviceId, variableId);
    }
  }
}

void SNMPConfigurationAgent::ApplySNMPTrapEnabled(VariableMap& map) {
  WalkByKey(m_savedTrapFlags, [&map](const VariableKey& key, bool enabled) {
    const VariableMap::const_iterator entry = map.find(key);
    if (entry != map.end() && entry->second != nullptr) {
      entry->second->TrapEnabled() = enabled;
    }
  });
}

bool SNMPConfigurationAgent::AddToMap(VariableMap& map, unsigned long deviceId, unsigned long variableId) {
  const VariableKey key(deviceId, variableId);
  if (map.find(key) != map.end()) {
    return false;
  }
  IVariable* const variable = m_variableManager->FindVariable(deviceId, variableId);
  map[key] = variable;
  return true;
}

bool SNMPConfigurationAgent::AddVariableToMap(VariableMap& map, H7XML::INode& event) {
  unsigned long deviceId = 0;
  unsigned long variableId = 0;
  GetIDsFromVariableNode(event, deviceId, variableId);
  return deviceId != 0 && variableId != 0 && AddToMap(map, deviceId, variableId);
}

bool SNMPConfigurationAgent::RemoveFromMap(VariableMap& map, unsigned long deviceId, unsigned long variableId) {
  return map.erase(VariableKey(deviceId, variableId)) != 0;
}

// Starts again from the beginning after every erasure, so that no iterator is kept across one.
unsigned int SNMPConfigurationAgent::RemoveFromMap(VariableMap& map, unsigned long deviceId) {
  unsigned int count = 0;
  VariableMap::const_iterator entry = map.begin();
  while (entry != map.end()) {
    if (entry->first.first == deviceId) {
      const VariableKey key = entry->first;
      map.erase(key);
      ++count;
      entry = map.begin();
    } else {
      ++entry;
    }
  }
  return count;
}

bool SNMPConfigurationAgent::RemoveVariableFromMap(VariableMap& map, H7XML::INode& event) {
  unsigned long deviceId = 0;
  unsigned long variableId = 0;
  GetIDsFromVariableNode(event, deviceId, variableId);
  return deviceId != 0 && variableId != 0 && RemoveFromMap(map, deviceId, variableId);
}
