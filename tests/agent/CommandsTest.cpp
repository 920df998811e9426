#include "tests/support/AgentFixture.h"
#include "tests/support/RecordingDevice.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testsupport::RecordingDevice;

class TheCommands : public AgentTest {
 protected:
  RecordingDevice five{5, journal};
};

TEST_F(TheCommands, AreRegisteredOnceInTheOrderOfTheTable) {
  agent.Driver().RegisterCommands();
  EXPECT_THAT(CallsOf({"RegisterUICmd"}),
              ElementsAre("RegisterUICmd GetDeviceList", "RegisterUICmd SetDeviceState", "RegisterUICmd AddManagedDevice",
                          "RegisterUICmd DeleteManagedDevice", "RegisterUICmd RebootController",
                          "RegisterUICmd StopMasterAgent", "RegisterUICmd StartMasterAgent"));
  EXPECT_EQ(CallsOf({"RegisterUICmd", "GetUICmdDispatcher"}).size(), journal.Calls().size()) << "other calls were made";
}

TEST_F(TheCommands, AreEachBoundToTheirOwnHandler) {
  agent.Driver().RegisterCommands();
  agent->AddSNMPDevice(5, &five);
  const std::vector<std::pair<std::string, std::string>> marks = {
      {"GetDeviceList", "5.GetSNMPVersion"},
      {"SetDeviceState", "5.ClearTrapTargetSetting"},
      {"AddManagedDevice", "5.SetIsManagedDevice true"},
      {"DeleteManagedDevice", "5.SetIsManagedDevice false"},
      {"RebootController", "5.RebootController"},
      {"StopMasterAgent", "5.StopMasterAgent"},
      {"StartMasterAgent", "5.StartMasterAgent"},
  };
  for (const auto& command : marks) {
    journal.Take();
    host.Command(command.first, {{"deviceId", "5"},
                                 {"xml",
                                  "<d><snmpIsManagedDevice>x</snmpIsManagedDevice>"
                                  "<deviceId>5</deviceId></d>"}});
    EXPECT_THAT(journal.Calls(), testing::Contains(command.second)) << command.first;
    if (command.first != "SetDeviceState") {
      EXPECT_THAT(CallsOf({"5.ClearTrapTargetSetting"}), IsEmpty()) << command.first;
    }
  }
}

TEST_F(TheCommands, AlwaysHaveAReply) {
  agent.Driver().RegisterCommands();
  for (const char* command : {"GetDeviceList", "SetDeviceState", "AddManagedDevice", "DeleteManagedDevice",
                              "RebootController", "StopMasterAgent", "StartMasterAgent"}) {
    EXPECT_TRUE(host.Command(command)) << command;
  }
}

class ANotification : public AgentTest {};

TEST_F(ANotification, WithoutAStateCarriesTheIdOnly) {
  agent->MySendDataToUI("Name", 7, -1);
  EXPECT_THAT(journal.Calls(), ElementsAre("ConSendDataToUI <Name><id>7</id></Name>"));
}

TEST_F(ANotification, WithAnyOtherStateCarriesIt) {
  agent->MySendDataToUI("Name", 7, 0);
  agent->MySendDataToUI("Name", 0, 5);
  agent->MySendDataToUI("Name", -1, -2);
  EXPECT_THAT(journal.Calls(), ElementsAre("ConSendDataToUI <Name><id>7</id><state>0</state></Name>",
                                           "ConSendDataToUI <Name><id>0</id><state>5</state></Name>",
                                           "ConSendDataToUI <Name><id>-1</id><state>-2</state></Name>"));
}

TEST_F(ANotification, OfAnIdBeyondTheRangeOfIntegersCarriesItNegative) {
  agent->DeleteSNMPDevice(4294967295UL);
  agent->DeleteSNMPDevice(2147483648UL);
  agent->DeleteSNMPDevice(2147483647UL);
  EXPECT_THAT(journal.Calls(), ElementsAre("ConSendDataToUI <DeviceDeleted><id>-1</id></DeviceDeleted>",
                                           "ConSendDataToUI <DeviceDeleted><id>-2147483648</id></DeviceDeleted>",
                                           "ConSendDataToUI <DeviceDeleted><id>2147483647</id></DeviceDeleted>"));
}

TEST_F(ANotification, IsReleasedWhenTheHostThrows) {
  journal.SetHook([](const std::string&) { throw std::runtime_error("host"); });
  EXPECT_THROW(agent->MySendDataToUI("Name", 7, 1), std::runtime_error);
  EXPECT_EQ(devhost::LiveXmlObjects(), 0U);
}

}  // namespace
