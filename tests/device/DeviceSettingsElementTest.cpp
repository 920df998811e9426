#include <algorithm>

#include "device/SNMPDevice.h"
#include "tests/device/DeviceFixture.h"

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

class TheDeviceSettingsElement : public DeviceTest {
 protected:
  RecordingDevice device{7, journal};
  SNMPDevice record{7, &device};
};

TEST_F(TheDeviceSettingsElement, OfADeviceThatHoldsNothingIsComplete) {
  EXPECT_EQ(Text(*record.ToXml()), EmptyElement("7"));
}

TEST_F(TheDeviceSettingsElement, HoldsEverySettingInItsPlace) {
  device.dirty = true;
  device.enabled = true;
  device.communityRead = "read";
  device.communityWrite = "write";
  device.sysContact = " a <b> & \"c\" ";
  device.sysLocation = "L\xC3\xBCneburg";
  device.useProjectOwnerAddress = true;
  device.sysName = "name";
  device.trapTargets = {{"t1", "c1", "162"}, {"t0", "", "1"}, {"", "", ""}};
  EXPECT_EQ(Text(*record.ToXml()),
            "<managedDevice><snmpIsManagedDevice>false</snmpIsManagedDevice><snmpIsConfigDirty>true</snmpIsConfigDirty>"
            "<snmpEnabledSetting>true</snmpEnabledSetting><snmpCommunityReadSetting>read</snmpCommunityReadSetting>"
            "<snmpCommunityWriteSetting>write</snmpCommunityWriteSetting>"
            "<snmpSysContactSetting> a &lt;b&gt; &amp; \"c\" </snmpSysContactSetting>"
            "<snmpUsePrimaryContactSetting>false</snmpUsePrimaryContactSetting>"
            "<snmpSysLocationSetting>L\xC3\xBCneburg</snmpSysLocationSetting>"
            "<snmpUseProjectOwnerAddressSetting>true</snmpUseProjectOwnerAddressSetting>"
            "<snmpSysNameSetting>name</snmpSysNameSetting><snmpUseRoomDeviceSetting>false</snmpUseRoomDeviceSetting>"
            "<snmpTrapTargets>"
            "<trapTarget><target>t1</target><community>c1</community><port>162</port></trapTarget>"
            "<trapTarget><target>t0</target><community/><port>1</port></trapTarget>"
            "<trapTarget><target/><community/><port/></trapTarget>"
            "</snmpTrapTargets><deviceId>7</deviceId></managedDevice>");
}

TEST_F(TheDeviceSettingsElement, TakesEachSwitchFromItsOwnGetter) {
  const std::pair<bool RecordingDevice::*, const char*> switches[] = {
      {&RecordingDevice::managed, "snmpIsManagedDevice"},
      {&RecordingDevice::dirty, "snmpIsConfigDirty"},
      {&RecordingDevice::enabled, "snmpEnabledSetting"},
      {&RecordingDevice::usePrimaryContact, "snmpUsePrimaryContactSetting"},
      {&RecordingDevice::useProjectOwnerAddress, "snmpUseProjectOwnerAddressSetting"},
      {&RecordingDevice::useRoomDevice, "snmpUseRoomDeviceSetting"},
  };
  for (const auto& entry : switches) {
    device.*entry.first = true;
    const std::string name = entry.second;
    std::string expected = EmptyElement("7");
    const std::string off = "<" + name + ">false";
    expected.replace(expected.find(off), off.size(), "<" + name + ">true");
    EXPECT_EQ(Text(*record.ToXml()), expected);
    device.*entry.first = false;
  }
}

TEST_F(TheDeviceSettingsElement, AsksForEverySettingOnceInOrder) {
  device.trapTargets = {{"a", "b", "c"}, {"d", "e", "f"}};
  record.ToXml();
  EXPECT_THAT(journal.Calls(), ElementsAreArray(ElementCalls("7")));
}

TEST_F(TheDeviceSettingsElement, TakesATrapTargetInWhenItIsComplete) {
  struct Observer final : devhost::XmlObserver {
    void OnXmlCall(const char* operation, const char* name) override {
      calls.push_back(std::string(operation) + ' ' + name);
    }
    Calls calls;
  } observer;
  device.trapTargets = {{"a", "b", "c"}};
  devhost::SetXmlObserver(&observer);
  record.ToXml();
  devhost::SetXmlObserver(nullptr);
  const auto made = std::find(observer.calls.begin(), observer.calls.end(), "CreateXmlNode trapTarget");
  ASSERT_GE(observer.calls.end() - made, 5);
  EXPECT_THAT(Calls(made, made + 5), ElementsAre("CreateXmlNode trapTarget", "AddChildString target",
                                                 "AddChildString community", "AddChildString port", "AppendChild "));
}

TEST_F(TheDeviceSettingsElement, CarriesNeitherErasedFlagsNorTheRecordsOwnTexts) {
  device.communityReadErased = device.communityWriteErased = device.sysContactErased = true;
  device.sysLocationErased = device.sysNameErased = device.trapTargetsErased = true;
  record.SetAgentXTimeout("99");
  record.SetConfig("text");
  EXPECT_EQ(Text(*record.ToXml()), EmptyElement("7"));
}

TEST_F(TheDeviceSettingsElement, WritesTheLargestIdUnsigned) {
  SNMPDevice largest(4294967295UL, &device);
  EXPECT_EQ(Text(*largest.ToXml()), EmptyElement("4294967295"));
}

TEST_F(TheDeviceSettingsElement, IsMadeAnewEachTime) {
  const h7::auto_com<H7XML::INode> first = record.ToXml();
  device.sysName = "later";
  const h7::auto_com<H7XML::INode> second = record.ToXml();
  EXPECT_NE(first.Get(), second.Get());
  EXPECT_EQ(first->GetChildString("snmpSysNameSetting"), "");
  EXPECT_EQ(second->GetChildString("snmpSysNameSetting"), "later");
}

TEST_F(TheDeviceSettingsElement, LeaksNothingWhicheverGetterThrows) {
  device.trapTargets = {{"a", "b", "c"}};
  for (const std::string& failing : ElementCalls("7")) {
    journal.SetHook([&failing](const std::string& call) {
      if (call == failing) {
        throw std::runtime_error("device");
      }
    });
    EXPECT_THROW(record.ToXml(), std::runtime_error) << failing;
    EXPECT_EQ(devhost::LiveXmlObjects(), 0U) << failing;
  }
}

}  // namespace
