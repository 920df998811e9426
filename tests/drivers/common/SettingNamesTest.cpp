#include "drivers/common/SettingNames.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using drivers::EraseSettingByName;
using drivers::NamedSetting;
using drivers::SetSettingByName;
using drivers::SnmpSettings;

// name=value, with a mark: ! erased, . not erased, none for a switch.
std::string All(const SnmpSettings& settings) {
  std::string all;
  drivers::VisitSettings(settings, [&all](const NamedSetting& setting) {
    all += std::string(setting.name) + "=" + setting.value;
    all += setting.erased == nullptr ? " " : *setting.erased ? "! " : ". ";
  });
  return all;
}

TEST(SettingsByName, ListAllInTheOrderOfTheInterface) {
  EXPECT_EQ(
      "managed=false configDirty=false enabled=false communityRead=. communityWrite=. sysContact=. usePrimaryContact=false "
      "sysLocation=. useProjectOwnerAddress=false sysName=. useRoomDevice=false trapTargets=0. ",
      All(SnmpSettings()));
}

TEST(SettingsByName, SetEachOfThem) {
  SnmpSettings settings;
  for (const char* const name :
       {"managed", "configDirty", "enabled", "usePrimaryContact", "useProjectOwnerAddress", "useRoomDevice"}) {
    EXPECT_EQ("", SetSettingByName(settings, name, "true")) << name;
  }
  for (const char* const name : {"communityRead", "communityWrite", "sysContact", "sysLocation", "sysName"}) {
    EXPECT_EQ("", SetSettingByName(settings, name, std::string("my ") + name)) << name;
  }
  EXPECT_EQ(
      "managed=true configDirty=true enabled=true communityRead=my communityRead. communityWrite=my communityWrite. "
      "sysContact=my sysContact. usePrimaryContact=true sysLocation=my sysLocation. useProjectOwnerAddress=true "
      "sysName=my sysName. useRoomDevice=true trapTargets=0. ",
      All(settings));
  EXPECT_EQ("", SetSettingByName(settings, "managed", "0"));
  EXPECT_FALSE(settings.managed);
  EXPECT_EQ("", SetSettingByName(settings, "managed", "1"));
  EXPECT_TRUE(settings.managed);
}

TEST(SettingsByName, SetEmptyIsErasedUnderTheRuleOfTheSetter) {
  SnmpSettings settings;
  EXPECT_EQ("", SetSettingByName(settings, "sysName", ""));
  EXPECT_FALSE(settings.sysName.WasErased());
  EXPECT_EQ("", SetSettingByName(settings, "sysName", "box"));
  EXPECT_EQ("", SetSettingByName(settings, "sysName", ""));
  EXPECT_TRUE(settings.sysName.WasErased());
}

TEST(SettingsByName, EraseAlsoWhatIsEmptyAlready) {
  SnmpSettings settings;
  settings.trapTargets.Add(TrapTarget("a", "", ""));
  for (const char* const name : {"communityRead", "communityWrite", "sysContact", "sysLocation", "sysName", "trapTargets"}) {
    EXPECT_EQ("", EraseSettingByName(settings, name)) << name;
  }
  EXPECT_EQ(
      "managed=false configDirty=false enabled=false communityRead=! communityWrite=! sysContact=! usePrimaryContact=false "
      "sysLocation=! useProjectOwnerAddress=false sysName=! useRoomDevice=false trapTargets=0! ",
      All(settings));
}

TEST(SettingsByName, SayWhatIsWrongAndWhatIsAllowedAndChangeNothing) {
  SnmpSettings settings;
  const std::string before = All(settings);
  EXPECT_EQ(
      "\"sysname\" is not a setting with a value; allowed are managed, configDirty, enabled, communityRead, communityWrite, "
      "sysContact, usePrimaryContact, sysLocation, useProjectOwnerAddress, sysName, useRoomDevice",
      SetSettingByName(settings, "sysname", "x"));
  EXPECT_NE("", SetSettingByName(settings, "trapTargets", "x"));
  EXPECT_NE("", SetSettingByName(settings, "", "x"));
  EXPECT_EQ("\"yes\" is not a value of the switch managed; allowed are true and false",
            SetSettingByName(settings, "managed", "yes"));
  EXPECT_NE("", SetSettingByName(settings, "managed", ""));
  EXPECT_EQ(
      "\"managed\" is not a setting that can be erased; allowed are communityRead, communityWrite, sysContact, sysLocation, "
      "sysName, trapTargets",
      EraseSettingByName(settings, "managed"));
  EXPECT_NE("", EraseSettingByName(settings, "nothing"));
  EXPECT_EQ(before, All(settings));
}

}  // namespace
