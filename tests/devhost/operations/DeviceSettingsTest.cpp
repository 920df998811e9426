#include "devhost/operations/DeviceSettings.h"

#include <gmock/gmock.h>

#include "devhost/preview/DeviceAnswers.h"
#include "devhost/secrets/Masker.h"

namespace devhost {
namespace {

const DriverEntry kAgent{1, "agent", MODULE_FOLDER "/snmp_configuration_agent.so", "<config/>"};
const DriverEntry kDevice{12, "kitchen", "", "<config/>"};

DeviceAnswers Answers() {
  DeviceAnswers answers;
  answers.isVersionValid = true;
  return answers;
}

std::string Section(const std::string& lines) {
  return "# Halvoren Section Start\n" + lines + "# Halvoren Section End\n";
}

TEST(TheSettingsElement, HasAllThirteenChildrenInTheOrderOfTheAgent) {
  DeviceAnswers answers = Answers();
  answers.isEnabled = true;
  answers.sysName.value = "a<b";
  answers.trapTargets.value = {{"192.0.2.5", "c", "162"}};
  EXPECT_EQ(SettingsElement(answers, 4294967295UL),
            "<managedDevice>\n"
            "  <snmpIsManagedDevice>false</snmpIsManagedDevice>\n"
            "  <snmpIsConfigDirty>false</snmpIsConfigDirty>\n"
            "  <snmpEnabledSetting>true</snmpEnabledSetting>\n"
            "  <snmpCommunityReadSetting/>\n"
            "  <snmpCommunityWriteSetting/>\n"
            "  <snmpSysContactSetting/>\n"
            "  <snmpUsePrimaryContactSetting>false</snmpUsePrimaryContactSetting>\n"
            "  <snmpSysLocationSetting/>\n"
            "  <snmpUseProjectOwnerAddressSetting>false</snmpUseProjectOwnerAddressSetting>\n"
            "  <snmpSysNameSetting>a&lt;b</snmpSysNameSetting>\n"
            "  <snmpUseRoomDeviceSetting>false</snmpUseRoomDeviceSetting>\n"
            "  <snmpTrapTargets>\n"
            "    <trapTarget>\n"
            "      <target>192.0.2.5</target>\n"
            "      <community>c</community>\n"
            "      <port>162</port>\n"
            "    </trapTarget>\n"
            "  </snmpTrapTargets>\n"
            "  <deviceId>4294967295</deviceId>\n"
            "</managedDevice>\n");
}

TEST(EffectiveSettings, AreReadFromTheSectionWhereTheDeviceHoldsNone) {
  DeviceAnswers answers = Answers();
  answers.file = "sysContact elsewhere\n" + Section("sysContact  Ada\nsysName  old\nsysLocation  gone\n");
  answers.sysName.value = "kitchen";
  answers.sysLocation.wasErased = true;
  DeviceAnswers expected = answers;
  expected.sysContact.value = "Ada";
  EXPECT_EQ(EffectiveSettings(kAgent, kDevice, answers), SettingsElement(expected, 12));
}

// The agent's reader keeps the quotes that its writer has put there.
TEST(EffectiveSettings, HaveACommunityWithASpaceWithoutTheQuotesOfTheFile) {
  DeviceAnswers answers = Answers();
  answers.file = Section("rocommunity  \"two words\"\nrwcommunity  \"quoted\"\n");
  DeviceAnswers expected = answers;
  expected.communityRead.value = "two words";
  expected.communityWrite.value = "\"quoted\"";  // by somebody else: the agent quotes only what has a space
  EXPECT_EQ(EffectiveSettings(kAgent, kDevice, answers), SettingsElement(expected, 12));
  answers.communityRead.value = "\"of the device\"";
  expected.communityRead = answers.communityRead;
  EXPECT_EQ(EffectiveSettings(kAgent, kDevice, answers), SettingsElement(expected, 12));
}

TEST(EffectiveSettings, HaveTrapTargetsAsTheyStandInTheFile) {
  DeviceAnswers answers = Answers();
  answers.file = Section(
      "trap2sink  192.0.2.1  one  162\ntrap2sink  192.0.2.2  two\ntrap2sink  192.0.2.3  \"in quotes\"  163\n"
      "trap2sink  192.0.2.4\n");
  DeviceAnswers expected = answers;
  expected.trapTargets.value = {
      {"192.0.2.1", "one", "162"}, {"192.0.2.2", "two", ""}, {"192.0.2.3", "in quotes", "163"}, {"192.0.2.4", "", ""}};
  EXPECT_EQ(EffectiveSettings(kAgent, kDevice, answers), SettingsElement(expected, 12));
}

TEST(EffectiveSettings, HaveTrapTargetsAsTheDeviceHoldsThem) {
  DeviceAnswers answers = Answers();
  answers.trapTargets.value = {{"192.0.2.1", "  one  162", ""}};
  EXPECT_EQ(EffectiveSettings(kAgent, kDevice, answers), SettingsElement(answers, 12));
}

TEST(AComparisonOfSettings, NamesThoseThatDifferAndMasksSecretsAfterIt) {
  DeviceAnswers before = Answers();
  before.communityRead.value = "hidden1";
  before.trapTargets.value = {{"192.0.2.1", "hidden3", "162"}};
  DeviceAnswers after = before;
  after.communityRead.value = "hidden2";
  after.isEnabled = true;
  after.trapTargets.value.emplace_back("192.0.2.2", "", "");
  Masker masker(false);
  const std::vector<SettingChange> changes =
      CompareSettings(SettingsElement(before, 12), SettingsElement(after, 12), masker);
  ASSERT_EQ(changes.size(), 3U);
  EXPECT_EQ(changes[0].name, "snmpEnabledSetting");
  EXPECT_EQ(changes[0].before + " " + changes[0].after, "false true");
  EXPECT_EQ(changes[1].name, "snmpCommunityReadSetting");
  EXPECT_EQ(changes[1].before + " " + changes[1].after, "***** *****");
  EXPECT_EQ(changes[2].name, "snmpTrapTargets");
  EXPECT_EQ(changes[2].before, "192.0.2.1 ***** 162");
  EXPECT_EQ(changes[2].after, "192.0.2.1 ***** 162, 192.0.2.2");

  Masker open(true);
  EXPECT_EQ(CompareSettings(SettingsElement(before, 12), SettingsElement(after, 12), open)[1].after, "hidden2");
}

// All three parts of a trap target would read the same in one line.
TEST(AComparisonOfSettings, SeesWhichPartOfATrapTargetATextIs) {
  DeviceAnswers before = Answers();
  before.trapTargets.value = {{"192.0.2.1", "162", ""}};
  DeviceAnswers after = Answers();
  after.trapTargets.value = {{"192.0.2.1", "", "162"}};
  Masker masker(false);
  EXPECT_EQ(CompareSettings(SettingsElement(before, 12), SettingsElement(after, 12), masker).size(), 1U);
  EXPECT_THAT(CompareSettings(SettingsElement(before, 12), SettingsElement(before, 12), masker), testing::IsEmpty());
}

}  // namespace
}  // namespace devhost
