#include "drivers/common/SettingsHolder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// The settings alone, seen as the agent sees them.
class SettingsOnly final : public drivers::SettingsHolder {
 public:
  void AgentAvailable() override {}
  int CopyFrom(const std::string&, std::string&) override { return 0; }
  int CopyTo(const std::string&, const std::string&) override { return 0; }
  int RebootController() override { return 0; }
  int StopMasterAgent() override { return 0; }
  int StartMasterAgent() override { return 0; }
  std::string GetSNMPVersion() override { return std::string(); }
  bool IsSNMPVersionValid(const std::string&) override { return true; }

  int changes = 0;

 private:
  void SettingsChanged() override { ++changes; }
};

struct TextAccess {
  const char* name;
  std::string (ISupportSNMP::*get)();
  void (ISupportSNMP::*set)(std::string);
  bool (ISupportSNMP::*wasErased)();
};

const TextAccess kTexts[] = {
    {"CommunityRead", &ISupportSNMP::GetCommunityReadSetting, &ISupportSNMP::SetCommunityReadSetting,
     &ISupportSNMP::GetWasCommunityReadSettingErased},
    {"CommunityWrite", &ISupportSNMP::GetCommunityWriteSetting, &ISupportSNMP::SetCommunityWriteSetting,
     &ISupportSNMP::GetWasCommunityWriteSettingErased},
    {"SysContact", &ISupportSNMP::GetSysContactSetting, &ISupportSNMP::SetSysContactSetting,
     &ISupportSNMP::GetWasSysContactSettingErased},
    {"SysLocation", &ISupportSNMP::GetSysLocationSetting, &ISupportSNMP::SetSysLocationSetting,
     &ISupportSNMP::GetWasSysLocationSettingErased},
    {"SysName", &ISupportSNMP::GetSysNameSetting, &ISupportSNMP::SetSysNameSetting,
     &ISupportSNMP::GetWasSysNameSettingErased},
};

struct SwitchAccess {
  const char* name;
  bool (ISupportSNMP::*get)();
  void (ISupportSNMP::*set)(bool);
};

const SwitchAccess kSwitches[] = {
    {"IsManagedDevice", &ISupportSNMP::GetIsManagedDevice, &ISupportSNMP::SetIsManagedDevice},
    {"IsConfigDirty", &ISupportSNMP::GetIsConfigDirty, &ISupportSNMP::SetIsConfigDirty},
    {"Enabled", &ISupportSNMP::GetEnabledSetting, &ISupportSNMP::SetEnabledSetting},
    {"UsePrimaryContact", &ISupportSNMP::GetUsePrimaryContactSetting, &ISupportSNMP::SetUsePrimaryContactSetting},
    {"UseProjectOwnerAddress", &ISupportSNMP::GetUseProjectOwnerAddressSetting,
     &ISupportSNMP::SetUseProjectOwnerAddressSetting},
    {"UseRoomDevice", &ISupportSNMP::GetUseRoomDeviceSetting, &ISupportSNMP::SetUseRoomDeviceSetting},
};

class ATextSetting : public testing::TestWithParam<TextAccess> {
 protected:
  std::string Get() { return (m_device.*GetParam().get)(); }
  void Set(const std::string& value) { (m_device.*GetParam().set)(value); }
  bool WasErased() { return (m_device.*GetParam().wasErased)(); }

 private:
  SettingsOnly m_settings;
  ISupportSNMP& m_device = m_settings;
};

TEST_P(ATextSetting, IsEmptyAndNotErasedWhenNew) {
  EXPECT_EQ("", Get());
  EXPECT_FALSE(WasErased());
}

TEST_P(ATextSetting, KeepsItsTextAsItIs) {
  const std::string text = "  \"my\tbox\"\r\n" + std::string(1, '\0') + " ";
  Set(text);
  EXPECT_EQ(text, Get());
  EXPECT_FALSE(WasErased());
}

TEST_P(ATextSetting, IsErasedByTheEmptyTextWhenItHeldSomething) {
  Set("something");
  Set("");
  EXPECT_EQ("", Get());
  EXPECT_TRUE(WasErased());
}

TEST_P(ATextSetting, StaysErasedWhenItIsSetEmptyAgain) {
  Set("something");
  Set("");
  Set("");
  EXPECT_TRUE(WasErased());
}

TEST_P(ATextSetting, IsNotErasedByTheEmptyTextWhenItNeverHeldAnything) {
  Set("");
  Set("");
  EXPECT_FALSE(WasErased());
}

TEST_P(ATextSetting, IsNoLongerErasedWhenItHoldsSomethingAgain) {
  Set("something");
  Set("");
  Set("something else");
  EXPECT_EQ("something else", Get());
  EXPECT_FALSE(WasErased());
}

TEST_P(ATextSetting, LeavesTheFlagsOfTheOthersAlone) {
  SettingsOnly settings;
  ISupportSNMP& device = settings;
  (device.*GetParam().set)("something");
  (device.*GetParam().set)("");
  for (const TextAccess& other : kTexts) {
    EXPECT_EQ(std::string(other.name) == GetParam().name, (device.*other.wasErased)()) << other.name;
    EXPECT_EQ("", (device.*other.get)()) << other.name;
  }
  EXPECT_FALSE(device.GetWasTrapTargetsSettingErased());
  EXPECT_FALSE(device.GetIsConfigDirty());
}

INSTANTIATE_TEST_SUITE_P(Each, ATextSetting, testing::ValuesIn(kTexts),
                         [](const testing::TestParamInfo<TextAccess>& text) { return text.param.name; });

TEST(ASwitch, IsOffWhenNewAndTurnsNoOther) {
  for (const SwitchAccess& turned : kSwitches) {
    SettingsOnly settings;
    ISupportSNMP& device = settings;
    for (const SwitchAccess& other : kSwitches) {
      EXPECT_FALSE((device.*other.get)()) << other.name;
    }
    (device.*turned.set)(true);
    for (const SwitchAccess& other : kSwitches) {
      EXPECT_EQ(turned.name == other.name, (device.*other.get)()) << turned.name << " and " << other.name;
    }
    (device.*turned.set)(false);
    EXPECT_FALSE((device.*turned.get)()) << turned.name;
  }
}

TEST(AChange, IsReportedOnceForEachTextAndSwitchAndForNothingThatStaysAsItIs) {
  for (const TextAccess& text : kTexts) {
    SettingsOnly device;
    (device.*text.set)("");
    EXPECT_EQ(0, device.changes) << text.name;
    (device.*text.set)("something");
    (device.*text.set)("something");
    EXPECT_EQ(1, device.changes) << text.name;
    (device.*text.set)("");
    (device.*text.set)("");
    EXPECT_EQ(2, device.changes) << text.name;
  }
  for (const SwitchAccess& access : kSwitches) {
    SettingsOnly device;
    (device.*access.set)(false);
    EXPECT_EQ(0, device.changes) << access.name;
    (device.*access.set)(true);
    (device.*access.set)(true);
    EXPECT_EQ(1, device.changes) << access.name;
  }
}

TEST(AChange, OfTheTrapTargetsIsReportedWhenOneDiffers) {
  SettingsOnly device;
  device.ClearTrapTargetSetting();
  EXPECT_EQ(0, device.changes);
  device.AddTrapTargetSetting("10.0.0.5", "public", "162");
  device.SetTrapTargetsSetting({TrapTarget("10.0.0.5", "public", "162")});
  EXPECT_EQ(1, device.changes);
  device.SetTrapTargetsSetting({TrapTarget("10.0.0.6", "public", "162")});
  device.SetTrapTargetsSetting({TrapTarget("10.0.0.6", "secret", "162")});
  device.SetTrapTargetsSetting({TrapTarget("10.0.0.6", "secret", "163")});
  EXPECT_EQ(4, device.changes);
  device.ClearTrapTargetSetting();
  EXPECT_EQ(5, device.changes);
}

TEST(AListOfTrapTargets, IsEmptyAndNotErasedWhenNew) {
  SettingsOnly device;
  EXPECT_TRUE(device.GetTrapTargetsSetting().empty());
  EXPECT_FALSE(device.GetWasTrapTargetsSettingErased());
}

TEST(AListOfTrapTargets, KeepsOrderAndTexts) {
  SettingsOnly device;
  device.AddTrapTargetSetting("10.0.0.5", "public", "162");
  device.AddTrapTargetSetting("", "", "");
  const std::vector<TrapTarget> targets = device.GetTrapTargetsSetting();
  ASSERT_EQ(2U, targets.size());
  EXPECT_EQ("10.0.0.5", targets[0].target);
  EXPECT_EQ("public", targets[0].community);
  EXPECT_EQ("162", targets[0].port);
  EXPECT_EQ("", targets[1].target + targets[1].community + targets[1].port);
}

TEST(AListOfTrapTargets, IsErasedWhenItHeldSomeAndIsLeftEmpty) {
  SettingsOnly device;
  device.AddTrapTargetSetting("10.0.0.5", "public", "162");
  device.ClearTrapTargetSetting();
  EXPECT_TRUE(device.GetTrapTargetsSetting().empty());
  EXPECT_TRUE(device.GetWasTrapTargetsSettingErased());
  device.ClearTrapTargetSetting();
  EXPECT_TRUE(device.GetWasTrapTargetsSettingErased());
}

TEST(AListOfTrapTargets, IsNotErasedByClearingWhenItNeverHeldAny) {
  SettingsOnly device;
  device.ClearTrapTargetSetting();
  device.SetTrapTargetsSetting({});
  EXPECT_FALSE(device.GetWasTrapTargetsSettingErased());
}

TEST(AListOfTrapTargets, IsNotErasedWhenItIsClearedToBeFilledAgain) {
  SettingsOnly device;
  device.AddTrapTargetSetting("10.0.0.5", "public", "162");
  device.ClearTrapTargetSetting();
  device.AddTrapTargetSetting("10.0.0.6", "public", "162");
  EXPECT_FALSE(device.GetWasTrapTargetsSettingErased());
  ASSERT_EQ(1U, device.GetTrapTargetsSetting().size());
  EXPECT_EQ("10.0.0.6", device.GetTrapTargetsSetting()[0].target);
}

TEST(AListOfTrapTargets, SetAsAWholeFollowsTheSameRules) {
  SettingsOnly device;
  device.SetTrapTargetsSetting({TrapTarget("10.0.0.5", "", "")});
  EXPECT_FALSE(device.GetWasTrapTargetsSettingErased());
  device.SetTrapTargetsSetting({});
  EXPECT_TRUE(device.GetWasTrapTargetsSettingErased());
  device.SetTrapTargetsSetting({TrapTarget("10.0.0.6", "", "")});
  EXPECT_FALSE(device.GetWasTrapTargetsSettingErased());
  EXPECT_EQ(1U, device.GetTrapTargetsSetting().size());
}

}  // namespace
