#include "agent/Exports.h"
#include "host/H7XML.h"
#include "tests/support/XmlFaults.h"
#include "tests/variables/VariablesFixture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ThePersistedState : public VariablesTest {
 protected:
  std::string Written(unsigned long reserved = 0) { return Text(*agent.Driver().GetPersistState(reserved)); }

  void Read(const std::string& xml) {
    const h7::auto_com<H7XML::INode> state = devhost::ReadXmlNode(xml);
    agent->FromXml(state.Get());
  }

  std::string Saved() {
    std::string saved;
    for (const auto& entry : State().savedTrapFlags) {
      saved += (saved.empty() ? "" : " ") + std::to_string(entry.first.first) + '.' + std::to_string(entry.first.second) +
               (entry.second ? "+" : "-");
    }
    return saved;
  }
};

const char kEmpty[] = "<SNMPState version=\"1.0.0.0\"><variables/></SNMPState>";

TEST_F(ThePersistedState, OfAnEmptyProjectHasAVersionAndNoVariable) {
  EXPECT_EQ(Written(), kEmpty);
  EXPECT_THAT(journal.Calls(), IsEmpty());
}

TEST_F(ThePersistedState, DoesNotDependOnTheHostsArgument) {
  EXPECT_EQ(Written(4294967295UL), kEmpty);
}

TEST_F(ThePersistedState, CarriesTheExportedVersion) {
  EXPECT_EQ(agent.Driver().GetPersistState(0)->GetNamedString("version"), versionString);
}

TEST_F(ThePersistedState, WritesVariablesInTheOrderOfTheirIds) {
  for (const Ids& ids : {Ids(2, 1), Ids(1, 9), Ids(1, 4)}) {
    Know(ids.first, ids.second);
    Added(ids.first, ids.second);
  }
  EXPECT_EQ(Written(),
            "<SNMPState version=\"1.0.0.0\"><variables>"
            "<variable deviceid=\"1\" variableid=\"4\" name=\"v\" snmpTrapEnabled=\"false\"/>"
            "<variable deviceid=\"1\" variableid=\"9\" name=\"v\" snmpTrapEnabled=\"false\"/>"
            "<variable deviceid=\"2\" variableid=\"1\" name=\"v\" snmpTrapEnabled=\"false\"/>"
            "</variables></SNMPState>");
}

TEST_F(ThePersistedState, WritesFourAttributesInTheirOrderWithTheFlagAsItIsNow) {
  FakeVariable& variable = Know(4294967295UL, 2147483648UL, false);
  variable.name = "L\xC3\xA4mp <&>";
  Added(4294967295UL, 2147483648UL);
  variable.enabled = true;
  EXPECT_EQ(Written(),
            "<SNMPState version=\"1.0.0.0\"><variables><variable deviceid=\"4294967295\" variableid=\"2147483648\" "
            "name=\"L\xC3\xA4mp &lt;&amp;&gt;\" snmpTrapEnabled=\"true\"/></variables></SNMPState>");
}

TEST_F(ThePersistedState, TakesIdsFromTheVariableNotFromTheKey) {
  FakeVariable& variable = Know(5, 7);
  variable.ids = VariableKey(50, 70);
  Added(5, 7);
  EXPECT_THAT(Written(), testing::HasSubstr("deviceid=\"50\" variableid=\"70\""));
}

TEST_F(ThePersistedState, LeavesOutAPairWithoutAVariable) {
  Know(5, 8);
  Added(5, 7);
  Added(5, 8);
  Added(5, 9);
  EXPECT_EQ(Written(),
            "<SNMPState version=\"1.0.0.0\"><variables>"
            "<variable deviceid=\"5\" variableid=\"8\" name=\"v\" snmpTrapEnabled=\"false\"/></variables></SNMPState>");
}

TEST_F(ThePersistedState, NeverHoldsAUserVariable) {
  Know(5, 7, true);
  UserAdded(5, 7);
  EXPECT_EQ(Written(), kEmpty);
}

TEST_F(ThePersistedState, NeverHoldsASavedFlagWithoutAVariable) {
  Read("<s><variables><variable deviceid=\"5\" variableid=\"8\" snmpTrapEnabled=\"true\"/></variables></s>");
  host.SendEvent("OnProjectLoaded");
  EXPECT_EQ(Written(), kEmpty);
  EXPECT_EQ(Saved(), "5.8+");
}

TEST_F(ThePersistedState, IsMadeAnewEachTime) {
  const h7::auto_com<H7XML::INode> first = agent.Driver().GetPersistState(0);
  const h7::auto_com<H7XML::INode> second = agent.Driver().GetPersistState(0);
  EXPECT_NE(first.Get(), second.Get());
  first->SetNamedString("version", "changed");
  EXPECT_EQ(Text(*second), kEmpty);
}

TEST_F(ThePersistedState, IsReadIntoTheSavedFlagsOnly) {
  FakeVariable& variable = Know(5, 7, false);
  Added(5, 7);
  journal.Take();
  Read(
      "<SNMPState version=\"1.0.0.0\"><variables>"
      "<variable deviceid=\"5\" variableid=\"7\" name=\"v\" snmpTrapEnabled=\"true\"/>"
      "<variable deviceid=\"1\" variableid=\"4294967295\" name=\"v\" snmpTrapEnabled=\"false\"/></variables></SNMPState>");
  EXPECT_EQ(Saved(), "1.4294967295- 5.7+");
  EXPECT_EQ(Pairs(State().deviceVariables), "5.7");
  EXPECT_EQ(Pairs(State().userVariables), "");
  EXPECT_FALSE(variable.enabled) << "flags are applied when the project has loaded";
  EXPECT_THAT(journal.Calls(), IsEmpty());
}

TEST_F(ThePersistedState, IsReadWhateverItsNamesAndVersion) {
  Read("<other version=\"9\"><variables><x deviceid=\"1\" variableid=\"2\" snmpTrapEnabled=\"true\"/></variables></other>");
  EXPECT_EQ(Saved(), "1.2+");
}

TEST_F(ThePersistedState, RestoresTheLastOfTwoFlagsForOneVariable) {
  Read(
      "<s><variables><v deviceid=\"1\" variableid=\"2\" snmpTrapEnabled=\"true\"/>"
      "<v deviceid=\"1\" variableid=\"2\" snmpTrapEnabled=\"false\"/></variables></s>");
  EXPECT_EQ(Saved(), "1.2-");
  Read(
      "<s><variables><v deviceid=\"1\" variableid=\"2\" snmpTrapEnabled=\"false\"/>"
      "<v deviceid=\"1\" variableid=\"2\" snmpTrapEnabled=\"true\"/></variables></s>");
  EXPECT_EQ(Saved(), "1.2+");
}

TEST_F(ThePersistedState, TakesMissingAttributesAsZeroAndFalse) {
  Read("<s><variables><v/><v deviceid=\"x\" variableid=\"2\" snmpTrapEnabled=\"maybe\"/></variables></s>");
  EXPECT_EQ(Saved(), "0.0- 0.2-");
}

TEST_F(ThePersistedState, ReplacesEarlierFlags) {
  State().savedTrapFlags[VariableKey(9, 9)] = true;
  Read("<s><variables><v deviceid=\"1\" variableid=\"2\"/></variables></s>");
  EXPECT_EQ(Saved(), "1.2-");
}

TEST_F(ThePersistedState, WithoutVariablesLeavesNoFlag) {
  for (const char* state :
       {"<s/>", "<s><other><v deviceid=\"1\"/></other></s>", "<s><x><variables><v/></variables></x></s>"}) {
    State().savedTrapFlags[VariableKey(9, 9)] = true;
    Read(state);
    EXPECT_EQ(Saved(), "") << state;
  }
}

TEST_F(ThePersistedState, EmptiesTheFlagsBeforeAnythingElse) {
  struct ThrowAtOnce : devhost::XmlObserver {
    void OnXmlCall(const char*, const char*) override { throw std::runtime_error("xml"); }
  } observer;
  State().savedTrapFlags[VariableKey(9, 9)] = true;
  const h7::auto_com<H7XML::INode> state = devhost::ReadXmlNode("<s/>");
  devhost::SetXmlObserver(&observer);
  EXPECT_THROW(agent->FromXml(state.Get()), std::runtime_error);
  devhost::SetXmlObserver(nullptr);
  EXPECT_EQ(Saved(), "");
}

TEST_F(ThePersistedState, ComesBackFlagForFlag) {
  Know(1, 4, true);
  Know(1, 9, false);
  Know(4294967295UL, 1, true);
  for (const Ids& ids : {Ids(1, 4), Ids(1, 9), Ids(4294967295UL, 1)}) {
    Added(ids.first, ids.second);
  }
  const h7::auto_com<H7XML::INode> state = agent.Driver().GetPersistState(0);
  agent->FromXml(state.Get());
  EXPECT_EQ(Saved(), "1.4+ 1.9- 4294967295.1+");
}

TEST_F(ThePersistedState, PutsFlagsBackWhenTheProjectOfTheNextLifeHasLoaded) {
  FakeVariable& variable = Know(5, 7, true);
  Added(5, 7);
  const h7::auto_com<H7XML::INode> state = devhost::ReadXmlNode(Written());
  variable.enabled = false;
  host.variableList = List(Listed(5, 7));
  agent.Initialize(state.Get());
  EXPECT_FALSE(variable.enabled);
  host.SendEvent("OnProjectLoaded");
  EXPECT_TRUE(variable.enabled);
}

TEST_F(ThePersistedState, IsBuiltInThisOrder) {
  Know(5, 7);
  Added(5, 7);
  const Calls calls = XmlCallsOf([this] { agent.Driver().GetPersistState(0); });
  EXPECT_THAT(calls,
              ElementsAre("CreateXmlNode SNMPState", "SetNamedString version", "Create ", "SetName variables", "SetValue ",
                          "Create ", "SetName variable", "SetValue ", "SetNamedULong deviceid", "SetNamedULong variableid",
                          "SetNamedString name", "SetNamedString snmpTrapEnabled", "AppendChild ", "AppendChild "));
}

TEST_F(ThePersistedState, AsksEachVariableOnceForItsIdsThenItsNameThenItsFlag) {
  NotingVariable second(journal, 5, 7);
  NotingVariable first(journal, 1, 20);
  VariableMap map;
  map[VariableKey(5, 7)] = &second;
  map[VariableKey(1, 20)] = &first;
  const h7::auto_com<H7XML::INode> parent = H7XML::CreateXmlNode("variables", "");
  agent->VariableMapToXml(parent.Get(), map);
  EXPECT_THAT(journal.Calls(), ElementsAre("1.20.GetIds", "1.20.GetName", "1.20.TrapEnabled", "5.7.GetIds", "5.7.GetName",
                                           "5.7.TrapEnabled"));
}

TEST_F(ThePersistedState, AsksAVariableNothingBeforeItsElementHasNameAndValue) {
  struct Observer final : devhost::XmlObserver {
    explicit Observer(Journal& calls) : journal(calls) {}
    void OnXmlCall(const char* operation, const char*) override { journal.Note(operation); }
    Journal& journal;
  } observer(journal);
  NotingVariable variable(journal, 5, 7);
  VariableMap map;
  map[VariableKey(5, 7)] = &variable;
  const h7::auto_com<H7XML::INode> parent = H7XML::CreateXmlNode("variables", "");
  devhost::SetXmlObserver(&observer);
  agent->VariableMapToXml(parent.Get(), map);
  devhost::SetXmlObserver(nullptr);
  EXPECT_THAT(journal.Calls(),
              ElementsAre("Create", "SetName", "SetValue", "5.7.GetIds", "SetNamedULong", "SetNamedULong", "5.7.GetName",
                          "SetNamedString", "5.7.TrapEnabled", "SetNamedString", "AppendChild"));
}

TEST_F(ThePersistedState, IsReadFromItsAttributesAndNoOthers) {
  const h7::auto_com<H7XML::INode> state = devhost::ReadXmlNode(
      "<SNMPState version=\"1.0.0.0\"><other/><variables>"
      "<variable deviceid=\"8\" variableid=\"9\" name=\"v\" snmpTrapEnabled=\"true\">1</variable></variables></SNMPState>");
  EXPECT_THAT(XmlCallsOf([&] { agent->FromXml(state.Get()); }),
              ElementsAre("GetChild variables", "GetChildren ", "First ", "GetNamedULong deviceid",
                          "GetNamedULong variableid", "GetNamedBool snmpTrapEnabled", "Next "));
}

TEST_F(ThePersistedState, LeavesNoFlagBehindThatCouldNotBeRead) {
  struct FlagsFail : devhost::XmlObserver {
    void OnXmlCall(const char* operation, const char*) override {
      if (operation == std::string("GetNamedBool")) {
        throw std::runtime_error("xml");
      }
    }
  } observer;
  const h7::auto_com<H7XML::INode> state = devhost::ReadXmlNode(
      "<SNMPState><variables><variable deviceid=\"8\" variableid=\"9\" snmpTrapEnabled=\"true\"/></variables></SNMPState>");
  devhost::SetXmlObserver(&observer);
  EXPECT_THROW(agent->FromXml(state.Get()), std::runtime_error);
  devhost::SetXmlObserver(nullptr);
  EXPECT_EQ(Pairs(State().savedTrapFlags), "");
}

TEST_F(ThePersistedState, LeaksNothingWhereverItsBuildingOrReadingFails) {
  Know(5, 7);
  Added(5, 7);
  const h7::auto_com<H7XML::INode> state = devhost::ReadXmlNode(Written());
  const std::size_t before = devhost::LiveXmlObjects();
  const int runs = WithEachXmlCallFailing(
      [&] {
        agent.Driver().GetPersistState(0);
        agent->FromXml(state.Get());
      },
      [&](int call) { EXPECT_EQ(devhost::LiveXmlObjects(), before) << "at XML call " << call; });
  EXPECT_GT(runs, 20);
}

}  // namespace
