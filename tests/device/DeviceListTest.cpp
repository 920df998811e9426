#include "device/SNMPDevice.h"
#include "tests/device/DeviceFixture.h"

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

class TheDeviceList : public DeviceTest {
 protected:
  static std::string List(const std::string& elements) { return "<managedDevices>" + elements + "</managedDevices>"; }

  RecordingDevice five{5, journal};
  RecordingDevice seven{7, journal};
  RecordingDevice nine{9, journal};
  RecordingDevice largest{4294967295UL, journal};
};

TEST_F(TheDeviceList, OfAnEmptyRegistryIsAnEmptyElement) {
  EXPECT_EQ(host.CommandText("GetDeviceList"), "<managedDevices/>");
  EXPECT_TRUE(journal.Calls().empty());
}

TEST_F(TheDeviceList, RunsInAscendingOrderOfIds) {
  Announce(7, seven);
  Announce(4294967295UL, largest);
  Announce(5, five);
  EXPECT_EQ(host.CommandText("GetDeviceList"), List(EmptyElement("5") + EmptyElement("7") + EmptyElement("4294967295")));
}

TEST_F(TheDeviceList, TakesNoParameterFromTheMessage) {
  Announce(5, five);
  Announce(7, seven);
  EXPECT_EQ(host.CommandText("GetDeviceList", {{"deviceId", "5"}}), List(EmptyElement("5") + EmptyElement("7")));
}

TEST_F(TheDeviceList, TestsTheVersionThenReadsThenWritesEachDevice) {
  Announce(5, five);
  Announce(7, seven);
  Calls expected;
  for (const char* id : {"5", "7"}) {
    const std::string prefix = std::string(id) + '.';
    Append(expected,
           {prefix + "GetSNMPVersion", prefix + "IsSNMPVersionValid 1.0", prefix + "CopyFrom /etc/snmp/snmpd.conf.local"});
    Append(expected, ElementCalls(id));
  }
  host.Command("GetDeviceList");
  EXPECT_THAT(journal.Calls(), ElementsAreArray(expected));
}

TEST_F(TheDeviceList, LeavesADeviceOfInvalidVersionOutAndDoesNotReadIt) {
  five.versionValid = false;
  Announce(5, five);
  EXPECT_EQ(host.CommandText("GetDeviceList"), "<managedDevices/>");
  EXPECT_THAT(journal.Calls(), ElementsAre("5.GetSNMPVersion", "5.IsSNMPVersionValid 1.0"));
  Announce(7, seven);
  EXPECT_EQ(host.CommandText("GetDeviceList"), List(EmptyElement("7")));
}

TEST_F(TheDeviceList, FillsEmptySettingsFromTheFileBeforeListing) {
  five.file = "# Halvoren Section Start\nsysName   kitchen\nsysLocation   upstairs\n# Halvoren Section End\n";
  five.sysLocation = "kept";
  five.sysContactErased = true;
  Announce(5, five);
  const h7::auto_com<H7XML::INode> list = host.Command("GetDeviceList");
  const h7::auto_com<H7XML::INode> element = list->GetChild("managedDevice");
  EXPECT_EQ(element->GetChildString("snmpSysNameSetting"), "kitchen");
  EXPECT_EQ(element->GetChildString("snmpSysLocationSetting"), "kept");
}

TEST_F(TheDeviceList, ListsADeviceWhoseFileCannotBeReadWithWhatItHolds) {
  for (const int status : {-9, 1, -1}) {
    five.copyFrom.always = status;
    five.sysName = "held";
    five.file = "# Halvoren Section Start\nsysLocation   upstairs\n# Halvoren Section End\n";
    Announce(5, five);
    const h7::auto_com<H7XML::INode> list = host.Command("GetDeviceList");
    const h7::auto_com<H7XML::INode> element = list->GetChild("managedDevice");
    ASSERT_TRUE(element) << status;
    EXPECT_EQ(element->GetChildString("snmpSysNameSetting"), "held");
    EXPECT_EQ(element->GetChildString("snmpSysLocationSetting"), "");
  }
}

TEST_F(TheDeviceList, PassesOverAnEntryWithoutARecord) {
  Announce(5, five);
  State().devices[6];
  Announce(7, seven);
  EXPECT_EQ(host.CommandText("GetDeviceList"), List(EmptyElement("5") + EmptyElement("7")));
  State().devices.erase(6);
}

TEST_F(TheDeviceList, WritesNoFileTellsNobodyAndInvalidatesNothing) {
  Announce(5, five);
  host.Command("GetDeviceList");
  EXPECT_THAT(CallsOf({"5.CopyTo", "5.Set", "ConSendDataToUI", "DmInvalidateState", "Log"}), testing::IsEmpty());
}

TEST_F(TheDeviceList, IsDroppedWholeWhenADeviceThrows) {
  Announce(5, five);
  Announce(7, seven);
  Announce(9, nine);
  host.Command("GetDeviceList");
  const Calls calls = journal.Take();
  for (const std::string& failing : calls) {
    journal.SetHook([&failing](const std::string& call) {
      if (call == failing) {
        throw std::runtime_error("device");
      }
    });
    EXPECT_THROW(host.Command("GetDeviceList"), std::runtime_error) << failing;
    EXPECT_EQ(devhost::LiveXmlObjects(), 0U) << failing;
    EXPECT_EQ(State().devices.size(), 3U) << failing;
    EXPECT_EQ(State().devices.at(5).use_count(), 1) << failing;
    EXPECT_EQ(State().devices.at(9).use_count(), 1) << failing;
  }
}

}  // namespace
