// A driver in a host from the loading of its module to the unloading, whatever it does.
#include "devhost/engine/LoadedDriver.h"

#include "host/H7BaseAgentDriver.h"
#include "host/H7XML.h"
#include "host/IInstanceManager.h"
#include "host/LogXMessage.h"
#include "host/UICmdDispatcher.h"
#include "tests/devhost/modules/Greeter.h"
#include "tests/devhost/support/HostFixture.h"

namespace devhost {
namespace {

using Kind = Occurrence::Kind;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

const DriverEntry kRude = TestDriver(5, "rude");

using ALoadedDriver = HostFixture;

TEST_F(ALoadedDriver, StaysWhenItsInitializeFails) {
  Load(7, "well_behaved", "<config greeting='hi' result='5'/>");
  EXPECT_THAT(observer.Texts(Kind::Failure), ElementsAre(HasSubstr("could not start: its Initialize returned 5")));
  EXPECT_EQ(observer.all[1].call, "Initialize");
  EXPECT_EQ(host.Command(7, "GreetFirst", {}), "<Greeting>hi</Greeting>");
}

TEST_F(ALoadedDriver, IsNotThereWhenItsModuleMakesNone) {
  EXPECT_THAT(ErrorOf([&] { Load(7, "no_driver"); }), HasSubstr("returned none"));
  EXPECT_THAT(host.Drivers(), IsEmpty());
  EXPECT_FALSE(IsInProcess("no_driver"));
}

TEST_F(ALoadedDriver, HasItsExceptionsTurnedIntoHostErrors) {
  Load(5, "rude");
  EXPECT_EQ(ErrorOf([&] { host.Command(5, "Throw", {}); }),
            "an exception came out of command \"Throw\" of driver 5 \"rude5\": no <answer> today");
  EXPECT_EQ(ErrorOf([&] { host.Command(5, "ThrowOddly", {}); }),
            "an exception came out of command \"ThrowOddly\" of driver 5 \"rude5\": something that is not a std::exception");
  EXPECT_EQ(ErrorOf([&] { host.GetPersistState(5, XmlStyle::Compact); }),
            "an exception came out of GetPersistState of driver 5 \"rude5\": no state today");
}

TEST_F(ALoadedDriver, IsGoneWhenItsRegisterCommandsThrows) {
  EXPECT_THAT(
      ErrorOf([&] { Load(5, "throws_in_register_commands"); }),
      HasSubstr(
          "an exception came out of RegisterCommands of driver 5 \"throws_in_register_commands5\": no commands today"));
  EXPECT_THAT(host.Drivers(), IsEmpty());
  EXPECT_THAT(observer.all, IsEmpty());
  EXPECT_FALSE(IsInProcess("throws_in_register_commands"));
}

// A driver of the test program, which publishes itself, answers a command and leaves its registration behind.
class Resident : public H7BaseAgentDriver, public Greeter {
 public:
  Resident(IInstanceManager& instanceManager, std::string name)
      : H7BaseAgentDriver(instanceManager, DriverMultiplicity_Single), m_name(std::move(name)) {}
  int Initialize(unsigned long driverId, H7XML::INode& config, H7XML::INode* persisted) override {
    H7BaseAgentDriver::Initialize(driverId, config, persisted);
    GetInstanceManager().RegisterQuery(Greeter_IID, static_cast<Greeter*>(this));
    return 0;
  }
  void RegisterCommands() override {
    GetUICmdDispatcher().RegisterUICmd("Speak", [this](const ICmdMessage&) {
      LogXMessage(3, "spoken");
      return H7XML::CreateXmlNode("Spoken", m_name);
    });
  }
  std::string Greet() override { return m_name; }

 private:
  const std::string m_name;
};

TEST_F(ALoadedDriver, MayBePartOfTheProgram) {
  const h7::auto_com<H7XML::INode> own = H7XML::CreateXmlNode("Own", "");
  const std::string name = "at home";
  host.Load({5, "resident", "this program", "<config/>"},
            [&name](IInstanceManager& instanceManager) { return new Resident(instanceManager, name); });
  Load(7, "well_behaved", "<config greeting='hi'/>");
  EXPECT_EQ(host.Command(5, "Speak", {}), "<Spoken>at home</Spoken>");
  EXPECT_EQ(observer.all.back().driverName, "resident");
  EXPECT_THAT(observer.Texts(Kind::Log), ElementsAre("spoken"));
  EXPECT_EQ(host.Command(7, "GreetAll", {}), "<Greetings><greeting>at home</greeting><greeting>hi</greeting></Greetings>");
  host.Stop();
  // What the program itself holds alive is not the driver's.
  ExpectOneReport({5, "resident", "", ""}, "left its registration under \"test.Greeter\" behind");
}

TEST_F(ALoadedDriver, OfTheProgramThatIsNotMadeIsRefused) {
  EXPECT_THAT(ErrorOf([&] {
                host.Load({5, "resident", "", "<config/>"}, [](IInstanceManager&) { return nullptr; });
              }),
              HasSubstr("was not made"));
  EXPECT_THAT(host.Drivers(), IsEmpty());
}

TEST_F(ALoadedDriver, IsNamedForListenersLeftBehind) {
  Load(5, "rude");
  host.Command(5, "LeaveListener", {});
  host.Stop();
  EXPECT_THAT(Reports(), ElementsAre(AllOf(StartsWith("left a listener for event \"OnProjectLoaded\" behind")),
                                     AllOf(StartsWith("left a listener for event \"OnVariableAdded\" behind"))));
  host.SendEvent("OnProjectLoaded", {});  // nobody is called any more
}

TEST_F(ALoadedDriver, IsNamedForRegistrationsLeftBehind) {
  Load(7, "well_behaved");
  Load(5, "rude");
  host.Command(5, "LeaveRegistration", {});
  host.Stop();
  ExpectOneReport(kRude, "left its registration under \"rude.Left\" behind");
}

TEST_F(ALoadedDriver, IsNamedForCommandsLeftBehind) {
  Load(5, "rude");
  host.Command(5, "LeaveCommand", {});
  host.Stop();
  ExpectOneReport(kRude, "left command \"TooLate\" behind");
}

TEST_F(ALoadedDriver, IsNamedForRegisteringACommandTwiceAndTheLaterHandlerCounts) {
  Load(5, "rude");
  host.Command(5, "RegisterTwice", {});
  ExpectOneReport(kRude, "command \"Double\" was registered twice");
  EXPECT_THROW(host.Command(5, "Double", {}), HostError);
}

TEST_F(ALoadedDriver, IsNamedForTheWrongIdInItsInitialize) {
  Load(5, "rude", "<config wrongId='true'/>");
  ExpectOneReport(kRude, "passed the id 6 to its base's Initialize");
}

TEST_F(ALoadedDriver, IsNamedForWhatItDoesBeforeInitialize) {
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

TEST_F(ALoadedDriver, IsGoneWhenItsConstructorThrows) {
  EXPECT_THROW(Load(5, "throws_in_constructor"), HostError);
  EXPECT_THAT(host.Drivers(), IsEmpty());
  EXPECT_THAT(Reports(), ElementsAre(HasSubstr("left a listener for event \"OnProjectLoaded\" behind"),
                                     HasSubstr("left 1 XML object alive: node \"Unfinished\"")));
  host.SendEvent("OnProjectLoaded", {});  // its listener is gone
  leaked = 1;
}

TEST_F(ALoadedDriver, IsGoneWhenItsInitializeThrows) {
  EXPECT_THROW(Load(5, "rude", "<config throw='true'/>"), HostError);
  EXPECT_THAT(host.Drivers(), IsEmpty());
  ExpectOneReport(kRude, "left its registration under \"rude.Early\" behind");
  EXPECT_THAT(observer.Texts(Kind::Load), IsEmpty());
}

TEST_F(ALoadedDriver, IsRefusedWhenItNotifiesFromASecondThread) {
  Load(5, "rude");
  host.Command(5, "NotifyFromThread", {});
  ExpectOneReport(kRude, "ConSendDataToUI came from a second thread; it was refused, during command \"NotifyFromThread\"");
  EXPECT_THAT(observer.Texts(Kind::Notification), IsEmpty());
}

TEST_F(ALoadedDriver, IsRefusedWhenItInvalidatesItsStateFromASecondThread) {
  Load(5, "rude");
  host.Command(5, "InvalidateFromThread", {});
  ExpectOneReport(kRude, "DmInvalidateState came from a second thread; it was refused");
  EXPECT_THAT(observer.Texts(Kind::Invalidate), IsEmpty());
}

TEST_F(ALoadedDriver, IsRefusedWhenItListensFromASecondThread) {
  Load(5, "rude");
  host.Command(5, "ListenFromThread", {});
  ExpectOneReport(kRude, "RegisterListener came from a second thread; it was refused");
  host.SendEvent("OnProjectLoaded", {});  // a listener would throw
}

TEST_F(ALoadedDriver, IsRefusedWhenItPublishesFromASecondThread) {
  Load(5, "rude");
  host.Command(5, "PublishFromThread", {});
  host.Stop();
  ExpectOneReport(kRude, "RegisterQuery came from a second thread; it was refused");
}

TEST_F(ALoadedDriver, IsRefusedWhenItRegistersACommandFromASecondThread) {
  Load(5, "rude");
  host.Command(5, "RegisterFromThread", {});
  ExpectOneReport(kRude, "RegisterUICmd came from a second thread; it was refused, during command \"RegisterFromThread\"");
  EXPECT_THAT(host.Commands(5), Not(testing::Contains("FromThread")));
}

TEST_F(ALoadedDriver, GetsNoVariableManagerFromASecondThread) {
  Load(5, "rude");
  host.Command(5, "VariablesFromThread", {});
  ExpectOneReport(kRude, "GetVariableManager came from a second thread; it was refused");
  EXPECT_THAT(observer.Texts(Kind::Log), IsEmpty());
}

}  // namespace
}  // namespace devhost
