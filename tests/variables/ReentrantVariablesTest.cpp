// A host whose variable manager sends events while the agent calls it.
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

  // Runs `action` once, from inside the first call `wanted`.
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

TEST_F(AVariableManagerThatSendsEvents, HasTheAnswerToTheOuterOfTwoLookupsKept) {
  FakeVariable inner(5, 7, "inner");
  FakeVariable& outer = Know(5, 7);
  Inside("FindVariable 5 7", [this, &inner, &outer] {
    host.variables[{5, 7}] = &inner;
    Added(5, 7);
    host.variables[{5, 7}] = &outer;
  });
  Added(5, 7);
  EXPECT_EQ(State().deviceVariables.at(VariableKey(5, 7)), &outer);
}

TEST_F(AVariableManagerThatSendsEvents, MayAddAVariableInsideTheListing) {
  Know(5, 7);
  Added(9, 9);
  Inside("ListVariables false", [this] { Added(5, 7); });
  host.SendEvent("OnProjectLoaded");
  EXPECT_EQ(Device(), "1.1 1.2 2.1 5.7");
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

// A variable that runs an action while the agent calls it.
class ATalkativeVariable : public FakeVariable {
 public:
  using FakeVariable::FakeVariable;
  DualKey<unsigned long, unsigned long> GetIds() const override {
    Act();
    return FakeVariable::GetIds();
  }
  const char* GetName() const override {
    Act();
    return FakeVariable::GetName();
  }
  bool& TrapEnabled() override {
    Act();
    return FakeVariable::TrapEnabled();
  }

  std::function<void()> action;

 private:
  void Act() const {
    if (action) {
      action();
    }
  }
};

class AVariableThatSendsEvents : public AVariableManagerThatSendsEvents {
 protected:
  void SetUp() override {
    AVariableManagerThatSendsEvents::SetUp();
    host.variables[{1, 2}] = &talkative;
    Added(1, 1);
    Added(1, 2);
    Added(2, 1);
  }

  std::string Written() { return Text(*agent.Driver().GetPersistState(0)); }

  ATalkativeVariable talkative{1, 2, "talkative"};
};

TEST_F(AVariableThatSendsEvents, MayBeRemovedWithItsNeighboursWhileTheStateIsWritten) {
  talkative.action = [this] {
    Removed(1, 1);
    Removed(1, 2);
    Removed(2, 1);
  };
  EXPECT_THAT(Written(), testing::Not(testing::HasSubstr("deviceid=\"2\"")));
  EXPECT_EQ(Device(), "");
}

TEST_F(AVariableThatSendsEvents, MayAddAVariableThatIsThenWritten) {
  Know(1, 9);
  talkative.action = [this] { Added(1, 9); };
  EXPECT_THAT(Written(), testing::HasSubstr("variableid=\"9\""));
}

TEST_F(AVariableThatSendsEvents, MayLoadTheProjectWhileFlagsAreApplied) {
  bool loaded = false;
  talkative.action = [this, &loaded] {
    if (!loaded) {
      loaded = true;
      host.SendEvent("OnProjectLoaded");
    }
  };
  State().savedTrapFlags[VariableKey(1, 2)] = true;
  State().savedTrapFlags[VariableKey(2, 1)] = true;
  host.SendEvent("OnProjectLoaded");
  EXPECT_TRUE(loaded);
  EXPECT_TRUE(talkative.enabled);
  EXPECT_TRUE(host.variables.at({2, 1})->TrapEnabled());
}

}  // namespace
