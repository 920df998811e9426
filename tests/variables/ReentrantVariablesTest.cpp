// A host whose variable manager sends events from inside the agent's questions.
#include <functional>

#include "tests/variables/VariablesFixture.h"

namespace {

class AVariableManagerThatSendsEvents : public VariablesTest {
 protected:
  void SetUp() override {
    Know(1, 1);
    Know(1, 2);
    Know(2, 1);
    host.variableList = List(Listed(1, 1) + Listed(1, 2) + Listed(2, 1));
    host.userVariableList = List(Listed(1, 1));
  }

  // Runs `action` once, from inside the first such call.
  void Inside(const std::string& wanted, std::function<void()> action) {
    journal.SetHook([this, wanted, action](const std::string& call) {
      if (call == wanted) {
        journal.SetHook(nullptr);
        action();
      }
    });
  }

  std::string Device() { return Pairs(State().deviceVariables); }
};

TEST_F(AVariableManagerThatSendsEvents, MayLoadTheProjectInsideALookup) {
  Inside("FindVariable 1 2", [this] { host.SendEvent("OnProjectLoaded"); });
  host.SendEvent("OnProjectLoaded");
  EXPECT_EQ(Device(), "1.1 1.2 2.1");
  EXPECT_EQ(Pairs(State().userVariables), "1.1");
}

TEST_F(AVariableManagerThatSendsEvents, MayLoadTheProjectInsideTheListing) {
  Inside("ListVariables false", [this] { host.SendEvent("OnProjectLoaded"); });
  host.SendEvent("OnProjectLoaded");
  EXPECT_EQ(Device(), "1.1 1.2 2.1");
}

TEST_F(AVariableManagerThatSendsEvents, MayAddTheSamePairInsideItsLookup) {
  Inside("FindVariable 5 7", [this] { Added(5, 7); });
  Added(5, 7);
  EXPECT_EQ(Device(), "5.7");
}

TEST_F(AVariableManagerThatSendsEvents, MayRemoveAllInsideALookup) {
  Added(1, 1);
  Inside("FindVariable 2 1", [this] {
    Removed(1, 1);
    host.SendEvent("OnItemRemoved", {{"iditem", "2"}});
  });
  Added(2, 1);
  EXPECT_EQ(Device(), "2.1");
}

TEST_F(AVariableManagerThatSendsEvents, MayAskForTheStateInsideALookup) {
  std::string state;
  Inside("FindVariable 1 2", [this, &state] { state = Text(*agent.Driver().GetPersistState(0)); });
  host.SendEvent("OnProjectLoaded");
  EXPECT_EQ(state,
            "<SNMPState version=\"1.0.0.0\"><variables>"
            "<variable deviceid=\"1\" variableid=\"1\" name=\"v\" snmpTrapEnabled=\"false\"/></variables></SNMPState>");
}

}  // namespace
