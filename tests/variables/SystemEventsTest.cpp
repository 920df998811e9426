#include "host/H7XML.h"
#include "tests/support/XmlFaults.h"
#include "tests/variables/VariablesFixture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SystemEvents : public VariablesTest {
 protected:
  // Delivers the event that `xml` describes.
  void Deliver(const std::string& xml) {
    const h7::auto_com<H7XML::INode> event = devhost::ReadXmlNode(xml);
    agent->OnSystemEvent(*event);
  }

  std::string Device() { return Pairs(State().deviceVariables); }
  std::string User() { return Pairs(State().userVariables); }
};

TEST_F(SystemEvents, ReachTheAgentThroughTheListenerThatItRegistered) {
  ASSERT_EQ(host.Listeners().size(), 5U);
  EXPECT_EQ(host.Listeners().front().callback, static_cast<ISystemEventCallback*>(&agent.Agent()));
  Added(5, 7);
  EXPECT_EQ(Device(), "5.7");
}

TEST_F(SystemEvents, OnProjectLoadedBuildsUserVariablesThenDeviceVariablesThenAppliesFlags) {
  FakeVariable& ordinary = Know(1, 1, false);
  FakeVariable& user = Know(2, 2, false);
  host.variableList = List(Listed(1, 1));
  host.userVariableList = List(Listed(2, 2));
  State().savedTrapFlags[VariableKey(1, 1)] = true;
  State().savedTrapFlags[VariableKey(2, 2)] = true;
  host.SendEvent("OnProjectLoaded");
  EXPECT_THAT(journal.Calls(),
              ElementsAre("ListVariables true", "FindVariable 2 2", "ListVariables false", "FindVariable 1 1"));
  EXPECT_EQ(Device(), "1.1");
  EXPECT_EQ(User(), "2.2");
  EXPECT_TRUE(ordinary.enabled);
  EXPECT_FALSE(user.enabled) << "user variables are given no saved flags";
}

TEST_F(SystemEvents, OnProjectLoadedIndexesNoHiddenVariable) {
  host.variableList = List(Listed(1, 1, "1") + Listed(1, 2));
  host.userVariableList = List(Listed(2, 1, "7") + Listed(2, 2));
  host.SendEvent("OnProjectLoaded");
  EXPECT_EQ(Device(), "1.2");
  EXPECT_EQ(User(), "2.2");
}

TEST_F(SystemEvents, OnProjectLoadedTwiceGivesTheSameMapsAndAppliesTheFlagsAgain) {
  FakeVariable& variable = Know(1, 1, false);
  host.variableList = List(Listed(1, 1));
  host.userVariableList = List(Listed(2, 2));
  State().savedTrapFlags[VariableKey(1, 1)] = true;
  host.SendEvent("OnProjectLoaded");
  Added(8, 8);
  UserAdded(9, 9);
  variable.enabled = false;
  host.SendEvent("OnProjectLoaded");
  EXPECT_EQ(Device(), "1.1");
  EXPECT_EQ(User(), "2.2");
  EXPECT_TRUE(variable.enabled);
}

TEST_F(SystemEvents, OnProjectLoadedDropsVariablesOfAProjectWhoseListCannotBeRead) {
  Added(1, 1);
  UserAdded(2, 2);
  host.variableList = "nothing";
  host.userVariableList = "";
  host.SendEvent("OnProjectLoaded");
  EXPECT_EQ(Device(), "");
  EXPECT_EQ(User(), "");
}

TEST_F(SystemEvents, OnVariableAddedAddsADeviceVariable) {
  Added(5, 7);
  EXPECT_EQ(Device(), "5.7");
  EXPECT_EQ(User(), "");
  EXPECT_THAT(journal.Calls(), ElementsAre("FindVariable 5 7"));
}

TEST_F(SystemEvents, OnVariableAddedAppliesNoSavedFlag) {
  FakeVariable& variable = Know(5, 7, false);
  State().savedTrapFlags[VariableKey(5, 7)] = true;
  Added(5, 7);
  EXPECT_FALSE(variable.enabled);
}

TEST_F(SystemEvents, OnUserVariableAddedAddsAUserVariable) {
  UserAdded(5, 7);
  EXPECT_EQ(Device(), "");
  EXPECT_EQ(User(), "5.7");
  EXPECT_THAT(journal.Calls(), ElementsAre("FindVariable 5 7"));
}

TEST_F(SystemEvents, OnVariableAddedTwiceKeepsTheFirstVariable) {
  FakeVariable& first = Know(5, 7);
  FakeVariable second(5, 7, "second");
  Added(5, 7);
  host.variables[{5, 7}] = &second;
  Added(5, 7);
  EXPECT_EQ(State().deviceVariables.at(VariableKey(5, 7)), &first);
  EXPECT_THAT(journal.Calls(), ElementsAre("FindVariable 5 7"));
}

TEST_F(SystemEvents, WithAnIdOfZeroAddNothingAndAskNothing) {
  for (const Ids& ids : {Ids(0, 7), Ids(7, 0), Ids(0, 0)}) {
    Added(ids.first, ids.second);
    UserAdded(ids.first, ids.second);
  }
  host.SendEvent("OnVariableAdded", {{"iddevice", "7"}});
  host.SendEvent("OnVariableAdded", {{"idvariable", "7"}});
  host.SendEvent("OnUserVariableAdded");
  EXPECT_EQ(Device(), "");
  EXPECT_EQ(User(), "");
  EXPECT_THAT(journal.Calls(), IsEmpty());
}

TEST_F(SystemEvents, OnVariableRemovedRemovesThePairFromBothMaps) {
  Added(5, 7);
  UserAdded(5, 7);
  Added(5, 8);
  UserAdded(5, 9);
  journal.Take();
  Removed(5, 7);
  EXPECT_EQ(Device(), "5.8");
  EXPECT_EQ(User(), "5.9");
  Removed(5, 8);
  Removed(5, 9);
  EXPECT_EQ(Device(), "");
  EXPECT_EQ(User(), "");
  EXPECT_THAT(journal.Calls(), IsEmpty());
}

TEST_F(SystemEvents, OnVariableRemovedRemovesTheDeviceVariableBeforeTheUserVariable) {
  Added(5, 7);
  UserAdded(5, 7);
  const h7::auto_com<H7XML::INode> event =
      devhost::ReadXmlNode("<e name=\"OnVariableRemoved\"><p name=\"iddevice\">5</p><p name=\"idvariable\">7</p></e>");
  int between = 0;
  WithEachXmlCallFailing([&] { agent->OnSystemEvent(*event); },
                         [&](int call) {
                           between += Device().empty() && !User().empty();
                           EXPECT_TRUE(Device().empty() || !User().empty()) << "at XML call " << call;
                         });
  EXPECT_GT(between, 0);
  EXPECT_EQ(User(), "");
}

TEST_F(SystemEvents, OnVariableRemovedForAnUnknownPairDoesNothing) {
  Added(5, 7);
  UserAdded(5, 7);
  Removed(7, 5);
  Removed(5, 0);
  EXPECT_EQ(Device(), "5.7");
  EXPECT_EQ(User(), "5.7");
}

TEST_F(SystemEvents, OnVariableRemovedWithoutBothIdsDoesNothing) {
  Added(1, 7);
  UserAdded(7, 1);
  host.SendEvent("OnVariableRemoved", {{"idvariable", "7"}});
  host.SendEvent("OnVariableRemoved", {{"iddevice", "7"}});
  host.SendEvent("OnVariableRemoved");
  EXPECT_EQ(Device(), "1.7");
  EXPECT_EQ(User(), "7.1");
}

TEST_F(SystemEvents, OnVariableRemovedWithAnIdOfZeroLeavesSuchAPairAlone) {
  host.variableList = List(Listed(0, 7) + Listed(7, 0));
  host.userVariableList = List(Listed(0, 7) + Listed(7, 0));
  host.SendEvent("OnProjectLoaded");
  Removed(0, 7);
  Removed(7, 0);
  EXPECT_EQ(Device(), "0.7 7.0");
  EXPECT_EQ(User(), "0.7 7.0");
}

TEST_F(SystemEvents, OnItemRemovedRemovesAllDeviceVariablesOfTheItemAndNoUserVariable) {
  for (const Ids& ids : {Ids(5, 7), Ids(5, 8), Ids(6, 5)}) {
    Added(ids.first, ids.second);
    UserAdded(ids.first, ids.second);
  }
  journal.Take();
  host.SendEvent("OnItemRemoved", {{"iditem", "5"}, {"idroom", "6"}});
  EXPECT_EQ(Device(), "6.5");
  EXPECT_EQ(User(), "5.7 5.8 6.5");
  EXPECT_THAT(journal.Calls(), IsEmpty());
}

TEST_F(SystemEvents, OnItemRemovedWithoutAnItemChangesNothing) {
  host.variableList = List(Listed(0, 1) + Listed(1, 7) + Listed(5, 7));
  host.SendEvent("OnProjectLoaded");
  host.SendEvent("OnItemRemoved", {{"iditem", "0"}, {"idroom", "5"}});
  host.SendEvent("OnItemRemoved", {{"idroom", "5"}});
  host.SendEvent("OnItemRemoved", {{"iddevice", "5"}});
  host.SendEvent("OnItemRemoved");
  EXPECT_EQ(Device(), "0.1 1.7 5.7");
}

TEST_F(SystemEvents, OfOtherNamesAreIgnored) {
  Added(5, 7);
  journal.Take();
  for (const char* name : {"", "onvariableremoved", "OnVariableRemoved ", "OnVariableChanged", "OnProjectLoadedTwice"}) {
    Deliver("<event name=\"" + std::string(name) +
            "\"><p name=\"iddevice\">5</p><p name=\"idvariable\">7</p><p name=\"iditem\">5</p></event>");
  }
  Deliver("<OnVariableRemoved><p name=\"iddevice\">5</p><p name=\"idvariable\">7</p></OnVariableRemoved>");
  EXPECT_EQ(Device(), "5.7");
  EXPECT_THAT(journal.Calls(), IsEmpty());
}

TEST_F(SystemEvents, AreToldApartByTheirOwnNameNotByTheIdTheyCameUnder) {
  const h7::auto_com<H7XML::INode> event =
      devhost::ReadXmlNode("<e name=\"OnUserVariableAdded\"><p name=\"iddevice\">5</p><p name=\"idvariable\">7</p></e>");
  host.SendEvent(34, *event);
  EXPECT_EQ(Device(), "");
  EXPECT_EQ(User(), "5.7");
}

TEST_F(SystemEvents, MayHoldTheirParametersInAnyOrderAmongOthers) {
  Deliver(
      "<e name=\"OnVariableAdded\"><x name=\"idvariable\">7</x><y name=\"other\">1</y><z/><p name=\"iddevice\">5</p></e>");
  EXPECT_EQ(Device(), "5.7");
}

TEST_F(SystemEvents, AreReadByNamedValuesAndOnlyWantedParametersByTheirText) {
  const h7::auto_com<H7XML::INode> event = devhost::ReadXmlNode(
      "<e name=\"OnVariableAdded\"><p name=\"iddevice\">5</p><p name=\"idroom\">1</p><p name=\"idvariable\">7</p></e>");
  EXPECT_THAT(XmlCallsOf([&] { agent->OnSystemEvent(*event); }),
              ElementsAre("GetNamedString name", "GetChildren ", "First ", "GetNamedString name", "GetValueULong ", "Next ",
                          "GetNamedString name", "Next ", "GetNamedString name", "GetValueULong ", "Next "));
}

TEST_F(SystemEvents, OfTwoParametersOfOneNameTheLaterCounts) {
  Deliver(
      "<e name=\"OnVariableAdded\"><p name=\"iddevice\">1</p><p name=\"idvariable\">7</p><p name=\"iddevice\">5</p></e>");
  EXPECT_EQ(Device(), "5.7");
  Deliver("<e name=\"OnItemRemoved\"><p name=\"iditem\">1</p><p name=\"iditem\">5</p></e>");
  EXPECT_EQ(Device(), "");
}

TEST_F(SystemEvents, SayWhetherTheyChangedAMap) {
  VariableMap map;
  const auto event = [](const std::string& ids) { return devhost::ReadXmlNode("<e>" + ids + "</e>"); };
  const h7::auto_com<H7XML::INode> pair = event("<p name=\"iddevice\">5</p><p name=\"idvariable\">7</p>");
  const h7::auto_com<H7XML::INode> noDevice = event("<p name=\"idvariable\">7</p>");
  const h7::auto_com<H7XML::INode> noVariable = event("<p name=\"iddevice\">5</p>");
  EXPECT_TRUE(agent->AddVariableToMap(map, *pair));
  EXPECT_FALSE(agent->AddVariableToMap(map, *pair)) << "it is there";
  EXPECT_FALSE(agent->AddVariableToMap(map, *noDevice));
  EXPECT_FALSE(agent->AddVariableToMap(map, *noVariable));
  EXPECT_EQ(Pairs(map), "5.7");
  EXPECT_FALSE(agent->RemoveVariableFromMap(map, *noDevice));
  EXPECT_FALSE(agent->RemoveVariableFromMap(map, *noVariable));
  EXPECT_TRUE(agent->RemoveVariableFromMap(map, *pair));
  EXPECT_FALSE(agent->RemoveVariableFromMap(map, *pair)) << "it is gone";
}

TEST_F(SystemEvents, KeepTheCallersIdsForMissingParameters) {
  const h7::auto_com<H7XML::INode> empty = devhost::ReadXmlNode("<e><p name=\"other\">9</p></e>");
  unsigned long first = 11;
  unsigned long second = 12;
  agent->GetIDsFromVariableNode(*empty, first, second);
  agent->GetIDsFromItemNode(*empty, first, second);
  EXPECT_EQ(first, 11U);
  EXPECT_EQ(second, 12U);
}

TEST_F(SystemEvents, NameItemAndRoomByTheirOwnParameters) {
  const h7::auto_com<H7XML::INode> event = devhost::ReadXmlNode(
      "<e><p name=\"idroom\">4294967295</p><p name=\"iditem\">5</p><p name=\"iddevice\">6</p><p "
      "name=\"idvariable\">7</p></e>");
  unsigned long item = 0;
  unsigned long room = 0;
  agent->GetIDsFromItemNode(*event, item, room);
  EXPECT_EQ(item, 5U);
  EXPECT_EQ(room, 4294967295UL);
  unsigned long device = 0;
  unsigned long variable = 0;
  agent->GetIDsFromVariableNode(*event, device, variable);
  EXPECT_EQ(device, 6U);
  EXPECT_EQ(variable, 7U);
}

TEST_F(SystemEvents, NeverInvalidateTheStateNorTellTheTool) {
  host.variableList = List(Listed(1, 1));
  host.SendEvent("OnProjectLoaded");
  Added(5, 7);
  UserAdded(5, 7);
  Removed(5, 7);
  host.SendEvent("OnItemRemoved", {{"iditem", "1"}});
  EXPECT_THAT(CallsOf({"DmInvalidateState", "ConSendDataToUI", "Log"}), IsEmpty());
}

}  // namespace
