#include "devhost/engine/Host.h"

#include <dlfcn.h>
#include <gmock/gmock.h>

#include "devhost/xml/XmlObserver.h"
#include "tests/devhost/support/RecordingObserver.h"

namespace devhost {
namespace {

using Kind = Occurrence::Kind;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::string Module(const std::string& name) {
  return std::string(TEST_MODULE_FOLDER) + "/" + name + ".so";
}

DriverEntry Entry(unsigned long id, const std::string& name, const std::string& module, const std::string& config) {
  DriverEntry entry;
  entry.id = id;
  entry.name = name;
  entry.module = Module(module);
  entry.configXml = config;
  return entry;
}

// Whether the module is still in this process.
bool IsInProcess(const std::string& module) {
  void* const handle = dlopen(Module(module).c_str(), RTLD_NOW | RTLD_NOLOAD);
  if (handle != nullptr) {
    dlclose(handle);
  }
  return handle != nullptr;
}

class AHost : public testing::Test {
 protected:
  void LoadGreeter(unsigned long id, const std::string& greeting) {
    host.Load(Entry(id, "greeter" + std::to_string(id), "well_behaved", "<config greeting='" + greeting + "'/>"));
  }

  // What the host throws, "" for nothing.
  template <class Action>
  static std::string ErrorOf(Action action) {
    try {
      action();
    } catch (const HostError& error) {
      return error.what();
    }
    return "";
  }

  void TearDown() override {
    host.Stop();
    EXPECT_THAT(observer.Texts(Kind::Manners), IsEmpty());
    EXPECT_EQ(LiveXmlObjects(), 0U);
  }

  RecordingObserver observer;
  Host host{observer};
};

TEST_F(AHost, LoadsInitialisesAndTellsSo) {
  LoadGreeter(7, "hi");
  EXPECT_THAT(observer.Kinds(), ElementsAre(Kind::Notification, Kind::Load));
  EXPECT_EQ(observer.all[0].name, "Hello");
  EXPECT_EQ(observer.all[0].text, "<Hello>hi</Hello>");
  EXPECT_EQ(observer.all[1].driverId, 7U);
  EXPECT_EQ(observer.all[1].driverName, "greeter7");
  EXPECT_EQ(observer.all[1].text, Module("well_behaved"));
  EXPECT_EQ(host.Drivers().size(), 1U);
}

TEST_F(AHost, BringsACommandAndItsReply) {
  LoadGreeter(7, "hi");
  observer.all.clear();
  EXPECT_EQ(host.Command(7, "Echo", {{"text", "a b"}, {"number", " 12 "}}),
            "<Echo><text>a b</text><number>12</number><has>yes</has></Echo>");
  EXPECT_THAT(observer.Kinds(), ElementsAre(Kind::Command, Kind::Reply));
  EXPECT_EQ(observer.all[0].name, "Echo");
  EXPECT_EQ(observer.all[0].driverId, 7U);
  EXPECT_EQ(observer.all[0].parameters, (Parameters{{"text", "a b"}, {"number", " 12 "}}));
  EXPECT_EQ(observer.all[1].name, "Echo");
}

TEST_F(AHost, GivesAnEmptyReplyForNoNode) {
  LoadGreeter(7, "hi");
  EXPECT_EQ(host.Command(7, "Nothing", {}), "");
  EXPECT_EQ(observer.all.back().kind, Kind::Reply);
}

TEST_F(AHost, FindsTheOneDriverOfACommand) {
  LoadGreeter(7, "hi");
  EXPECT_EQ(host.Command("GreetFirst", {}), "<Greeting>hi</Greeting>");
  LoadGreeter(3, "ho");
  EXPECT_THAT(ErrorOf([&] { host.Command("GreetFirst", {}); }),
              AllOf(HasSubstr("several drivers"), HasSubstr("7 \"greeter7\""), HasSubstr("3 \"greeter3\"")));
  // Both have the same commands: they are told once.
  EXPECT_EQ(ErrorOf([&] { host.Command("Unheard", {}); }),
            "no driver has registered the command \"Unheard\"; the commands are: greeter7: Echo, GreetAll, GreetFirst, Say, "
            "Nothing, StopListening, ReplaceMe, CountVariables");
}

TEST_F(AHost, AnswersUnknownCommandsAndDriversItself) {
  LoadGreeter(7, "hi");
  observer.all.clear();
  EXPECT_THAT(ErrorOf([&] { host.Command(7, "Unheard", {}); }),
              AllOf(HasSubstr("driver 7 \"greeter7\" has no command \"Unheard\""), HasSubstr("Echo, GreetAll")));
  EXPECT_THAT(ErrorOf([&] { host.Command(8, "Echo", {}); }),
              AllOf(HasSubstr("no driver 8"), HasSubstr("driver 7 \"greeter7\"")));
  EXPECT_THAT(observer.all, IsEmpty());
}

TEST_F(AHost, ListsCommandsInOrderOfRegistration) {
  LoadGreeter(7, "hi");
  EXPECT_THAT(host.Commands(7), ElementsAre("Echo", "GreetAll", "GreetFirst", "Say", "Nothing", "StopListening", "ReplaceMe",
                                            "CountVariables"));
}

TEST_F(AHost, FindsDriversByIdAndQueriesTheEarliestPublished) {
  LoadGreeter(7, "seven");
  LoadGreeter(3, "three");
  LoadGreeter(4000000000UL, "most");
  EXPECT_EQ(host.Command(7, "GreetAll", {}),
            "<Greetings><greeting>three</greeting><greeting>seven</greeting><greeting>most</greeting></Greetings>");
  EXPECT_EQ(host.Command(3, "GreetFirst", {}), "<Greeting>seven</Greeting>");
}

TEST_F(AHost, PassesOnLogNotificationAndInvalidation) {
  LoadGreeter(7, "hi");
  observer.all.clear();
  host.Command(7, "Say", {{"text", "100%"}});
  EXPECT_THAT(observer.Kinds(), ElementsAre(Kind::Command, Kind::Log, Kind::Notification, Kind::Invalidate, Kind::Reply));
  EXPECT_EQ(observer.all[1].level, 3U);
  EXPECT_EQ(observer.all[1].text, "hi says 100%");
  EXPECT_EQ(observer.all[1].driverId, 7U);
  EXPECT_EQ(observer.all[2].text, "<Said>100%</Said>");
  EXPECT_EQ(observer.all[3].driverName, "greeter7");
}

TEST_F(AHost, BringsEventsToTheListenersOfTheirIdInOrderOfRegistration) {
  LoadGreeter(7, "hi");
  LoadGreeter(3, "ho");
  observer.all.clear();
  host.SendEvent("OnItemRemoved", {{"iditem", "5"}, {"idroom", "0"}});
  host.SendEvent("OnVariableAdded", {});
  EXPECT_THAT(observer.Kinds(), ElementsAre(Kind::Event, Kind::Notification, Kind::Notification, Kind::Event));
  EXPECT_EQ(observer.all[0].name, "OnItemRemoved");
  EXPECT_EQ(observer.all[0].parameters, (Parameters{{"iditem", "5"}, {"idroom", "0"}}));
  EXPECT_EQ(observer.all[1].text, "<Heard>OnItemRemoved iditem:5 idroom:0</Heard>");
  EXPECT_EQ(observer.all[1].driverId, 7U);
  EXPECT_EQ(observer.all[2].text, "<Heard>OnItemRemoved iditem:5 idroom:0</Heard>");
  EXPECT_EQ(observer.all[2].driverId, 3U);
}

TEST_F(AHost, DoesNotCallAListenerThatIsUnregisteredDuringTheDelivery) {
  LoadGreeter(7, "hi");
  LoadGreeter(3, "ho");
  observer.all.clear();
  observer.then = [&](const Occurrence& occurrence) {
    if (occurrence.name == "Heard" && occurrence.driverId == 7) {
      host.Command(3, "StopListening", {});
    }
  };
  host.SendEvent("OnProjectLoaded", {});
  EXPECT_THAT(observer.Texts(Kind::Notification), ElementsAre("<Heard>OnProjectLoaded</Heard>"));
}

TEST_F(AHost, DoesNotCallAListenerThatIsAddedDuringTheDelivery) {
  LoadGreeter(7, "hi");
  observer.all.clear();
  observer.then = [&](const Occurrence& occurrence) {
    if (occurrence.name == "Heard" && host.Drivers().size() == 1) {
      LoadGreeter(9, "late");
    }
  };
  host.SendEvent("OnProjectLoaded", {});
  EXPECT_THAT(observer.Texts(Kind::Notification), ElementsAre("<Heard>OnProjectLoaded</Heard>", "<Hello>late</Hello>"));
  observer.then = nullptr;
}

TEST_F(AHost, RefusesUnknownEvents) {
  EXPECT_THAT(ErrorOf([&] { host.SendEvent("OnFire", {}); }),
              AllOf(HasSubstr("no system event \"OnFire\""), HasSubstr("OnItemRemoved")));
  EXPECT_THAT(observer.all, IsEmpty());
}

TEST_F(AHost, LetsNestedCallsPass) {
  LoadGreeter(7, "hi");
  LoadGreeter(3, "ho");
  std::string inner;
  observer.then = [&](const Occurrence& occurrence) {
    if (occurrence.name == "Said") {
      inner = host.Command(3, "GreetFirst", {});
    }
  };
  host.Command(7, "Say", {{"text", "x"}});
  EXPECT_EQ(inner, "<Greeting>hi</Greeting>");
}

TEST_F(AHost, GivesThePersistedState) {
  LoadGreeter(7, "hi");
  EXPECT_EQ(host.GetPersistState(7), "<State>hi</State>");
}

TEST_F(AHost, HasNoVariablesThatNobodyAdded) {
  LoadGreeter(7, "hi");
  EXPECT_EQ(host.Command(7, "CountVariables", {}),
            "<Variables found=\"no\">&lt;variables&gt;&lt;/variables&gt;</Variables>");
}

TEST_F(AHost, DestroysInReverseOrderThenUnloads) {
  LoadGreeter(7, "hi");
  LoadGreeter(3, "ho");
  observer.all.clear();
  std::vector<bool> present;
  observer.then = [&](const Occurrence& occurrence) {
    if (occurrence.kind == Kind::Notification) {
      present.push_back(IsInProcess("well_behaved"));
    }
  };
  host.Stop();
  EXPECT_THAT(observer.Kinds(), ElementsAre(Kind::Notification, Kind::Notification, Kind::Unload, Kind::Unload));
  EXPECT_EQ(observer.all[0].driverId, 3U);
  EXPECT_EQ(observer.all[1].driverId, 7U);
  EXPECT_EQ(observer.all[2].driverId, 3U);
  EXPECT_EQ(observer.all[3].driverId, 7U);
  EXPECT_THAT(present, ElementsAre(true, true));
  EXPECT_FALSE(IsInProcess("well_behaved"));
  EXPECT_THAT(host.Drivers(), IsEmpty());
}

TEST_F(AHost, MayBeUsedAgainAfterAStop) {
  LoadGreeter(7, "hi");
  host.Stop();
  LoadGreeter(7, "again");
  EXPECT_EQ(host.Command(7, "GreetFirst", {}), "<Greeting>again</Greeting>");
}

TEST_F(AHost, IsNotStoppedFromInsideACall) {
  LoadGreeter(7, "hi");
  std::string error;
  observer.then = [&](const Occurrence& occurrence) {
    if (occurrence.name == "Said") {
      error = ErrorOf([&] { host.Stop(); });
    }
  };
  host.Command(7, "Say", {});
  observer.then = nullptr;
  EXPECT_THAT(error, AllOf(HasSubstr("cannot be stopped"), HasSubstr("command \"Say\" of driver 7 \"greeter7\"")));
  EXPECT_EQ(host.Drivers().size(), 1U);
}

TEST_F(AHost, ReportsAFailedInitializeAndGoesOn) {
  host.Load(Entry(7, "seven", "well_behaved", "<config greeting='hi' result='5'/>"));
  EXPECT_THAT(observer.Texts(Kind::Failure), ElementsAre(HasSubstr("could not start: its Initialize returned 5")));
  EXPECT_EQ(observer.all[1].call, "Initialize");
  EXPECT_EQ(host.Command(7, "GreetFirst", {}), "<Greeting>hi</Greeting>");
}

TEST_F(AHost, RefusesAnIdTwice) {
  LoadGreeter(7, "hi");
  EXPECT_THAT(ErrorOf([&] { LoadGreeter(7, "ho"); }), HasSubstr("has the id of driver 7 \"greeter7\""));
  EXPECT_EQ(host.Drivers().size(), 1U);
}

TEST_F(AHost, RefusesAnIdOfMoreThan32Bits) {
  DriverEntry entry = Entry(0, "large", "well_behaved", "<config/>");
  entry.id = static_cast<unsigned long>(0x1FFFFFFFFULL);
  if (entry.id > 0xFFFFFFFFUL) {
    EXPECT_THAT(ErrorOf([&] { host.Load(entry); }), HasSubstr("8589934591"));
    EXPECT_THAT(host.Drivers(), IsEmpty());
  }
}

TEST_F(AHost, RefusesAConfigurationThatIsNoXml) {
  EXPECT_THAT(ErrorOf([&] { host.Load(Entry(7, "seven", "well_behaved", "<config>")); }),
              AllOf(HasSubstr("driver 7 \"seven\": line 1"), HasSubstr("no XML")));
  EXPECT_FALSE(IsInProcess("well_behaved"));
}

TEST_F(AHost, TellsTheDriverWhenItsModuleIsMissing) {
  EXPECT_THAT(ErrorOf([&] { host.Load(Entry(7, "seven", "missing", "")); }),
              AllOf(HasSubstr("driver 7 \"seven\""), HasSubstr("missing.so"), HasSubstr("No such file")));
  EXPECT_THAT(observer.all, IsEmpty());
}

TEST_F(AHost, RefusesAModuleThatMakesNoDriver) {
  EXPECT_THAT(ErrorOf([&] { host.Load(Entry(7, "seven", "no_driver", "")); }), HasSubstr("returned none"));
  EXPECT_THAT(host.Drivers(), IsEmpty());
  EXPECT_FALSE(IsInProcess("no_driver"));
}

TEST_F(AHost, TurnsADriversExceptionsIntoHostErrors) {
  host.Load(Entry(5, "rude", "rude", ""));
  EXPECT_EQ(ErrorOf([&] { host.Command(5, "Throw", {}); }),
            "an exception came out of command \"Throw\" of driver 5 \"rude\": no <answer> today");
  EXPECT_EQ(ErrorOf([&] { host.Command(5, "ThrowOddly", {}); }),
            "an exception came out of command \"ThrowOddly\" of driver 5 \"rude\": something that is no std::exception");
  EXPECT_EQ(ErrorOf([&] { host.GetPersistState(5); }),
            "an exception came out of GetPersistState of driver 5 \"rude\": no state today");
  EXPECT_EQ(LiveXmlObjects(), 0U);
}

TEST_F(AHost, LetsAllListenersHearAnEventBeforeItThrows) {
  host.Load(Entry(5, "rude", "rude", ""));
  host.Command(5, "Listen", {});
  LoadGreeter(7, "hi");
  observer.all.clear();
  EXPECT_EQ(ErrorOf([&] { host.SendEvent("OnProjectLoaded", {}); }),
            "an exception came out of event \"OnProjectLoaded\" of driver 5 \"rude\": not listening");
  EXPECT_THAT(observer.Texts(Kind::Notification), ElementsAre("<Heard>OnProjectLoaded</Heard>"));
}

TEST_F(AHost, LeavesNothingLoadedWhenRegisterCommandsThrows) {
  EXPECT_THAT(ErrorOf([&] { host.Load(Entry(5, "rude", "throws_in_register_commands", "")); }),
              HasSubstr("an exception came out of RegisterCommands of driver 5 \"rude\": no commands today"));
  EXPECT_THAT(host.Drivers(), IsEmpty());
  EXPECT_THAT(observer.all, IsEmpty());
  EXPECT_FALSE(IsInProcess("throws_in_register_commands"));
}

TEST_F(AHost, IsTheOnlyOneInItsProcess) {
  RecordingObserver other;
  EXPECT_THAT(ErrorOf([&] { Host second(other); }), HasSubstr("only one"));
}

TEST(ADestroyedHost, StopsFirstAndMakesRoomForAnother) {
  RecordingObserver observer;
  {
    Host host(observer);
    host.Load(Entry(7, "seven", "well_behaved", ""));
  }
  EXPECT_EQ(observer.all.back().kind, Kind::Unload);
  Host another(observer);
  EXPECT_EQ(LiveXmlObjects(), 0U);
}

TEST(ADriverThatThrowsInItsDestructor, EndsTheProcessWithItsName) {
  EXPECT_DEATH(
      {
        RecordingObserver observer;
        Host host(observer);
        host.Load(Entry(5, "rude", "throws_in_destructor", ""));
        host.Stop();
      },
      "driver 5 \"rude\" ended the process while it was destroyed");
}

}  // namespace
}  // namespace devhost
