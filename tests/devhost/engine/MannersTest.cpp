// Each rule of the host, broken by a driver: who did it and what is named, and the host goes on working.
#include <gmock/gmock.h>

#include <cstdint>
#include <thread>

#include "devhost/engine/Host.h"
#include "devhost/xml/XmlObserver.h"
#include "tests/devhost/support/RecordingObserver.h"

namespace devhost {
namespace {

using Kind = Occurrence::Kind;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

std::string Module(const std::string& name) {
  return std::string(TEST_MODULE_FOLDER) + "/" + name + ".so";
}

class ARudeDriver : public testing::Test {
 protected:
  void Load(unsigned long id, const std::string& module, const std::string& config = "<config/>") {
    DriverEntry entry;
    entry.id = id;
    entry.name = module + std::to_string(id);
    entry.module = Module(module);
    entry.configXml = config;
    host.Load(entry);
  }

  std::vector<std::string> Reports() const { return observer.Texts(Kind::Manners); }

  void TearDown() override {
    host.Stop();
    EXPECT_EQ(host.MannersCount(), Reports().size());
    EXPECT_EQ(LiveXmlObjects() - liveAtStart, leaked);
  }

  // Everything is named once that led to the report: driver, rule, place.
  void ExpectOneReport(const std::string& what) {
    EXPECT_THAT(Reports(), ElementsAre(AllOf(HasSubstr(what), Not(HasSubstr("rude5")))));
    for (const Occurrence& occurrence : observer.all) {
      if (occurrence.kind == Kind::Manners) {
        EXPECT_EQ(occurrence.driverId, 5U);
        EXPECT_EQ(occurrence.driverName, "rude5");
      }
    }
  }

  const std::size_t liveAtStart = LiveXmlObjects();
  std::size_t leaked = 0;
  RecordingObserver observer;
  Host host{observer};
};

TEST_F(ARudeDriver, IsNamedForReleasingTwice) {
  Load(5, "rude");
  host.Command(5, "ReleaseTwice", {});
  ExpectOneReport("released once more than it was referenced, by module \"" + Module("rude") +
                  "\", during command \"ReleaseTwice\"");
}

TEST_F(ARudeDriver, IsNamedForUsingANodeAfterItsRelease) {
  Load(5, "rude");
  host.Command(5, "UseAfterRelease", {});
  ExpectOneReport("used (SetValue) after its last reference was released, by module");
}

TEST_F(ARudeDriver, IsNamedForAppendingANodeToItself) {
  Load(5, "rude");
  host.Command(5, "AppendToItself", {});
  ExpectOneReport("node \"Ring\" was appended to itself");
}

TEST_F(ARudeDriver, IsNamedForNodesLeftAlive) {
  Load(5, "rude");
  Load(7, "well_behaved");
  host.Command(5, "LeakNode", {});
  host.Stop();
  ExpectOneReport("left 1 XML object alive: node \"Leaked\", by module \"" + Module("rude") + "\"");
  leaked = 1;
}

TEST_F(ARudeDriver, IsNamedOnceForManyNodesLeftAlive) {
  Load(5, "rude");
  host.Command(5, "LeakFive", {});
  host.Stop();
  ExpectOneReport("left 5 XML objects alive: node \"Leaked\", node \"Leaked\", node \"Leaked\", ...");
  leaked = 5;
}

TEST_F(ARudeDriver, IsNamedForKeepingANodeOfTheHost) {
  Load(5, "rude");
  host.Command(5, "KeepEvent", {});
  host.SendEvent("OnItemRemoved", {});
  host.Stop();
  ExpectOneReport("left 1 XML object alive: node \"event\"");
  leaked = 1;
}

TEST_F(ARudeDriver, IsNotBlamedForWhatAnEarlierHostLeftAlive) {
  Load(7, "well_behaved");
  host.Stop();
  EXPECT_THAT(Reports(), IsEmpty());
}

TEST_F(ARudeDriver, IsNamedForListenersLeftBehind) {
  Load(5, "rude");
  host.Command(5, "LeaveListener", {});
  host.Stop();
  EXPECT_THAT(Reports(), ElementsAre(AllOf(StartsWith("left a listener for event \"OnProjectLoaded\" behind")),
                                     AllOf(StartsWith("left a listener for event \"OnVariableAdded\" behind"))));
  host.SendEvent("OnProjectLoaded", {});  // nobody is called any more
}

TEST_F(ARudeDriver, IsNamedForRegistrationsLeftBehind) {
  Load(7, "well_behaved");
  Load(5, "rude");
  host.Command(5, "LeaveRegistration", {});
  host.Stop();
  ExpectOneReport("left its registration under \"rude.Left\" behind");
}

TEST_F(ARudeDriver, IsNamedForCommandsLeftBehind) {
  Load(5, "rude");
  host.Command(5, "LeaveCommand", {});
  host.Stop();
  ExpectOneReport("left command \"TooLate\" behind");
}

TEST_F(ARudeDriver, IsNamedForRegisteringACommandTwiceAndTheLaterHandlerCounts) {
  Load(5, "rude");
  host.Command(5, "RegisterTwice", {});
  ExpectOneReport("command \"Double\" was registered twice");
  EXPECT_THROW(host.Command(5, "Double", {}), HostError);
}

TEST_F(ARudeDriver, IsNamedForTheWrongIdInItsInitialize) {
  Load(5, "rude", "<config wrongId='true'/>");
  ExpectOneReport("passed the id 6 to its base's Initialize");
}

TEST_F(ARudeDriver, IsNamedForWhatItDoesBeforeInitialize) {
  Load(5, "too_early");
  EXPECT_THAT(Reports(), ElementsAre(StartsWith("called ConSendDataToUI before Initialize"),
                                     StartsWith("called DmInvalidateState before Initialize"),
                                     HasSubstr("called RegisterQuery before Initialize"),
                                     HasSubstr("called RegisterUICmd before Initialize"),
                                     StartsWith("its Initialize did not call the base's")));
  EXPECT_THAT(observer.Texts(Kind::Notification), IsEmpty());
  EXPECT_THAT(observer.Texts(Kind::Invalidate), IsEmpty());
  EXPECT_THAT(observer.Texts(Kind::Log), IsEmpty());  // it would log that it was published
  EXPECT_THAT(host.Commands(5), IsEmpty());
}

TEST_F(ARudeDriver, LeavesNothingLoadedWhenItsConstructorThrows) {
  EXPECT_THROW(Load(5, "throws_in_constructor"), HostError);
  EXPECT_THAT(host.Drivers(), IsEmpty());
  EXPECT_THAT(Reports(), ElementsAre(HasSubstr("left a listener for event \"OnProjectLoaded\" behind"),
                                     HasSubstr("left 1 XML object alive: node \"Unfinished\"")));
  host.SendEvent("OnProjectLoaded", {});  // its listener is gone
  leaked = 1;
}

TEST_F(ARudeDriver, LeavesNothingLoadedWhenItsInitializeThrows) {
  EXPECT_THROW(Load(5, "rude", "<config throw='true'/>"), HostError);
  EXPECT_THAT(host.Drivers(), IsEmpty());
  ExpectOneReport("left its registration under \"rude.Early\" behind");
  EXPECT_THAT(observer.Texts(Kind::Load), IsEmpty());
}

TEST_F(ARudeDriver, IsRefusedWhenItNotifiesFromASecondThread) {
  Load(5, "rude");
  host.Command(5, "NotifyFromThread", {});
  ExpectOneReport("ConSendDataToUI came from a second thread; it was refused, during command \"NotifyFromThread\"");
  EXPECT_THAT(observer.Texts(Kind::Notification), IsEmpty());
}

TEST_F(ARudeDriver, IsRefusedWhenItInvalidatesItsStateFromASecondThread) {
  Load(5, "rude");
  host.Command(5, "InvalidateFromThread", {});
  ExpectOneReport("DmInvalidateState came from a second thread; it was refused");
  EXPECT_THAT(observer.Texts(Kind::Invalidate), IsEmpty());
}

TEST_F(ARudeDriver, IsRefusedWhenItListensFromASecondThread) {
  Load(5, "rude");
  host.Command(5, "ListenFromThread", {});
  ExpectOneReport("RegisterListener came from a second thread; it was refused");
  host.SendEvent("OnProjectLoaded", {});  // a listener would throw
}

TEST_F(ARudeDriver, IsRefusedWhenItPublishesFromASecondThread) {
  Load(5, "rude");
  host.Command(5, "PublishFromThread", {});
  host.Stop();
  ExpectOneReport("RegisterQuery came from a second thread; it was refused");
}

TEST_F(ARudeDriver, IsRefusedWhenItRegistersACommandFromASecondThread) {
  Load(5, "rude");
  host.Command(5, "RegisterFromThread", {});
  ExpectOneReport("RegisterUICmd came from a second thread; it was refused, during command \"RegisterFromThread\"");
  EXPECT_THAT(host.Commands(5), Not(testing::Contains("FromThread")));
}

TEST_F(ARudeDriver, GetsNoVariableManagerFromASecondThread) {
  Load(5, "rude");
  host.Command(5, "VariablesFromThread", {});
  ExpectOneReport("GetVariableManager came from a second thread; it was refused");
  EXPECT_THAT(observer.Texts(Kind::Log), IsEmpty());
}

TEST_F(ARudeDriver, CannotEndTheProcessWithSuccess) {
  Load(5, "rude");
  EXPECT_EXIT(host.Command(5, "Exit", {}), testing::ExitedWithCode(1),
              "the process was ended during command \"Exit\" of driver 5 \"rude5\"");
}

TEST_F(ARudeDriver, IsOneOfTheCandidatesWhenItSharesItsModule) {
  Load(4, "rude");
  Load(5, "rude");
  host.Command(5, "ReleaseTwice", {});
  EXPECT_THAT(Reports(), ElementsAre(StartsWith("one of them: an XML object was released once more")));
  const Occurrence& report = observer.all[observer.all.size() - 2];
  EXPECT_EQ(report.driverName, "");
  EXPECT_THAT(report.candidates, ElementsAre("rude4", "rude5"));
}

// What the callback of the overlapping test works on.
Host* s_host = nullptr;
std::string s_refusal;

void CommandFromSecondThread() {
  std::thread([] {
    try {
      s_host->Command(7, "Nothing", {});
    } catch (const HostError& error) {
      s_refusal = error.what();
    }
  }).join();
}

TEST_F(ARudeDriver, IsNotCalledFromASecondThreadMeanwhile) {
  Load(5, "rude");
  Load(7, "well_behaved");
  s_host = &host;
  s_refusal.clear();
  const auto function = reinterpret_cast<std::uintptr_t>(&CommandFromSecondThread);
  host.Command(5, "CallBack", {{"function", std::to_string(function)}});
  EXPECT_THAT(s_refusal, AllOf(HasSubstr("command \"Nothing\" came from a second thread"),
                               HasSubstr("while command \"CallBack\" of driver 5 \"rude5\" is under way")));
  EXPECT_THAT(Reports(), ElementsAre(HasSubstr("command \"Nothing\" came from a second thread")));
  EXPECT_EQ(host.Command(7, "Nothing", {}), "");
}

}  // namespace
}  // namespace devhost
