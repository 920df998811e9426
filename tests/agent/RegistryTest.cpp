#include "device/SNMPDevice.h"
#include "tests/support/AgentFixture.h"
#include "tests/support/RecordingDevice.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testsupport::RecordingDevice;

class TheRegistry : public AgentTest {
 protected:
  void SetUp() override {
    agent.Driver().RegisterCommands();
    journal.Take();
  }

  std::string Ids() {
    std::string ids;
    for (const auto& entry : State().devices) {
      ids += (ids.empty() ? "" : " ") + std::to_string(entry.first);
    }
    return ids;
  }

  RecordingDevice seven{7, journal};
  RecordingDevice other{8, journal};
};

TEST_F(TheRegistry, KeepsADeviceAndTellsTheTool) {
  agent->AddSNMPDevice(7, &seven);
  EXPECT_THAT(journal.Calls(), ElementsAre("ConSendDataToUI <DeviceAdded><id>7</id></DeviceAdded>"));
  ASSERT_EQ(Ids(), "7");
  EXPECT_EQ(State().devices.at(7)->GetDeviceId(), 7U);
  EXPECT_EQ(State().devices.at(7).use_count(), 1);
}

TEST_F(TheRegistry, RunsInAscendingUnsignedOrderAndKnowsIdZero) {
  for (const unsigned long id : {4294967295UL, 7UL, 0UL, 2147483648UL}) {
    agent->AddSNMPDevice(id, &seven);
  }
  EXPECT_EQ(Ids(), "0 7 2147483648 4294967295");
}

TEST_F(TheRegistry, KeepsTheFirstDeviceOfAnIdAndTellsTheToolTwice) {
  agent->AddSNMPDevice(7, &seven);
  State().devices.at(7)->SetAgentXTimeout("10");
  State().devices.at(7)->SetConfig("text");
  agent->AddSNMPDevice(7, &other);
  EXPECT_THAT(journal.Take(), ElementsAre("ConSendDataToUI <DeviceAdded><id>7</id></DeviceAdded>",
                                          "ConSendDataToUI <DeviceAdded><id>7</id></DeviceAdded>"));
  EXPECT_EQ(State().devices.at(7)->GetAgentXTimeout(), "10");
  EXPECT_EQ(State().devices.at(7)->GetConfig(), "text");
  State().devices.at(7)->GetSysNameSetting();
  EXPECT_THAT(journal.Calls(), ElementsAre("7.GetSysNameSetting"));
}

TEST_F(TheRegistry, LogsANullDeviceAndDoesNothingElse) {
  agent->AddSNMPDevice(7, nullptr);
  agent->AddSNMPDevice(42, nullptr);
  agent->AddSNMPDevice(4294967295UL, nullptr);
  EXPECT_THAT(journal.Calls(), ElementsAre("Log 3 Unable to add SNMP device 7l.", "Log 3 Unable to add SNMP device 42l.",
                                           "Log 3 Unable to add SNMP device 4294967295l."));
  EXPECT_EQ(Ids(), "");
}

TEST_F(TheRegistry, KeepsADeviceWhenItsIdIsAnnouncedWithANullDevice) {
  agent->AddSNMPDevice(7, &seven);
  journal.Take();
  agent->AddSNMPDevice(7, nullptr);
  EXPECT_EQ(Ids(), "7");
  EXPECT_THAT(journal.Calls(), ElementsAre("Log 3 Unable to add SNMP device 7l."));
}

TEST_F(TheRegistry, HoldsADeviceBeforeTheToolIsTold) {
  journal.SetHook([this](const std::string&) { EXPECT_EQ(Ids(), "7"); });
  agent->AddSNMPDevice(7, &seven);
  journal.SetHook([this](const std::string&) { EXPECT_EQ(Ids(), ""); });
  agent->DeleteSNMPDevice(7);
}

TEST_F(TheRegistry, ForgetsADeviceWithoutTouchingIt) {
  seven.managed = true;
  agent->AddSNMPDevice(7, &seven);
  journal.Take();
  agent->DeleteSNMPDevice(7);
  EXPECT_THAT(journal.Calls(), ElementsAre("ConSendDataToUI <DeviceDeleted><id>7</id></DeviceDeleted>"));
  EXPECT_EQ(Ids(), "");
  EXPECT_TRUE(seven.managed);
}

TEST_F(TheRegistry, NotifiesOfAWithdrawalEvenIfTheIdWasNeverAnnounced) {
  agent->AddSNMPDevice(7, &seven);
  journal.Take();
  agent->DeleteSNMPDevice(8);
  EXPECT_THAT(journal.Calls(), ElementsAre("ConSendDataToUI <DeviceDeleted><id>8</id></DeviceDeleted>"));
  EXPECT_EQ(Ids(), "7");
}

TEST_F(TheRegistry, TakesADeviceAgainThatWasWithdrawn) {
  agent->AddSNMPDevice(7, &seven);
  agent->DeleteSNMPDevice(7);
  agent->AddSNMPDevice(7, &other);
  journal.Take();
  State().devices.at(7)->GetSysNameSetting();
  EXPECT_THAT(journal.Calls(), ElementsAre("8.GetSysNameSetting"));
}

TEST_F(TheRegistry, ServesEveryIdAlike) {
  const std::pair<const char*, const char*> ids[] = {
      {"0", "0"}, {"2147483648", "-2147483648"}, {"4294967294", "-2"}, {"4294967295", "-1"}};
  for (const auto& entry : ids) {
    const unsigned long id = std::stoul(entry.first);
    const std::string deviceId = "<deviceId>" + std::string(entry.first) + "</deviceId>";
    const auto told = [&entry](const std::string& name) {
      return "ConSendDataToUI <" + name + "><id>" + entry.second + "</id></" + name + ">";
    };
    agent->AddSNMPDevice(id, &seven);
    EXPECT_EQ(host.CommandText("AddManagedDevice", {{"deviceId", entry.first}}), deviceId);
    EXPECT_EQ(host.CommandText("DeleteManagedDevice", {{"deviceId", entry.first}}), deviceId);
    EXPECT_TRUE(agent->SetDeviceState(id)) << id;
    agent->DeleteSNMPDevice(id);
    EXPECT_EQ(Ids(), "");
    EXPECT_THAT(CallsOf({"ConSendDataToUI"}), ElementsAre(told("DeviceAdded"), told("ManagedDeviceAdded"),
                                                          told("ManagedDeviceDeleted"), told("DeviceDeleted")));
    journal.Take();
  }
}

TEST_F(TheRegistry, KeepsADeviceThoughTellingTheToolFails) {
  journal.SetHook([](const std::string&) { throw std::runtime_error("host"); });
  EXPECT_THROW(agent->AddSNMPDevice(7, &seven), std::runtime_error);
  EXPECT_EQ(Ids(), "7");
  EXPECT_THROW(agent->DeleteSNMPDevice(7), std::runtime_error);
  EXPECT_EQ(Ids(), "");
  EXPECT_EQ(devhost::LiveXmlObjects(), 0U);
}

class SettingADevicesState : public TheRegistry {
 protected:
  void SetUp() override {
    agent->AddSNMPDevice(7, &seven);
    journal.Take();
  }
};

TEST_F(SettingADevicesState, ReadsThenWritesAndTellsNobody) {
  EXPECT_TRUE(agent->SetDeviceState(7));
  EXPECT_THAT(journal.Calls(),
              ElementsAre("7.CopyFrom /etc/snmp/snmpd.conf.local", "7.GetCommunityReadSetting", "7.GetCommunityWriteSetting",
                          "7.GetSysContactSetting", "7.GetSysLocationSetting", "7.GetSysNameSetting",
                          "7.GetTrapTargetsSetting", "7.CopyTo /etc/snmp/snmpd.conf.local"));
}

TEST_F(SettingADevicesState, OfAnUnknownIdFailsAndCallsNobody) {
  EXPECT_FALSE(agent->SetDeviceState(8));
  EXPECT_THAT(journal.Calls(), IsEmpty());
}

TEST_F(SettingADevicesState, StopsAtAFailedReadWithoutWriting) {
  for (const int status : {-9, 1, -1}) {
    journal.Take();
    seven.copyFrom.always = status;
    EXPECT_FALSE(agent->SetDeviceState(7)) << status;
    EXPECT_THAT(journal.Calls(), ElementsAre("7.CopyFrom /etc/snmp/snmpd.conf.local"));
  }
}

TEST_F(SettingADevicesState, FailsWithAFailedWriteAndKeepsTheTextInTheRecord) {
  for (const int status : {-9, 1, -1}) {
    seven.copyTo.always = status;
    EXPECT_FALSE(agent->SetDeviceState(7)) << status;
    EXPECT_EQ(State().devices.at(7)->GetConfig(), seven.offered);
  }
}

class TheManagedFlag : public TheRegistry {
 protected:
  void SetUp() override {
    TheRegistry::SetUp();
    agent->AddSNMPDevice(7, &seven);
    journal.Take();
  }
};

TEST_F(TheManagedFlag, IsSetThenTheStateInvalidatedThenTheToolTold) {
  EXPECT_EQ(host.CommandText("AddManagedDevice", {{"deviceId", "7"}}), "<deviceId>7</deviceId>");
  EXPECT_THAT(journal.Take(), ElementsAre("7.SetIsManagedDevice true", "DmInvalidateState",
                                          "ConSendDataToUI <ManagedDeviceAdded><id>7</id></ManagedDeviceAdded>"));
  EXPECT_TRUE(seven.managed);
  EXPECT_EQ(host.CommandText("DeleteManagedDevice", {{"deviceId", "7"}}), "<deviceId>7</deviceId>");
  EXPECT_THAT(journal.Take(), ElementsAre("7.SetIsManagedDevice false", "DmInvalidateState",
                                          "ConSendDataToUI <ManagedDeviceDeleted><id>7</id></ManagedDeviceDeleted>"));
  EXPECT_FALSE(seven.managed);
}

TEST_F(TheManagedFlag, IsSetAndToldAgainThoughItHadThatValue) {
  seven.managed = true;
  EXPECT_EQ(host.CommandText("AddManagedDevice", {{"deviceId", "7"}}), "<deviceId>7</deviceId>");
  EXPECT_THAT(journal.Calls(), ElementsAre("7.SetIsManagedDevice true", "DmInvalidateState",
                                           "ConSendDataToUI <ManagedDeviceAdded><id>7</id></ManagedDeviceAdded>"));
  seven.managed = false;
  journal.Take();
  EXPECT_EQ(host.CommandText("DeleteManagedDevice", {{"deviceId", "7"}}), "<deviceId>7</deviceId>");
  EXPECT_THAT(journal.Calls(), ElementsAre("7.SetIsManagedDevice false", "DmInvalidateState",
                                           "ConSendDataToUI <ManagedDeviceDeleted><id>7</id></ManagedDeviceDeleted>"));
}

TEST_F(TheManagedFlag, IsToldThoughTheDeviceWithdrawsItselfMeanwhile) {
  for (const bool managed : {true, false}) {
    agent->AddSNMPDevice(7, &seven);
    journal.Take();
    journal.SetHook([this](const std::string& call) {
      if (call.find("7.SetIsManagedDevice") == 0) {
        agent->DeleteSNMPDevice(7);
      }
    });
    EXPECT_EQ(Text(*agent->SetManagedState(7, managed)), "<deviceId>7</deviceId>");
    journal.SetHook(nullptr);
    const std::string name = managed ? "ManagedDeviceAdded" : "ManagedDeviceDeleted";
    EXPECT_THAT(journal.Calls(),
                ElementsAre(std::string("7.SetIsManagedDevice ") + (managed ? "true" : "false"),
                            "ConSendDataToUI <DeviceDeleted><id>7</id></DeviceDeleted>", "DmInvalidateState",
                            "ConSendDataToUI <" + name + "><id>7</id></" + name + ">"));
    EXPECT_EQ(seven.managed, managed);
  }
}

TEST_F(TheManagedFlag, OfAnUnknownDeviceIsRefusedAndNobodyTold) {
  for (const char* command : {"AddManagedDevice", "DeleteManagedDevice"}) {
    EXPECT_EQ(host.CommandText(command, {{"deviceId", "8"}}), "<Fail/>");
    EXPECT_EQ(host.CommandText(command), "<Fail/>");
  }
  EXPECT_EQ(Text(*agent->SetManagedState(8, true)), "<Fail/>");
  EXPECT_THAT(journal.Calls(), IsEmpty());
}

TEST_F(TheManagedFlag, IsRepliedWithTheUnsignedIdAndToldWithTheNegativeOne) {
  agent->AddSNMPDevice(4294967295UL, &other);
  EXPECT_EQ(host.CommandText("AddManagedDevice", {{"deviceId", "4294967295"}}), "<deviceId>4294967295</deviceId>");
  EXPECT_EQ(journal.Calls().back(), "ConSendDataToUI <ManagedDeviceAdded><id>-1</id></ManagedDeviceAdded>");
}

TEST_F(TheManagedFlag, LeavesNothingBehindWhereverACallThrows) {
  for (const char* failing : {"7.SetIsManagedDevice true", "DmInvalidateState", "ConSendDataToUI"}) {
    journal.Take();
    journal.SetHook([failing](const std::string& call) {
      if (call.find(failing) == 0) {
        throw std::runtime_error("host or device");
      }
    });
    EXPECT_THROW(host.Command("AddManagedDevice", {{"deviceId", "7"}}), std::runtime_error) << failing;
    EXPECT_EQ(journal.Calls().back().find(failing), 0U) << "calls went on after " << failing;
    EXPECT_EQ(devhost::LiveXmlObjects(), 0U) << failing;
    EXPECT_EQ(State().devices.at(7).use_count(), 1) << failing;
  }
}

}  // namespace
