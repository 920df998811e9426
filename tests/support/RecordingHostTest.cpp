#include "tests/support/RecordingHost.h"

#include <gmock/gmock.h>

#include <stdexcept>

#include "agent/ISNMPConfigurationAgent.h"
#include "devhost/xml/XmlObserver.h"
#include "host/H7BaseAgentDriver.h"
#include "host/H7XML.h"
#include "host/ICmdMessage.h"
#include "host/LogXMessage.h"

namespace {

using testing::ElementsAre;
using Calls = std::vector<std::string>;

// A driver whose calls the test makes.
class Guinea : public H7BaseAgentDriver, public ISystemEventCallback {
 public:
  explicit Guinea(IInstanceManager& instances) : H7BaseAgentDriver(instances, DriverMultiplicity_PerDevice) {}
  void OnSystemEvent(H7XML::INode& event) override { heard.push_back(event.GetNamedString("name")); }

  using H7BaseAgentDriver::ConSendDataToUI;
  using H7BaseAgentDriver::DmInvalidateState;
  using H7BaseAgentDriver::GetDriverManager;
  using H7BaseAgentDriver::GetInstanceManager;
  using H7BaseAgentDriver::GetUICmdDispatcher;
  using H7BaseAgentDriver::GetVariableManager;
  using H7BaseAgentDriver::RegisterListener;
  using H7BaseAgentDriver::UnregisterListener;

  Calls heard;
};

class ARecordingHost : public testing::Test {
 protected:
  ~ARecordingHost() override { EXPECT_EQ(devhost::LiveXmlObjects(), 0U); }

  Journal journal;
  RecordingHost host{journal};
};

TEST_F(ARecordingHost, NotesTheLifeOfADriversBase) {
  {
    Guinea driver(host.Instances());
    const h7::auto_com<H7XML::INode> config = H7XML::CreateXmlNode("config", "");
    driver.Initialize(3, *config, nullptr);
  }
  EXPECT_THAT(journal.Calls(), ElementsAre("BaseConstructed 1", "BaseInitialized 3", "BaseDestroyed"));
}

TEST_F(ARecordingHost, DeliversEventsToThoseWhoListenForThem) {
  Guinea driver(host.Instances());
  journal.Take();
  driver.RegisterListener(driver, 5, 0);
  host.SendEvent("OnProjectLoaded");
  host.SendEvent("OnItemRemoved", {{"iditem", "7"}});
  driver.UnregisterListener(driver, 11, 0);
  driver.UnregisterListener(driver, 5, 0);
  host.SendEvent("OnProjectLoaded");
  EXPECT_THAT(driver.heard, ElementsAre("OnProjectLoaded"));
  EXPECT_TRUE(host.Listeners().empty());
  EXPECT_THAT(journal.Calls(),
              ElementsAre("RegisterListener 5 0", "UnregisterListener 11 0 unknown", "UnregisterListener 5 0"));
}

TEST_F(ARecordingHost, KeepsWhatIsPublishedUntilItIsWithdrawn) {
  Guinea driver(host.Instances());
  journal.Take();
  int instance = 0;
  EXPECT_TRUE(driver.GetInstanceManager().RegisterQuery("A", &instance));
  EXPECT_FALSE(driver.GetInstanceManager().RegisterQuery("A", &driver));
  EXPECT_EQ(driver.GetInstanceManager().Query("A"), &instance);
  EXPECT_EQ(host.Published("A"), &instance);
  driver.GetInstanceManager().UnregisterQuery("A");
  EXPECT_FALSE(host.AnythingPublished());
  host.refusesRegistrations = true;
  EXPECT_FALSE(driver.GetInstanceManager().RegisterQuery("A", &instance));
  EXPECT_FALSE(host.AnythingPublished());
  EXPECT_THAT(journal.Calls(), testing::Contains("RegisterQuery A").Times(3));
  EXPECT_THAT(journal.Calls(), testing::Contains("UnregisterQuery A").Times(1));
}

TEST_F(ARecordingHost, AnswersWithScriptedDriversAndVariables) {
  Guinea driver(host.Instances());
  FakeVariable variable(1, 2, "lamp");
  host.variables[{1, 2}] = &variable;
  host.userVariableList = "<mine/>";
  host.drivers.assign(2, nullptr);
  journal.Take();
  EXPECT_EQ(driver.GetVariableManager()->FindVariable(1, 2), &variable);
  EXPECT_EQ(driver.GetVariableManager()->FindVariable(2, 1), nullptr);
  std::string xml;
  driver.GetVariableManager()->ListVariables(xml, true);
  EXPECT_EQ(xml, "<mine/>");
  driver.GetVariableManager()->ListVariables(xml, false);
  EXPECT_EQ(xml, "<variables/>");
  EXPECT_EQ(driver.GetDriverManager().ListDrivers<ISupportSNMP>(4, ISupportSNMP_IID).size(), 2U);
  EXPECT_TRUE(driver.GetDriverManager().ListDrivers<ISupportSNMP>(0, "other").empty());
  EXPECT_THAT(
      journal.Calls(),
      ElementsAre("GetVariableManager", "FindVariable 1 2", "GetVariableManager", "FindVariable 2 1", "GetVariableManager",
                  "ListVariables true", "GetVariableManager", "ListVariables false not empty", "GetDriverManager",
                  std::string("FindDrivers 4 ") + ISupportSNMP_IID, "GetDriverManager", "FindDrivers 0 other"));
}

TEST_F(ARecordingHost, SendsCommandsThroughTheRegisteredHandlers) {
  Guinea driver(host.Instances());
  driver.GetUICmdDispatcher().RegisterUICmd("Echo", [](ICmdMessage const& message) {
    return H7XML::CreateXmlNode(message.GetString("name"), message.GetULong("number"));
  });
  EXPECT_EQ(host.CommandText("Echo", {{"name", "a"}, {"number", "4294967295"}}), "<a>4294967295</a>");
  EXPECT_THROW(host.Command("Other"), std::out_of_range);
  host.DropHandlers();
  EXPECT_THROW(host.Command("Echo"), std::out_of_range);
  EXPECT_THAT(journal.Calls(), testing::Contains("RegisterUICmd Echo"));
}

TEST_F(ARecordingHost, NotesNotificationsInvalidationsAndTheLog) {
  Guinea driver(host.Instances());
  journal.Take();
  driver.ConSendDataToUI(*H7XML::CreateXmlNode("Changed", 7UL));
  driver.DmInvalidateState();
  LogXMessage(3, "no %s", "device");
  EXPECT_THAT(journal.Calls(), ElementsAre("ConSendDataToUI <Changed>7</Changed>", "DmInvalidateState", "Log 3 no device"));
}

TEST_F(ARecordingHost, FailsInACallWithoutDoingAnythingElse) {
  Guinea driver(host.Instances());
  journal.SetHook([](const std::string&) { throw std::runtime_error("the host fails"); });
  EXPECT_THROW(driver.RegisterListener(driver, 5, 0), std::runtime_error);
  EXPECT_TRUE(host.Listeners().empty());
  EXPECT_THROW(driver.GetInstanceManager(), std::runtime_error);
  EXPECT_THROW(host.Instances().RegisterQuery("A", &driver), std::runtime_error);
  EXPECT_FALSE(host.AnythingPublished());
  LogXMessage(3, "dropped");
}

TEST_F(ARecordingHost, MakesAnAgentAndDeletesItThroughTheDriverPointer) {
  HostedAgent agent(host);
  EXPECT_THROW(agent.Published(), std::logic_error);
  EXPECT_EQ(agent.Initialize(), 0);
  agent.Driver().RegisterCommands();
  agent.Published().DeleteSNMPDevice(7);
  EXPECT_THAT(journal.Calls(), testing::Contains("BaseInitialized 3"));
  EXPECT_EQ(journal.Calls().back(), "ConSendDataToUI <DeviceDeleted><id>7</id></DeviceDeleted>");
  agent.Destroy();
  EXPECT_EQ(journal.Calls().back(), "BaseDestroyed");
  EXPECT_THROW(host.Command("GetDeviceList"), std::out_of_range);
}

}  // namespace
