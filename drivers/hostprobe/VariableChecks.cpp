#include <exception>
#include <set>
#include <string>

#include "drivers/hostprobe/Finding.h"
#include "drivers/hostprobe/ParsedRoot.h"
#include "drivers/hostprobe/Report.h"
#include "drivers/hostprobe/ServiceChecks.h"
#include "host/IVariable.h"
#include "host/IVariableManager.h"

namespace drivers {
namespace {

using Key = DualKey<unsigned long, unsigned long>;

std::set<Key> KeysIn(const std::string& xml, Finding& finding) {
  std::set<Key> keys;
  const h7::auto_com<H7XML::INode> root = ParsedRoot(xml);
  const h7::auto_com<H7XML::INodeList> list = root->GetChildren();
  for (h7::auto_com<H7XML::INode> child = list->First(); child; child = list->Next()) {
    const std::string hidden = child->GetNamedString("hidden");
    finding.Unless(hidden == "0" || hidden == "1", "the value \"hidden\" of a variable is \"" + hidden + "\", not 0 or 1");
    const Key key(child->GetNamedULong("deviceid"), child->GetNamedULong("variableid"));
    finding.Unless(key.first != 0 && key.second != 0, "a variable is listed without \"deviceid\" or \"variableid\"");
    keys.insert(key);
  }
  return keys;
}

std::string Title(const Key& key) {
  return "variable " + std::to_string(key.first) + "/" + std::to_string(key.second);
}

std::string CheckFound(IVariableManager& variables, const std::set<Key>& keys) {
  Finding finding;
  for (const Key& key : keys) {
    const IVariable* const variable = variables.FindVariable(key.first, key.second);
    if (finding.Unless(variable != nullptr, "FindVariable does not find " + Title(key))) {
      finding.Unless(variable->GetIds() == key, "GetIds of " + Title(key) + " returns other ids");
    }
  }
  finding.Unless(variables.FindVariable(0, 0) == nullptr, "FindVariable finds a variable with ids of 0");
  return finding.Words();
}

std::string CheckName(IVariableManager& variables, const Key& key) {
  const IVariable* const variable = variables.FindVariable(key.first, key.second);
  return variable != nullptr && variable->GetName() != nullptr ? "" : "GetName of " + Title(key) + " returns null";
}

std::string CheckFlag(IVariableManager& variables, const Key& key) {
  Finding finding;
  IVariable* const variable = variables.FindVariable(key.first, key.second);
  if (variable == nullptr) {
    return "FindVariable does not find " + Title(key);
  }
  const bool before = variable->TrapEnabled();
  variable->TrapEnabled() = !before;
  finding.Compare("TrapEnabled after it was set", variable->TrapEnabled(), !before);
  variable->TrapEnabled() = before;
  return finding.Words();
}

}  // namespace

void CheckVariables(Report& report, IVariableManager& variables) {
  std::set<Key> ordinary;
  std::set<Key> user;
  std::string wrong;
  const auto list = [&] {
    Finding finding;
    std::string xml = "<junk/>";
    variables.ListVariables(xml, false);
    ordinary = KeysIn(xml, finding);
    variables.ListVariables(xml, true);
    user = KeysIn(xml, finding);
    return finding.Words();
  };
  try {
    wrong = list();
  } catch (const std::exception& exception) {
    wrong = std::string("the list of variables cannot be read: ") + exception.what();
  }
  if (!wrong.empty() || !ordinary.empty()) {
    report.Check(Promise::VariableList, [&] { return wrong; });
  }
  if (!ordinary.empty()) {
    report.Check(Promise::VariableFound, [&] { return CheckFound(variables, ordinary); });
    report.Check(Promise::VariableName, [&] { return CheckName(variables, *ordinary.begin()); });
    report.Check(Promise::VariableFlag, [&] { return CheckFlag(variables, *ordinary.begin()); });
  }
  if (!ordinary.empty() && !user.empty()) {
    report.Check(Promise::VariableUser, [&] {
      Finding finding;
      for (const Key& key : user) {
        finding.Unless(ordinary.count(key) == 0, Title(key) + " is listed as a variable and as a user variable");
      }
      return finding.Words();
    });
  }
}

}  // namespace drivers
