// Calls the 40 operations of a device by their numbers.

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "tests/support/RecordingDevice.h"
#include "tests/support/Slots.h"

namespace {

using testing::ElementsAre;
using testsupport::CallSlot;
using testsupport::TrapText;

class TheSlotsOfADevice : public testing::Test {
 protected:
  // Slots are counted from 1 here, as host/ISupportSNMP.h numbers them.
  template <class Signature, class... Arguments>
  auto Call(std::size_t number, Arguments&&... arguments) {
    return CallSlot<Signature>(view, number - 1, std::forward<Arguments>(arguments)...);
  }

  // Expects that the slot returns the flag and runs the operation `name`.
  void ExpectFlag(std::size_t number, bool& flag, const std::string& name) {
    for (const bool value : {true, false}) {
      flag = value;
      EXPECT_EQ(Call<bool()>(number), value) << number;
      EXPECT_THAT(journal.Take(), ElementsAre("7." + name)) << number;
    }
  }

  void ExpectSwitch(std::size_t number, bool& flag, const std::string& name) {
    for (const bool value : {true, false}) {
      flag = !value;
      Call<void(bool)>(number, value);
      EXPECT_EQ(flag, value) << number;
      EXPECT_THAT(journal.Take(), ElementsAre("7." + name + (value ? " true" : " false"))) << number;
    }
  }

  // Expects getter, setter and erased flag of a text, in this order from `number` on.
  void ExpectText(std::size_t number, std::string& text, bool& erased, const std::string& name) {
    text = "a text that is longer than any buffer inside a string";
    EXPECT_EQ(Call<std::string()>(number), text) << number;
    EXPECT_THAT(journal.Take(), ElementsAre("7.Get" + name + "Setting")) << number;
    Call<void(std::string)>(number + 1, std::string("another"));
    EXPECT_EQ(text, "another") << number;
    EXPECT_THAT(journal.Take(), ElementsAre("7.Set" + name + "Setting another")) << number;
    ExpectFlag(number + 2, erased, "GetWas" + name + "SettingErased");
  }

  void ExpectAction(std::size_t number, testsupport::Statuses& statuses, const std::string& name) {
    statuses.always = -static_cast<int>(number);
    EXPECT_EQ(Call<int()>(number), statuses.always);
    EXPECT_THAT(journal.Take(), ElementsAre("7." + name));
  }

  Journal journal;
  testsupport::RecordingDevice device{7, journal};
  const void* view = static_cast<ISupportSNMP*>(&device);
};

TEST_F(TheSlotsOfADevice, OneToSixHoldItsStates) {
  ExpectFlag(1, device.managed, "GetIsManagedDevice");
  ExpectSwitch(2, device.managed, "SetIsManagedDevice");
  ExpectFlag(3, device.dirty, "GetIsConfigDirty");
  ExpectSwitch(4, device.dirty, "SetIsConfigDirty");
  ExpectFlag(5, device.enabled, "GetEnabledSetting");
  ExpectSwitch(6, device.enabled, "SetEnabledSetting");
}

TEST_F(TheSlotsOfADevice, SevenToTwentySevenHoldItsTexts) {
  ExpectText(7, device.communityRead, device.communityReadErased, "CommunityRead");
  ExpectText(10, device.communityWrite, device.communityWriteErased, "CommunityWrite");
  ExpectText(13, device.sysContact, device.sysContactErased, "SysContact");
  ExpectFlag(16, device.usePrimaryContact, "GetUsePrimaryContactSetting");
  ExpectSwitch(17, device.usePrimaryContact, "SetUsePrimaryContactSetting");
  ExpectText(18, device.sysLocation, device.sysLocationErased, "SysLocation");
  ExpectFlag(21, device.useProjectOwnerAddress, "GetUseProjectOwnerAddressSetting");
  ExpectSwitch(22, device.useProjectOwnerAddress, "SetUseProjectOwnerAddressSetting");
  ExpectText(23, device.sysName, device.sysNameErased, "SysName");
  ExpectFlag(26, device.useRoomDevice, "GetUseRoomDeviceSetting");
  ExpectSwitch(27, device.useRoomDevice, "SetUseRoomDeviceSetting");
}

TEST_F(TheSlotsOfADevice, TwentyEightToThirtyTwoHoldItsTrapTargets) {
  const TrapTarget first("10.0.0.5", "public", "162");
  const TrapTarget second("host", "", "");
  device.trapTargets = {first, second};
  EXPECT_EQ(TrapText(Call<std::vector<TrapTarget>()>(28)), "10.0.0.5|public|162 host||");
  EXPECT_THAT(journal.Take(), ElementsAre("7.GetTrapTargetsSetting"));
  Call<void(std::vector<TrapTarget>)>(29, std::vector<TrapTarget>{second});
  EXPECT_THAT(journal.Take(), ElementsAre("7.SetTrapTargetsSetting host||"));
  Call<void()>(30);
  EXPECT_TRUE(device.trapTargets.empty());
  EXPECT_THAT(journal.Take(), ElementsAre("7.ClearTrapTargetSetting"));
  Call<void(std::string, std::string, std::string)>(31, std::string("a"), std::string("b"), std::string("c"));
  EXPECT_EQ(TrapText(device.trapTargets), "a|b|c");
  EXPECT_THAT(journal.Take(), ElementsAre("7.AddTrapTargetSetting a|b|c"));
  ExpectFlag(32, device.trapTargetsErased, "GetWasTrapTargetsSettingErased");
}

TEST_F(TheSlotsOfADevice, ThirtyThreeToFortyAreItsSignalItsFileItsActionsAndItsVersion) {
  Call<void()>(33);
  EXPECT_THAT(journal.Take(), ElementsAre("7.AgentAvailable"));

  using Text = const std::string;
  Text path = "/a/path";
  device.file = "the device's text";
  std::string config;
  EXPECT_EQ((Call<int(Text&, std::string&)>(34, path, config)), 0);
  EXPECT_EQ(config, device.file);
  EXPECT_THAT(journal.Take(), ElementsAre("7.CopyFrom /a/path"));
  Text changed = "the agent's text";
  EXPECT_EQ((Call<int(Text&, Text&)>(35, path, changed)), 0);
  EXPECT_EQ(device.file, changed);
  EXPECT_THAT(journal.Take(), ElementsAre("7.CopyTo /a/path"));

  ExpectAction(36, device.reboot, "RebootController");
  ExpectAction(37, device.stop, "StopMasterAgent");
  ExpectAction(38, device.start, "StartMasterAgent");

  EXPECT_EQ(Call<std::string()>(39), "1.0");
  EXPECT_THAT(journal.Take(), ElementsAre("7.GetSNMPVersion"));
  Text version = "2.0";
  EXPECT_TRUE(Call<bool(Text&)>(40, version));
  EXPECT_THAT(journal.Take(), ElementsAre("7.IsSNMPVersionValid 2.0"));
}

}  // namespace
