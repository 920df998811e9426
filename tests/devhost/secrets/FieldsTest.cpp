#include "devhost/secrets/Fields.h"

#include <gtest/gtest.h>

namespace devhost {
namespace {

TEST(AField, IsKnownByItsExactName) {
  EXPECT_EQ(FindField("snmpSysNameSetting"), Field::Shown);
  EXPECT_EQ(FindField("snmpCommunityReadSetting"), Field::Secret);
  EXPECT_EQ(FindField("snmpcommunityreadsetting"), Field::Unknown);
  EXPECT_EQ(FindField("community"), Field::Secret);
  EXPECT_EQ(FindField("base"), Field::Config);
  EXPECT_EQ(FindField(""), Field::Unknown);
}

TEST(ASettingOfADevice, IsShownUnlessItIsACommunityOrUnknown) {
  EXPECT_EQ(FindSetting("sysContact"), Setting::Shown);
  EXPECT_EQ(FindSetting("communityWrite"), Setting::Secret);
  EXPECT_EQ(FindSetting("enabled"), Setting::Switch);
  EXPECT_EQ(FindSetting("syscontact"), Setting::Unknown);
}

}  // namespace
}  // namespace devhost
