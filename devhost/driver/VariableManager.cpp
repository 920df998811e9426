#include "devhost/driver/VariableManager.h"

#include <iterator>

#include "devhost/xml/XmlReader.h"

namespace devhost {

IVariable* VariableManager::FindVariable(unsigned long deviceId, unsigned long variableId) {
  return Find(deviceId, variableId);
}

void VariableManager::ListVariables(std::string& xml, bool userVariables) {
  const std::string element = userVariables ? "userVariable" : "variable";
  std::string list = "<" + element + "s>";
  for (const auto& [key, variable] : m_variables) {
    const VariableEntry& entry = variable.Entry();
    if (entry.user == userVariables) {
      list.append("<").append(element);
      AppendXmlAttribute(list, "deviceid", std::to_string(entry.deviceId));
      AppendXmlAttribute(list, "variableid", std::to_string(entry.variableId));
      AppendXmlAttribute(list, "name", entry.name);
      AppendXmlAttribute(list, "hidden", entry.hidden ? "1" : "0");
      list.append("/>");
    }
  }
  xml = list.append("</").append(element).append("s>");
}

Variable* VariableManager::Find(unsigned long deviceId, unsigned long variableId) {
  const auto found = m_variables.find(Key(deviceId, variableId));
  return found == m_variables.end() ? nullptr : &found->second;
}

bool VariableManager::Add(const VariableEntry& entry) {
  return m_variables.try_emplace(Key(entry.deviceId, entry.variableId), entry).second;
}

VariableManager::Taken VariableManager::Take(unsigned long deviceId, unsigned long variableId) {
  return m_variables.extract(Key(deviceId, variableId));
}

std::vector<VariableManager::Taken> VariableManager::TakeDevice(unsigned long deviceId) {
  std::vector<Taken> taken;
  for (auto each = m_variables.lower_bound(Key(deviceId, 0)); each != m_variables.end() && each->first.first == deviceId;) {
    const auto next = std::next(each);
    if (!each->second.Entry().user) {
      taken.push_back(m_variables.extract(each));
    }
    each = next;
  }
  return taken;
}

}  // namespace devhost
