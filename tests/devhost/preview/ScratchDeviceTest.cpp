#include "devhost/preview/ScratchDevice.h"

#include <gmock/gmock.h>

#include <string>

#include "devhost/engine/Host.h"
#include "tests/devhost/support/RecordingObserver.h"

namespace devhost {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

// With the built agent.
class AScratchDevice : public testing::Test {
 protected:
  AScratchDevice() {
    host.Load({1, "agent", MODULE_FOLDER "/snmp_configuration_agent.so", "<config/>"});
    content.version = "7";
    content.isVersionValid = true;
  }
  ~AScratchDevice() override {
    host.Stop();
    EXPECT_THAT(observer.Texts(Occurrence::Kind::Manners), IsEmpty());
  }

  void Load() {
    host.Load({12, "kitchen", "", ""},
              [this](IInstanceManager& instances) { return new ScratchDevice(instances, content); });
  }
  std::string Set(const std::string& settings) {
    return host.Command(1, "SetDeviceState",
                        {{"xml", "<managedDevice>" + settings + "<deviceId>12</deviceId></managedDevice>"}});
  }

  RecordingObserver observer;
  Host host{observer};
  DeviceAnswers content;
};

TEST_F(AScratchDevice, IsListedWithItsAnswers) {
  content.isManaged = content.isEnabled = content.usesRoomDevice = true;
  content.communityRead.value = "r";
  content.communityWrite.value = "w";
  content.sysContact.value = "c";
  content.sysLocation.value = "l";
  content.sysName.value = "n";
  content.trapTargets.value = {{"t", "u", "162"}};
  Load();
  EXPECT_EQ(
      host.Command(1, "GetDeviceList", {}),
      "<managedDevices><managedDevice><snmpIsManagedDevice>true</snmpIsManagedDevice>"
      "<snmpIsConfigDirty>false</snmpIsConfigDirty><snmpEnabledSetting>true</snmpEnabledSetting>"
      "<snmpCommunityReadSetting>r</snmpCommunityReadSetting><snmpCommunityWriteSetting>w</snmpCommunityWriteSetting>"
      "<snmpSysContactSetting>c</snmpSysContactSetting><snmpUsePrimaryContactSetting>false</snmpUsePrimaryContactSetting>"
      "<snmpSysLocationSetting>l</snmpSysLocationSetting>"
      "<snmpUseProjectOwnerAddressSetting>false</snmpUseProjectOwnerAddressSetting>"
      "<snmpSysNameSetting>n</snmpSysNameSetting><snmpUseRoomDeviceSetting>true</snmpUseRoomDeviceSetting>"
      "<snmpTrapTargets><trapTarget><target>t</target><community>u</community><port>162</port></trapTarget>"
      "</snmpTrapTargets><deviceId>12</deviceId></managedDevice></managedDevices>");
}

TEST_F(AScratchDevice, OfAVersionThatIsNotValidIsNotListed) {
  content.isVersionValid = false;
  Load();
  EXPECT_EQ(host.Command(1, "GetDeviceList", {}), "<managedDevices/>");
}

TEST_F(AScratchDevice, KeepsWhatItIsGiven) {
  content.file = "# by hand\n";
  Load();
  EXPECT_EQ(
      Set("<snmpIsManagedDevice>true</snmpIsManagedDevice><snmpEnabledSetting>true</snmpEnabledSetting>"
          "<snmpCommunityReadSetting>r</snmpCommunityReadSetting><snmpCommunityWriteSetting>w</snmpCommunityWriteSetting>"
          "<snmpSysContactSetting>c</snmpSysContactSetting><snmpUsePrimaryContactSetting>true</snmpUsePrimaryContactSetting>"
          "<snmpSysLocationSetting>l</snmpSysLocationSetting>"
          "<snmpUseProjectOwnerAddressSetting>true</snmpUseProjectOwnerAddressSetting>"
          "<snmpSysNameSetting>n</snmpSysNameSetting><snmpUseRoomDeviceSetting>true</snmpUseRoomDeviceSetting>"
          "<snmpTrapTargets><trapTarget><target>t</target><community>u</community><port>1</port></trapTarget>"
          "</snmpTrapTargets>"),
      "<Success/>");
  EXPECT_TRUE(content.isManaged && content.isEnabled && content.usesPrimaryContact && content.usesProjectOwnerAddress &&
              content.usesRoomDevice);
  EXPECT_FALSE(content.isConfigDirty);
  EXPECT_EQ(content.communityRead.value + content.communityWrite.value + content.sysContact.value +
                content.sysLocation.value + content.sysName.value,
            "rwcln");
  ASSERT_EQ(content.trapTargets.value.size(), 1U);
  EXPECT_EQ(content.trapTargets.value[0].community, "u");
  EXPECT_THAT(content.file, testing::AllOf(HasSubstr("\nsysName  n\n"), HasSubstr("\n# by hand\n")));
}

// The agent fills an empty setting from the file unless it was erased.
TEST_F(AScratchDevice, CountsASettingThatLosesItsValueAsErased) {
  const std::string section = "# Halvoren Section Start\nsysName  old\nsysContact  old\ntrap2sink  t  u  1\n";
  content.file = section + "# Halvoren Section End\n";
  content.sysName.value = "n";
  content.trapTargets.value = {{"t", "u", "162"}};
  Load();
  EXPECT_EQ(Set(""), "<Success/>");
  EXPECT_EQ(content.sysName.value, "");
  EXPECT_TRUE(content.sysName.wasErased && content.trapTargets.wasErased);
  EXPECT_TRUE(content.trapTargets.value.empty());
  EXPECT_EQ(content.sysContact.value, "old");
  // It stays erased until it gets a value.
  EXPECT_EQ(Set(""), "<Success/>");
  EXPECT_TRUE(content.sysName.wasErased);
  EXPECT_EQ(Set("<snmpSysNameSetting>n</snmpSysNameSetting>"), "<Success/>");
  EXPECT_FALSE(content.sysName.wasErased);
}

TEST_F(AScratchDevice, AnswersWithTheStatusOfTheDevice) {
  content.copyStatus = -4;
  Load();
  EXPECT_EQ(Set(""), "<ReadFail/>");
  EXPECT_EQ(content.file, "");
  content.copyStatus = kCannotBeReached;
  EXPECT_EQ(Set(""), "<Success/>");
  EXPECT_THAT(content.file, HasSubstr("# Halvoren Section Start\n"));
  EXPECT_TRUE(content.isConfigDirty);
}

TEST_F(AScratchDevice, HasNoControllerToActOn) {
  Load();
  for (const char* const action : {"RebootController", "StopMasterAgent", "StartMasterAgent"}) {
    EXPECT_EQ(host.Command(1, action, {{"deviceId", "12"}}), "<Fail/>");
  }
}

}  // namespace
}  // namespace devhost
