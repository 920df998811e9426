#include "device/SNMPDevice.h"
#include "host/H7XML.h"
#include "host/ICmdMessage.h"
#include "tests/device/DeviceFixture.h"
#include "tests/support/XmlFaults.h"

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

const char kFull[] =
    "<managedDevice><snmpIsManagedDevice>true</snmpIsManagedDevice><snmpIsConfigDirty>false</snmpIsConfigDirty>"
    "<snmpEnabledSetting>true</snmpEnabledSetting><snmpCommunityReadSetting>cr</snmpCommunityReadSetting>"
    "<snmpCommunityWriteSetting>cw</snmpCommunityWriteSetting><snmpSysContactSetting>contact</snmpSysContactSetting>"
    "<snmpUsePrimaryContactSetting>false</snmpUsePrimaryContactSetting>"
    "<snmpSysLocationSetting>location</snmpSysLocationSetting>"
    "<snmpUseProjectOwnerAddressSetting>true</snmpUseProjectOwnerAddressSetting>"
    "<snmpSysNameSetting>name</snmpSysNameSetting><snmpUseRoomDeviceSetting>false</snmpUseRoomDeviceSetting>"
    "<snmpTrapTargets><trapTarget><target>t1</target><community>c1</community><port>162</port></trapTarget>"
    "<trapTarget><target>t2</target><community/><port/></trapTarget></snmpTrapTargets>"
    "<deviceId>7</deviceId></managedDevice>";

class ASetDeviceStateRequest : public DeviceTest {
 protected:
  void SetUp() override {
    DeviceTest::SetUp();
    Announce(7, device);
  }

  std::string Reply(const std::string& xml) { return host.CommandText("SetDeviceState", {{"xml", xml}}); }
  static std::string With(const std::string& children) { return "<d>" + children + "<deviceId>7</deviceId></d>"; }

  // Returns the calls, with the settings' values, when an element is applied.
  static Calls Applied(const Calls& values, const Calls& traps) {
    const char* const setters[] = {
        "SetIsManagedDevice",   "SetEnabledSetting",           "SetCommunityReadSetting", "SetCommunityWriteSetting",
        "SetSysContactSetting", "SetUsePrimaryContactSetting", "SetSysLocationSetting",   "SetUseProjectOwnerAddressSetting",
        "SetSysNameSetting",    "SetUseRoomDeviceSetting"};
    Calls calls;
    for (std::size_t i = 0; i != values.size(); ++i) {
      calls.push_back(std::string("7.") + setters[i] + ' ' + values[i]);
    }
    calls.push_back("7.ClearTrapTargetSetting");
    for (const std::string& trap : traps) {
      calls.push_back("7.AddTrapTargetSetting " + trap);
    }
    calls.push_back("7.SetIsConfigDirty true");
    return calls;
  }

  static Calls AppliedFull() {
    return Applied({"true", "true", "cr", "cw", "contact", "false", "location", "true", "name", "false"},
                   {"t1|c1|162", "t2||"});
  }

  static Calls Read() { return {"7.CopyFrom /etc/snmp/snmpd.conf.local"}; }
  static Calls Written() {
    Calls calls = SectionCalls("7");
    calls.push_back("7.CopyTo /etc/snmp/snmpd.conf.local");
    return calls;
  }
  static Calls Told() { return {"DmInvalidateState", "ConSendDataToUI <DeviceChanged><id>7</id></DeviceChanged>"}; }

  static Calls Sequence(const std::vector<Calls>& parts) {
    Calls calls;
    for (const Calls& part : parts) {
      Append(calls, part);
    }
    return calls;
  }

  RecordingDevice device{7, journal};
  RecordingDevice other{9, journal};
};

TEST_F(ASetDeviceStateRequest, AppliesReadsWritesInvalidatesAndTellsInThisOrder) {
  EXPECT_EQ(Reply(kFull), "<Success/>");
  EXPECT_THAT(journal.Calls(),
              ElementsAreArray(Sequence({AppliedFull(), Read(), Written(), {"7.SetIsConfigDirty false"}, Told()})));
  EXPECT_FALSE(device.dirty);
}

TEST_F(ASetDeviceStateRequest, GoesOnAfterAReadThatIsAcceptedForLater) {
  device.copyFrom.always = -9;
  EXPECT_EQ(Reply(kFull), "<Success/>");
  EXPECT_THAT(journal.Calls(),
              ElementsAreArray(Sequence({AppliedFull(), Read(), Written(), {"7.SetIsConfigDirty false"}, Told()})));
}

TEST_F(ASetDeviceStateRequest, LeavesTheDeviceDirtyAfterAWriteThatIsAcceptedForLater) {
  device.copyTo.always = -9;
  EXPECT_EQ(Reply(kFull), "<Success/>");
  EXPECT_THAT(journal.Calls(), ElementsAreArray(Sequence({AppliedFull(), Read(), Written(), Told()})));
  EXPECT_TRUE(device.dirty);
  const h7::auto_com<H7XML::INode> list = host.Command("GetDeviceList");
  EXPECT_EQ(list->GetChild("managedDevice")->GetChildString("snmpIsConfigDirty"), "true");
}

TEST_F(ASetDeviceStateRequest, SucceedsWhenReadAndWriteAreBothAcceptedForLater) {
  device.copyFrom.always = -9;
  device.copyTo.always = -9;
  EXPECT_EQ(Reply(kFull), "<Success/>");
  EXPECT_TRUE(device.dirty);
}

TEST_F(ASetDeviceStateRequest, StopsAtAFailedRead) {
  for (const int status : {1, -1, 9, -8, -10}) {
    device.copyFrom.always = status;
    journal.Take();
    EXPECT_EQ(Reply(kFull), "<ReadFail/>") << status;
    EXPECT_THAT(journal.Calls(), ElementsAreArray(Sequence({AppliedFull(), Read()}))) << status;
    EXPECT_TRUE(device.dirty);
    EXPECT_EQ(device.sysName, "name");
  }
}

TEST_F(ASetDeviceStateRequest, StopsAtAFailedWrite) {
  for (const int status : {1, -1, 9, -8, -10}) {
    device.copyTo.always = status;
    journal.Take();
    EXPECT_EQ(Reply(kFull), "<WriteFail/>") << status;
    EXPECT_THAT(journal.Calls(), ElementsAreArray(Sequence({AppliedFull(), Read(), Written()}))) << status;
    EXPECT_TRUE(device.dirty);
  }
}

TEST_F(ASetDeviceStateRequest, FailsWithoutTheXmlOfADevice) {
  for (const char* xml : {"", "no xml", "<d>", "<!-- no root -->", "<d/>", "<d><deviceId>8</deviceId></d>",
                          "<d><deviceId>-7</deviceId></d>", "<d deviceId=\"7\"/>", "<d><x><deviceId>7</deviceId></x></d>"}) {
    EXPECT_EQ(Reply(xml), "<Fail/>") << xml;
    EXPECT_THAT(journal.Calls(), IsEmpty()) << xml;
    EXPECT_EQ(devhost::LiveXmlObjects(), 0U) << xml;
  }
  EXPECT_EQ(host.CommandText("SetDeviceState"), "<Fail/>");
  EXPECT_EQ(host.CommandText("SetDeviceState", {{"deviceId", "7"}}), "<Fail/>");
  EXPECT_THAT(journal.Calls(), IsEmpty());
}

TEST_F(ASetDeviceStateRequest, TakesADeviceWithoutAnIdInTheElementForDeviceZero) {
  EXPECT_EQ(Reply("<d/>"), "<Fail/>");
  Announce(0, other);
  EXPECT_EQ(Reply("<d/>"), "<Success/>");
  EXPECT_EQ(journal.Calls().back(), "ConSendDataToUI <DeviceChanged><id>0</id></DeviceChanged>");
}

TEST_F(ASetDeviceStateRequest, TouchesNoOtherDevice) {
  Announce(9, other);
  EXPECT_EQ(Reply(kFull), "<Success/>");
  EXPECT_THAT(CallsOf({"9."}), IsEmpty());
}

TEST_F(ASetDeviceStateRequest, DoesNotLookAtTheRootsName) {
  EXPECT_EQ(Reply("<anything><deviceId>7</deviceId></anything>"), "<Success/>");
}

TEST_F(ASetDeviceStateRequest, AppliesAbsentChildrenAsFalseAndEmpty) {
  device.enabled = device.managed = device.usePrimaryContact = device.useProjectOwnerAddress = device.useRoomDevice = true;
  device.sysName = device.sysContact = device.sysLocation = device.communityRead = device.communityWrite = "before";
  device.trapTargets = {{"t", "c", "1"}};
  EXPECT_EQ(Reply(With("")), "<Success/>");
  const Calls applied = Applied({"false", "false", "", "", "", "false", "", "false", "", "false"}, {});
  EXPECT_THAT(journal.Calls(),
              ElementsAreArray(Sequence({applied, Read(), Written(), {"7.SetIsConfigDirty false"}, Told()})));
  EXPECT_FALSE(device.enabled) << "a request without the switch turns SNMP off";
  EXPECT_TRUE(device.trapTargets.empty());
}

TEST_F(ASetDeviceStateRequest, AppliesEachSettingFromItsOwnChild) {
  const std::pair<bool RecordingDevice::*, const char*> switches[] = {
      {&RecordingDevice::managed, "snmpIsManagedDevice"},
      {&RecordingDevice::enabled, "snmpEnabledSetting"},
      {&RecordingDevice::usePrimaryContact, "snmpUsePrimaryContactSetting"},
      {&RecordingDevice::useProjectOwnerAddress, "snmpUseProjectOwnerAddressSetting"},
      {&RecordingDevice::useRoomDevice, "snmpUseRoomDeviceSetting"},
  };
  for (const auto& wanted : switches) {
    Reply(With("<" + std::string(wanted.second) + ">true</" + wanted.second + ">"));
    for (const auto& entry : switches) {
      EXPECT_EQ(device.*entry.first, entry.first == wanted.first) << entry.second << " by " << wanted.second;
    }
  }
}

TEST_F(ASetDeviceStateRequest, DoesNotApplyTheDirtyFlagOfTheElement) {
  device.copyTo.always = -9;
  Reply(With("<snmpIsConfigDirty>false</snmpIsConfigDirty>"));
  EXPECT_TRUE(device.dirty);
  device.copyTo.always = 0;
  Reply(With("<snmpIsConfigDirty>true</snmpIsConfigDirty>"));
  EXPECT_FALSE(device.dirty);
}

TEST_F(ASetDeviceStateRequest, ClearsTrapTargetsWithAnEmptyList) {
  device.trapTargets = {{"t", "c", "1"}};
  EXPECT_EQ(Reply(With("<snmpTrapTargets/>")), "<Success/>");
  EXPECT_TRUE(device.trapTargets.empty());
  EXPECT_THAT(CallsOf({"7.AddTrapTargetSetting"}), IsEmpty());
}

TEST_F(ASetDeviceStateRequest, TakesEveryChildOfTheListForATrapTarget) {
  Reply(
      With("<snmpTrapTargets><x><port>3</port><target>1</target><community>2</community></x>text"
           "<trapTarget/><deviceId><target>4</target></deviceId></snmpTrapTargets>"));
  EXPECT_EQ(testsupport::TrapText(device.trapTargets), "1|2|3 || 4||");
}

TEST_F(ASetDeviceStateRequest, TellsOfALargeIdAsTheToolReadsIt) {
  Announce(4294967295UL, other);
  EXPECT_EQ(Reply("<d><deviceId>4294967295</deviceId></d>"), "<Success/>");
  EXPECT_EQ(journal.Calls().back(), "ConSendDataToUI <DeviceChanged><id>-1</id></DeviceChanged>");
}

TEST_F(ASetDeviceStateRequest, SetsBackWhatTheListShowed) {
  device.sysContact = "a <b> \"c\"";
  device.enabled = true;
  device.trapTargets = {{"t", "c d", "1"}, {"", "", ""}};
  const h7::auto_com<H7XML::INode> list = host.Command("GetDeviceList");
  const std::string element = Text(*list->GetChild("managedDevice"));
  device.sysContact = "changed";
  device.enabled = false;
  device.trapTargets.clear();
  EXPECT_EQ(Reply(element), "<Success/>");
  EXPECT_EQ(device.sysContact, "a <b> \"c\"");
  EXPECT_TRUE(device.enabled);
  EXPECT_EQ(testsupport::TrapText(device.trapTargets), "t|c d|1 ||");
}

TEST_F(ASetDeviceStateRequest, LogsNothing) {
  Reply("");
  Reply(kFull);
  device.copyFrom.always = 1;
  Reply(kFull);
  EXPECT_THAT(CallsOf({"Log"}), IsEmpty());
}

TEST_F(ASetDeviceStateRequest, LeaksNothingAndKeepsTheRecordWhereverACallThrows) {
  Reply(kFull);
  const std::size_t count = journal.Take().size();
  for (std::size_t failing = 0; failing != count; ++failing) {
    std::size_t index = 0;
    journal.SetHook([&](const std::string&) {
      if (index++ == failing) {
        throw std::runtime_error("host or device");
      }
    });
    EXPECT_THROW(Reply(kFull), std::runtime_error) << "call " << failing;
    EXPECT_EQ(devhost::LiveXmlObjects(), 0U) << "call " << failing;
    EXPECT_EQ(State().devices.at(7).use_count(), 1) << "call " << failing;
    EXPECT_EQ(index, failing + 1) << "calls went on after one threw";
  }
}

TEST_F(ASetDeviceStateRequest, LeaksNothingWhereverAnXmlCallThrows) {
  const int runs = WithEachXmlCallFailing(
      [&] {
        host.Command("SetDeviceState", {{"xml", kFull}});
      },
      [&](int call) {
        EXPECT_EQ(devhost::LiveXmlObjects(), 0U) << "at XML call " << call;
        EXPECT_EQ(State().devices.at(7).use_count(), 1) << "at XML call " << call;
      });
  EXPECT_GT(runs, 25);
}

TEST_F(ASetDeviceStateRequest, IsCarriedOutToTheEndForADeviceThatWithdrawsItselfInAnyCall) {
  Reply(kFull);
  const Calls usual = journal.Take();
  const std::string withdrawn = "ConSendDataToUI <DeviceDeleted><id>7</id></DeviceDeleted>";
  for (std::size_t index = 0; usual[index] != "DmInvalidateState"; ++index) {
    Announce(7, device);
    device.file.clear();
    std::size_t count = 0;
    journal.SetHook([&](const std::string&) {
      if (count++ == index) {
        agent->DeleteSNMPDevice(7);
      }
    });
    EXPECT_EQ(Reply(kFull), "<Success/>") << usual[index];
    journal.SetHook(nullptr);
    EXPECT_TRUE(State().devices.empty());
    Calls expected = usual;
    expected.insert(expected.begin() + static_cast<std::ptrdiff_t>(index) + 1, withdrawn);
    EXPECT_EQ(journal.Take(), expected);
  }
}

// Records, among the other calls, when nodes are made, trap targets are looked up and texts are read.
class ASetDeviceStateRequestToTheLetter : public ASetDeviceStateRequest, private devhost::XmlObserver {
 protected:
  Calls CallsOfRequest(const Calls& starts) {
    devhost::SetXmlObserver(this);
    host.Command("SetDeviceState", {{"xml", kFull}});
    devhost::SetXmlObserver(nullptr);
    return CallsOf(starts);
  }

 private:
  void OnXmlCall(const char* operation, const char* name) override {
    const std::string call = std::string(operation) + ' ' + name;
    if (call.find("CreateXmlNode ") == 0 || call == "GetChild snmpTrapTargets" || call.find("GetChildString ") == 0) {
      journal.Note(call);
    }
  }
};

TEST_F(ASetDeviceStateRequestToTheLetter, MakesItsReplyBetweenInvalidatingAndTelling) {
  EXPECT_THAT(CallsOfRequest({"CreateXmlNode", "DmInvalidateState", "ConSendDataToUI"}),
              ElementsAre("CreateXmlNode Fail", "DmInvalidateState", "CreateXmlNode Success", "CreateXmlNode DeviceChanged",
                          "ConSendDataToUI <DeviceChanged><id>7</id></DeviceChanged>"));
}

TEST_F(ASetDeviceStateRequestToTheLetter, ClearsTrapTargetsBeforeItLooksForOthers) {
  EXPECT_THAT(CallsOfRequest({"7.ClearTrap", "7.AddTrap", "GetChild "}),
              ElementsAre("7.ClearTrapTargetSetting", "GetChild snmpTrapTargets", "7.AddTrapTargetSetting t1|c1|162",
                          "7.AddTrapTargetSetting t2||"));
}

TEST_F(ASetDeviceStateRequestToTheLetter, ReadsTargetCommunityAndPortInThisOrderThenAddsThem) {
  EXPECT_THAT(CallsOfRequest({"GetChildString target", "GetChildString community", "GetChildString port", "7.AddTrap"}),
              ElementsAre("GetChildString target", "GetChildString community", "GetChildString port",
                          "7.AddTrapTargetSetting t1|c1|162", "GetChildString target", "GetChildString community",
                          "GetChildString port", "7.AddTrapTargetSetting t2||"));
}

TEST_F(ASetDeviceStateRequest, ReadsItsTextBeforeItMakesAReply) {
  struct Message final : ICmdMessage {
    std::string GetString(const char*) const override {
      EXPECT_EQ(devhost::LiveXmlObjects(), 0U);
      return With("");
    }
    unsigned long GetULong(const char*) const override { return 0; }
    bool Has(const char*) const override { return true; }
  } const message;
  EXPECT_EQ(Text(*agent->OnReqSetDeviceState(message)), "<Success/>");
}

TEST_F(ASetDeviceStateRequest, DoesNotParseAnEmptyText) {
  struct Observer : devhost::XmlObserver {
    void OnXmlCall(const char* operation, const char*) override { calls.push_back(operation); }
    Calls calls;
  } observer;
  devhost::SetXmlObserver(&observer);
  host.Command("SetDeviceState", {{"xml", ""}});
  devhost::SetXmlObserver(nullptr);
  EXPECT_THAT(observer.calls, ElementsAre("CreateXmlNode"));
}

TEST_F(ASetDeviceStateRequest, HasReleasedTheDocumentBeforeItReturns) {
  for (const char* xml : {kFull, "<d/>", "no xml"}) {
    const h7::auto_com<H7XML::INode> reply = host.Command("SetDeviceState", {{"xml", xml}});
    EXPECT_EQ(devhost::LiveXmlObjects(), 1U) << xml;
  }
}

}  // namespace
