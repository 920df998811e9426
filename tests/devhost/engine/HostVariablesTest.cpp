// The variables of a host: what drivers see of them, and when they go.
#include "devhost/engine/HostVariables.h"

#include <limits>
#include <string>

#include "tests/devhost/support/HostFixture.h"

namespace devhost {
namespace {

using Kind = Occurrence::Kind;
using testing::ElementsAre;
using testing::IsEmpty;

class HostVariablesTest : public HostFixture {
 protected:
  HostVariablesTest() {
    Load(1, "keeper");
    observer.all.clear();
  }
  void TearDown() override {
    HostFixture::TearDown();
    EXPECT_THAT(Reports(), IsEmpty());
  }

  void Hold(unsigned long device, unsigned long variable) {
    host.Command(1, "Hold", {{"device", std::to_string(device)}, {"variable", std::to_string(variable)}});
    observer.all.clear();
  }
  std::string HeldName() { return host.Command(1, "HeldName", {}); }

  // "DEVICE ID NAME FLAG" of each variable.
  std::vector<std::string> Listed(Host::Flags flags = Host::Flags::Current) {
    std::vector<std::string> listed;
    for (const VariableEntry& entry : host.Variables(flags)) {
      listed.push_back(std::to_string(entry.deviceId) + " " + std::to_string(entry.variableId) + " " + entry.name +
                       (entry.trapEnabled ? " on" : " off"));
    }
    return listed;
  }
};

using AVariableOfAHost = HostVariablesTest;
using AnItemOfAHost = HostVariablesTest;

TEST_F(AVariableOfAHost, ComesWithTheEventOfItsKind) {
  host.AddVariable({5, 7, "lamp", false, false, false});
  host.AddVariable({4294967295UL, 1, "scene", true, false, false});
  EXPECT_THAT(observer.Texts(Kind::Event), ElementsAre("OnVariableAdded iddevice=5 idvariable=7",
                                                       "OnUserVariableAdded iddevice=4294967295 idvariable=1"));
}

TEST_F(AVariableOfAHost, ComesWithoutAnEventWhenItIsPartOfTheProject) {
  host.DefineVariable({5, 7, "lamp", false, false, true});
  EXPECT_THAT(observer.all, IsEmpty());
  EXPECT_TRUE(host.TrapEnabled(5, 7));
}

TEST_F(AVariableOfAHost, IsNotFoundAnyMoreButStillThereWhenItsRemovalIsTold) {
  host.DefineVariable({5, 7, "lamp", false, false, false});
  Hold(5, 7);
  host.RemoveVariable(5, 7, false);
  EXPECT_THAT(observer.Texts(Kind::Event), ElementsAre("OnVariableRemoved iddevice=5 idvariable=7"));
  EXPECT_THAT(observer.Texts(Kind::Notification),
              ElementsAre("<Heard held=\"lamp\" found=\"no\">OnVariableRemoved</Heard>"));
}

TEST_F(AVariableOfAHost, StaysForADriverThatFailedToHearOfItsRemoval) {
  host.DefineVariable({5, 7, "a name that is too long to stand inside a string object", false, false, false});
  Hold(5, 7);
  host.Command(1, "ThrowOn", {{"event", "OnVariableRemoved"}});
  EXPECT_THROW(host.RemoveVariable(5, 7, false), HostError);
  EXPECT_EQ(HeldName(), "<Held>a name that is too long to stand inside a string object</Held>");
  EXPECT_THAT(Listed(), IsEmpty());
}

TEST_F(AVariableOfAHost, StaysWhenListenersWouldTakeItsIdForAMissingOne) {
  host.DefineVariable({0, 7, "a name that is too long to stand inside a string object", false, false, false});
  Hold(0, 7);
  host.RemoveVariable(0, 7, false);
  EXPECT_EQ(HeldName(), "<Held>a name that is too long to stand inside a string object</Held>");
  host.DefineVariable({5, 0, "another name that is too long to stand inside a string object", false, false, false});
  Hold(5, 0);
  host.RemoveVariable(5, 0, false);
  EXPECT_EQ(HeldName(), "<Held>another name that is too long to stand inside a string object</Held>");
  EXPECT_THAT(Listed(), IsEmpty());
}

TEST_F(AVariableOfAHost, CanComeAgainAfterItsRemoval) {
  host.AddVariable({5, 7, "lamp", false, false, false});
  host.RemoveVariable(5, 7, false);
  host.AddVariable({5, 7, "other", true, false, false});
  EXPECT_THAT(Listed(), ElementsAre("5 7 other off"));
  EXPECT_THAT(observer.Texts(Kind::Event),
              ElementsAre("OnVariableAdded iddevice=5 idvariable=7", "OnVariableRemoved iddevice=5 idvariable=7",
                          "OnUserVariableAdded iddevice=5 idvariable=7"));
}

TEST_F(AVariableOfAHost, HasAFlagThatChangesWithoutAnEvent) {
  host.DefineVariable({5, 7, "lamp", false, false, false});
  host.DefineVariable({5, 8, "blind", false, false, true});
  host.SetTrapEnabled(5, 7, true);
  host.SetTrapEnabled(5, 8, false);
  EXPECT_THAT(Listed(), ElementsAre("5 7 lamp on", "5 8 blind off"));
  EXPECT_THAT(Listed(Host::Flags::Initial), ElementsAre("5 7 lamp off", "5 8 blind on"));
  EXPECT_THAT(observer.all, IsEmpty());
}

TEST_F(AVariableOfAHost, IsNamedInEveryRefusalAndNoEventGoesOut) {
  host.DefineVariable({5, 7, "lamp", false, false, false});
  host.DefineVariable({5, 8, "scene", true, false, false});
  EXPECT_EQ(ErrorOf([&] {
              host.AddVariable({5, 7, "x", true, false, false});
            }),
            "there is a variable 7 of device 5 already, \"lamp\"; allowed: each pair of ids once, user variables included");
  EXPECT_EQ(ErrorOf([&] {
              host.DefineVariable({5, 8, "x", false, false, false});
            }),
            "there is a user variable 8 of device 5 already, \"scene\"; allowed: each pair of ids once, user variables "
            "included");
  EXPECT_EQ(ErrorOf([&] { host.RemoveVariable(5, 9, false); }), "there is no variable 9 of device 5");
  EXPECT_EQ(ErrorOf([&] { host.RemoveVariable(5, 8, false); }), "variable 8 of device 5 is a user variable");
  EXPECT_EQ(ErrorOf([&] { host.RemoveVariable(5, 7, true); }), "variable 7 of device 5 is not a user variable");
  EXPECT_EQ(ErrorOf([&] { host.SetTrapEnabled(9, 9, true); }), "there is no variable 9 of device 9");
  EXPECT_EQ(ErrorOf([&] { host.TrapEnabled(9, 9); }), "there is no variable 9 of device 9");
  if (std::numeric_limits<unsigned long>::max() > 4294967295UL) {
    EXPECT_EQ(ErrorOf([&] {
                host.AddVariable({4294967295UL + 1, 7, "x", false, false, false});
              }),
              "variable 7 of device 4294967296 cannot be added; ids go up to 4294967295");
  }
  EXPECT_THAT(observer.all, IsEmpty());
  EXPECT_THAT(Listed(), ElementsAre("5 7 lamp off", "5 8 scene off"));
}

TEST_F(AnItemOfAHost, GoesWithItsVariablesAndOneEvent) {
  for (const VariableEntry& entry :
       {VariableEntry{4, 1, "a", false, false, false}, VariableEntry{5, 1, "b", false, false, false},
        VariableEntry{5, 2, "c", false, true, false}, VariableEntry{5, 3, "u", true, false, false}}) {
    host.DefineVariable(entry);
  }
  Hold(5, 2);
  host.RemoveItem(5, 3);
  EXPECT_THAT(observer.Texts(Kind::Event), ElementsAre("OnItemRemoved iditem=5 idroom=3"));
  EXPECT_THAT(observer.Texts(Kind::Notification), ElementsAre("<Heard held=\"c\" found=\"no\">OnItemRemoved</Heard>"));
  EXPECT_THAT(Listed(), ElementsAre("4 1 a off", "5 3 u off"));
}

TEST_F(AnItemOfAHost, WithoutAnIdLeavesTheVariablesThatListenersMayHold) {
  host.DefineVariable({0, 7, "a name that is too long to stand inside a string object", false, false, false});
  Hold(0, 7);
  host.RemoveItem(0, 0);
  EXPECT_EQ(HeldName(), "<Held>a name that is too long to stand inside a string object</Held>");
}

TEST_F(AnItemOfAHost, NeedsNoVariables) {
  host.RemoveItem(99, 0);
  EXPECT_THAT(observer.Texts(Kind::Event), ElementsAre("OnItemRemoved iditem=99 idroom=0"));
}

TEST_F(HostVariablesTest, TellsThatTheProjectHasLoaded) {
  host.LoadProject();
  EXPECT_THAT(observer.Texts(Kind::Event), ElementsAre("OnProjectLoaded"));
}

TEST(TheVariablesOfAHost, AreBounded) {
  VariableManager manager;
  HostVariables variables(manager, 2);
  variables.Add({5, 1, "a"});
  variables.Add({5, 2, "b"});
  try {
    variables.Add({5, 3, "c"});
    ADD_FAILURE() << "a third one was added";
  } catch (const HostError& error) {
    EXPECT_STREQ(error.what(), "variable 3 of device 5 cannot be added; a project has up to 2 variables");
  }
  // One that is there already gets the same message as ever.
  try {
    variables.Add({5, 2, "c"});
    ADD_FAILURE() << "a variable was added twice";
  } catch (const HostError& error) {
    EXPECT_THAT(error.what(), testing::StartsWith("there is a variable 2 of device 5 already"));
  }
}

}  // namespace
}  // namespace devhost
