// What ScriptRunner does about variables and persisted states.
#include "devhost/script/ScriptRunner.h"
#include "devhost/text/Words.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

namespace {

const char* Text(bool value) {
  return value ? "true" : "false";
}

}  // namespace

void ScriptRunner::Do(const VariableAction& action) {
  BeginAction();
  if (action.add) {
    m_host->AddVariable(action.variable);
  } else {
    m_host->RemoveVariable(action.variable.deviceId, action.variable.variableId, action.variable.user);
  }
}

void ScriptRunner::Do(const RemoveItemAction& action) {
  BeginAction();
  m_host->RemoveItem(action.itemId, action.roomId);
}

void ScriptRunner::Do(const FlagAction& action) {
  BeginAction();
  m_host->SetTrapEnabled(action.deviceId, action.variableId, action.enabled);
  m_printer.Line("flag",
                 std::to_string(action.deviceId) + " " + std::to_string(action.variableId) + " " + Text(action.enabled));
}

void ScriptRunner::Do(const LoadProjectAction&) {
  BeginAction();
  m_host->LoadProject();
}

void ScriptRunner::ShowVariables() {
  const std::vector<VariableEntry> variables = m_host->Variables(Host::Flags::Current);
  for (const VariableEntry& variable : variables) {
    m_printer.Line(variable.user ? "user-variable" : "variable",
                   std::to_string(variable.deviceId) + " " + std::to_string(variable.variableId) +
                       " name=" + AsWord(variable.name) + " hidden=" + Text(variable.hidden) +
                       " trapEnabled=" + Text(variable.trapEnabled));
  }
  if (variables.empty()) {
    m_printer.Line("variable", "(none)");
  }
}

void ScriptRunner::ShowState(unsigned long driverId) {
  const std::string state = m_host->GetPersistState(driverId);
  m_printer.Secrets().LearnFromXml(state);
  m_printer.Xml("state", m_names.Name(driverId), state);
}

std::string ScriptRunner::FoundFlag(const ExpectAction& action) const {
  return Text(m_host->TrapEnabled(action.driverId, action.variableId));
}

std::string ScriptRunner::FoundState(const ExpectAction& action) {
  const std::string state = m_host->GetPersistState(action.driverId);
  // A golden file looks like the file in a state folder.
  return action.comparison == ExpectAction::Comparison::Golden && !state.empty()
             ? XmlText(*ReadXmlNode(state), XmlStyle::Indented) + "\n"
             : state;
}

}  // namespace devhost
