#include "host/H7XML.h"
#include "tests/variables/VariablesFixture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class TheVariableIndex : public VariablesTest {
 protected:
  VariableMap map;
};

TEST_F(TheVariableIndex, IsEmptyInANewAgent) {
  EXPECT_TRUE(State().deviceVariables.empty());
  EXPECT_TRUE(State().userVariables.empty());
  EXPECT_TRUE(State().savedTrapFlags.empty());
  EXPECT_EQ(State().variableManager, host.Variables());
}

TEST_F(TheVariableIndex, RunsDeviceByDeviceAndVariablesAscendingWithinADevice) {
  agent->AddToMap(map, 2, 10);
  agent->AddToMap(map, 1, 20);
  agent->AddToMap(map, 1, 3);
  EXPECT_EQ(Pairs(map), "1.3 1.20 2.10");
}

TEST_F(TheVariableIndex, ComparesIdsUnsigned) {
  agent->AddToMap(map, 4294967295UL, 1);
  agent->AddToMap(map, 1, 4294967295UL);
  agent->AddToMap(map, 1, 2147483648UL);
  agent->AddToMap(map, 1, 1);
  EXPECT_EQ(Pairs(map), "1.1 1.2147483648 1.4294967295 4294967295.1");
}

TEST_F(TheVariableIndex, AsksTheHostForANewPair) {
  FakeVariable& variable = Know(5, 7);
  EXPECT_TRUE(agent->AddToMap(map, 5, 7));
  EXPECT_EQ(map.at(VariableKey(5, 7)), &variable);
  EXPECT_THAT(journal.Calls(), ElementsAre("FindVariable 5 7"));
}

TEST_F(TheVariableIndex, KeepsAPairThatTheHostDoesNotKnowWithoutAVariable) {
  EXPECT_TRUE(agent->AddToMap(map, 5, 7));
  ASSERT_EQ(map.size(), 1U);
  EXPECT_EQ(map.at(VariableKey(5, 7)), nullptr);
}

TEST_F(TheVariableIndex, DoesNotAskAgainForAPairThatItHas) {
  FakeVariable& first = Know(5, 7);
  agent->AddToMap(map, 5, 7);
  FakeVariable second(5, 7, "second");
  host.variables[{5, 7}] = &second;
  journal.Take();
  EXPECT_FALSE(agent->AddToMap(map, 5, 7));
  EXPECT_EQ(map.at(VariableKey(5, 7)), &first);
  EXPECT_THAT(journal.Calls(), IsEmpty());
}

TEST_F(TheVariableIndex, DoesNotAskAgainForAPairWithoutAVariable) {
  agent->AddToMap(map, 5, 7);
  Know(5, 7);
  journal.Take();
  EXPECT_FALSE(agent->AddToMap(map, 5, 7));
  EXPECT_EQ(map.at(VariableKey(5, 7)), nullptr);
  EXPECT_THAT(journal.Calls(), IsEmpty());
}

TEST_F(TheVariableIndex, StaysAsItIsWhenTheHostFails) {
  journal.SetHook([](const std::string&) { throw std::runtime_error("lookup"); });
  EXPECT_THROW(agent->AddToMap(map, 5, 7), std::runtime_error);
  EXPECT_TRUE(map.empty());
}

TEST_F(TheVariableIndex, RemovesOnePair) {
  agent->AddToMap(map, 5, 7);
  agent->AddToMap(map, 5, 8);
  journal.Take();
  EXPECT_TRUE(agent->RemoveFromMap(map, 5, 7));
  EXPECT_FALSE(agent->RemoveFromMap(map, 5, 7));
  EXPECT_FALSE(agent->RemoveFromMap(map, 8, 5));
  EXPECT_EQ(Pairs(map), "5.8");
  EXPECT_THAT(journal.Calls(), IsEmpty());
}

TEST_F(TheVariableIndex, RemovesAllPairsOfADeviceAndCountsThem) {
  for (const Ids& ids : {Ids(5, 9), Ids(4, 5), Ids(5, 1), Ids(6, 5), Ids(5, 4294967295UL), Ids(5, 0)}) {
    agent->AddToMap(map, ids.first, ids.second);
  }
  EXPECT_EQ(agent->RemoveFromMap(map, 5), 4U);
  EXPECT_EQ(Pairs(map), "4.5 6.5");
  EXPECT_EQ(agent->RemoveFromMap(map, 5), 0U);
  EXPECT_EQ(Pairs(map), "4.5 6.5");
}

TEST_F(TheVariableIndex, RemovesAllThatItHolds) {
  agent->AddToMap(map, 5, 1);
  agent->AddToMap(map, 5, 2);
  EXPECT_EQ(agent->RemoveFromMap(map, 5), 2U);
  EXPECT_TRUE(map.empty());
  EXPECT_EQ(agent->RemoveFromMap(map, 5), 0U);
}

TEST_F(TheVariableIndex, IsBuiltFromTheHostsList) {
  agent->AddToMap(map, 9, 9);
  host.userVariableList = List(Listed(2, 1) + Listed(1, 9) + "<other deviceid=\"1\" variableid=\"4\"/>");
  FakeVariable& known = Know(1, 9);
  journal.Take();
  agent->BuildVariableList(map, true, false);
  EXPECT_EQ(Pairs(map), "1.4 1.9 2.1");
  EXPECT_EQ(map.at(VariableKey(1, 9)), &known);
  EXPECT_EQ(map.at(VariableKey(2, 1)), nullptr);
  EXPECT_THAT(journal.Calls(),
              ElementsAre("ListVariables true", "FindVariable 2 1", "FindVariable 1 9", "FindVariable 1 4"));
}

TEST_F(TheVariableIndex, ReadsNumbersFromTheAttributesOfTheList) {
  host.variableList = List(Listed(1, 2));
  EXPECT_THAT(XmlCallsOf([this] { agent->BuildVariableList(map, false, false); }),
              ElementsAre("CreateXmlDocument " + host.variableList, "GetRootElement ", "GetChildren ", "First ",
                          "GetNamedULong deviceid", "GetNamedULong variableid", "GetNamedULong hidden", "Next "));
}

TEST_F(TheVariableIndex, LeavesHiddenVariablesOutAndDoesNotLookThemUp) {
  host.variableList = List(Listed(1, 1, "1") + Listed(1, 2, "0") + Listed(1, 3, "4294967295"));
  agent->BuildVariableList(map, false, false);
  EXPECT_EQ(Pairs(map), "1.2");
  EXPECT_THAT(journal.Calls(), ElementsAre("ListVariables false", "FindVariable 1 2"));
}

TEST_F(TheVariableIndex, HoldsHiddenVariablesWhenAskedTo) {
  host.variableList = List(Listed(1, 1, "1") + Listed(1, 2, "0"));
  agent->BuildVariableList(map, false, true);
  EXPECT_EQ(Pairs(map), "1.1 1.2");
}

TEST_F(TheVariableIndex, TakesIdsOfZeroFromTheList) {
  host.variableList = List("<variable/>");
  agent->BuildVariableList(map, false, false);
  EXPECT_EQ(Pairs(map), "0.0");
}

TEST_F(TheVariableIndex, LooksAPairUpOnceThatIsListedTwice) {
  host.variableList = List(Listed(1, 1) + Listed(1, 1));
  agent->BuildVariableList(map, false, false);
  EXPECT_EQ(Pairs(map), "1.1");
  EXPECT_THAT(journal.Calls(), ElementsAre("ListVariables false", "FindVariable 1 1"));
}

TEST_F(TheVariableIndex, DoesNotTakeGrandchildrenForVariables) {
  host.variableList = List("<variable deviceid=\"1\" variableid=\"1\">" + Listed(2, 2) + "</variable>");
  agent->BuildVariableList(map, false, false);
  EXPECT_EQ(Pairs(map), "1.1");
}

TEST_F(TheVariableIndex, IsEmptiedBeforeTheHostIsAskedForItsList) {
  agent->AddToMap(map, 9, 9);
  journal.SetHook([](const std::string&) { throw std::runtime_error("list"); });
  EXPECT_THROW(agent->BuildVariableList(map, false, false), std::runtime_error);
  EXPECT_EQ(Pairs(map), "");
}

TEST_F(TheVariableIndex, IsEmptyWhenTheListCannotBeRead) {
  for (const char* list : {"", "<variables>", "no list", "<!-- nothing -->"}) {
    agent->AddToMap(map, 9, 9);
    host.variableList = list;
    agent->BuildVariableList(map, false, false);
    EXPECT_TRUE(map.empty()) << list;
    EXPECT_EQ(devhost::LiveXmlObjects(), 0U) << list;
  }
}

TEST_F(TheVariableIndex, ReleasesTheListWhenALookupFails) {
  host.variableList = List(Listed(1, 1) + Listed(1, 2));
  journal.SetHook([](const std::string& call) {
    if (call == "FindVariable 1 2") {
      throw std::runtime_error("lookup");
    }
  });
  EXPECT_THROW(agent->BuildVariableList(map, false, false), std::runtime_error);
  EXPECT_EQ(devhost::LiveXmlObjects(), 0U);
  EXPECT_EQ(Pairs(map), "1.1");
}

TEST_F(TheVariableIndex, TakesSavedFlagsOverToItsVariables) {
  FakeVariable& off = Know(5, 7, true);
  FakeVariable& on = Know(5, 9, false);
  FakeVariable& unsaved = Know(6, 1, true);
  for (const Ids& ids : {Ids(5, 7), Ids(5, 9), Ids(6, 1), Ids(7, 7)}) {
    agent->AddToMap(map, ids.first, ids.second);
  }
  TrapEnabledMap& saved = State().savedTrapFlags;
  saved[VariableKey(5, 7)] = false;
  saved[VariableKey(5, 8)] = true;  // this variable does not exist
  saved[VariableKey(5, 9)] = true;
  saved[VariableKey(7, 7)] = true;  // the host does not know it
  journal.Take();
  agent->ApplySNMPTrapEnabled(map);
  EXPECT_FALSE(off.enabled);
  EXPECT_TRUE(on.enabled);
  EXPECT_TRUE(unsaved.enabled);
  EXPECT_EQ(Pairs(saved), "5.7 5.8 5.9 7.7");
  EXPECT_EQ(Pairs(map), "5.7 5.9 6.1 7.7");
  EXPECT_THAT(journal.Calls(), IsEmpty());
}

TEST_F(TheVariableIndex, TakesSavedFlagsOverInTheOrderOfTheirKeysAndTouchesNoOtherVariable) {
  NotingVariable third(journal, 2, 10);
  NotingVariable second(journal, 1, 20);
  NotingVariable first(journal, 1, 3);
  NotingVariable unsaved(journal, 1, 4);
  for (NotingVariable* variable : {&third, &second, &first, &unsaved}) {
    map[variable->ids] = variable;
    if (variable != &unsaved) {
      State().savedTrapFlags[variable->ids] = true;
    }
  }
  agent->ApplySNMPTrapEnabled(map);
  EXPECT_THAT(journal.Calls(), ElementsAre("1.3.TrapEnabled", "1.20.TrapEnabled", "2.10.TrapEnabled"));
}

}  // namespace
