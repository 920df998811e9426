#include "agent/Exports.h"
#include "agent/SNMPConfigurationAgent.h"
#include "host/H7XML.h"
#include "host/IVariable.h"
#include "host/ToString.h"
#include "reentry/WalkByKey.h"

h7::auto_com<H7XML::INode> SNMPConfigurationAgent::GetPersistState(unsigned long) {
  h7::auto_com<H7XML::INode> state = H7XML::CreateXmlNode("SNMPState", "");
  ToXml(state.Get());
  return state;
}

void SNMPConfigurationAgent::ToXml(H7XML::INode* root) {
  root->SetNamedString("version", versionString);
  h7::auto_com<H7XML::INode> variables;
  H7XML::Create(variables.Receive());
  variables->SetName("variables");
  variables->SetValue("");
  VariableMapToXml(variables.Get(), m_deviceVariables);
  root->AppendChild(*variables);
}

void SNMPConfigurationAgent::VariableMapToXml(H7XML::INode* parent, VariableMap& map) {
  WalkByKey(map, [parent](const VariableKey&, IVariable* variable) {
    if (variable == nullptr) {
      // The host did not know the variable, so there is nothing to write.
      return;
    }
    h7::auto_com<H7XML::INode> element;
    H7XML::Create(element.Receive());
    element->SetName("variable");
    element->SetValue("");
    // The ids are those that the variable gives, not the key's.
    const VariableKey ids = variable->GetIds();
    element->SetNamedULong("deviceid", ids.first);
    element->SetNamedULong("variableid", ids.second);
    element->SetNamedString("name", variable->GetName());
    element->SetNamedString("snmpTrapEnabled", h7::ToString(variable->TrapEnabled()));
    parent->AppendChild(*element);
  });
}

void SNMPConfigurationAgent::FromXml(H7XML::INode* state) {
  m_savedTrapFlags.clear();
  const h7::auto_com<H7XML::INode> variables = state->GetChild("variables");
  if (!variables) {
    return;
  }
  const h7::auto_com<H7XML::INodeList> children = variables->GetChildren();
  for (h7::auto_com<H7XML::INode> child = children->First(); child; child = children->Next()) {
    const unsigned long deviceId = child->GetNamedULong("deviceid");
    const unsigned long variableId = child->GetNamedULong("variableid");
    // The flag is read before the entry is made: a reader that throws must not leave an entry that nobody saved.
    const bool enabled = child->GetNamedBool("snmpTrapEnabled");
    m_savedTrapFlags[VariableKey(deviceId, variableId)] = enabled;
  }
}
