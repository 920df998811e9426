#ifndef TESTS_VARIABLES_VARIABLES_FIXTURE_H
#define TESTS_VARIABLES_VARIABLES_FIXTURE_H

#include <map>
#include <string>
#include <utility>

#include "tests/support/AgentFixture.h"

// A variable that records each call in a journal: "1.20.GetName".
class NotingVariable : public FakeVariable {
 public:
  NotingVariable(Journal& journal, unsigned long deviceId, unsigned long variableId)
      : FakeVariable(deviceId, variableId, "v"), m_journal(journal) {}
  DualKey<unsigned long, unsigned long> GetIds() const override {
    Note("GetIds");
    return FakeVariable::GetIds();
  }
  const char* GetName() const override {
    Note("GetName");
    return FakeVariable::GetName();
  }
  bool& TrapEnabled() override {
    Note("TrapEnabled");
    return FakeVariable::TrapEnabled();
  }

 private:
  void Note(const char* operation) const {
    m_journal.Note(std::to_string(ids.first) + '.' + std::to_string(ids.second) + '.' + operation);
  }

  Journal& m_journal;
};

// An agent in a project with some variables.
class VariablesTest : public AgentTest {
 protected:
  using Ids = std::pair<unsigned long, unsigned long>;

  // Adds a variable that the host knows.
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

  // Returns the pairs of a map, in its order: "1.3 1.20 2.10".
  template <class Map>
  static std::string Pairs(const Map& map) {
    std::string pairs;
    for (const auto& entry : map) {
      pairs += (pairs.empty() ? "" : " ") + std::to_string(entry.first.first) + '.' + std::to_string(entry.first.second);
    }
    return pairs;
  }

  // Returns the calls into the XML library that `work` makes: "SetNamedString name".
  template <class Work>
  static Calls XmlCallsOf(Work work) {
    struct Observer : devhost::XmlObserver {
      void OnXmlCall(const char* operation, const char* name) override {
        calls.push_back(std::string(operation) + ' ' + name);
      }
      Calls calls;
    } observer;
    devhost::SetXmlObserver(&observer);
    work();
    devhost::SetXmlObserver(nullptr);
    return observer.calls;
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
