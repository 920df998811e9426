#ifndef TESTS_VARIABLES_VARIABLES_FIXTURE_H
#define TESTS_VARIABLES_VARIABLES_FIXTURE_H

#include <map>
#include <string>
#include <utility>

#include "tests/support/AgentFixture.h"

// An agent in a project with some variables.
class VariablesTest : public AgentTest {
 protected:
  using Ids = std::pair<unsigned long, unsigned long>;

  // Makes the host know a variable.
  FakeVariable& Know(unsigned long deviceId, unsigned long variableId, bool enabled = false) {
    FakeVariable& variable =
        m_variables.emplace(Ids(deviceId, variableId), FakeVariable(deviceId, variableId, "v", enabled)).first->second;
    host.variables[{deviceId, variableId}] = &variable;
    return variable;
  }

  static std::string Listed(unsigned long deviceId, unsigned long variableId, const std::string& hidden = "0") {
    return "<variable deviceid=\"" + std::to_string(deviceId) + "\" variableid=\"" + std::to_string(variableId) +
           "\" hidden=\"" + hidden + "\"/>";
  }
  static std::string List(const std::string& listed) { return "<variables>" + listed + "</variables>"; }

  // The pairs of a map, in its order: "1.3 1.20 2.10".
  template <class Map>
  static std::string Pairs(const Map& map) {
    std::string pairs;
    for (const auto& entry : map) {
      pairs += (pairs.empty() ? "" : " ") + std::to_string(entry.first.first) + '.' + std::to_string(entry.first.second);
    }
    return pairs;
  }

  void Added(unsigned long deviceId, unsigned long variableId) { Send("OnVariableAdded", deviceId, variableId); }
  void UserAdded(unsigned long deviceId, unsigned long variableId) { Send("OnUserVariableAdded", deviceId, variableId); }
  void Removed(unsigned long deviceId, unsigned long variableId) { Send("OnVariableRemoved", deviceId, variableId); }

 private:
  void Send(const char* event, unsigned long deviceId, unsigned long variableId) {
    host.SendEvent(event, {{"iddevice", std::to_string(deviceId)}, {"idvariable", std::to_string(variableId)}});
  }

  std::map<Ids, FakeVariable> m_variables;
};

#endif
