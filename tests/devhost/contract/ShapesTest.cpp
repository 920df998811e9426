#include "devhost/contract/Shapes.h"

#include <gmock/gmock.h>

#include <set>

namespace devhost {
namespace {

TEST(TheSettings, HaveThirteenChildren) {
  EXPECT_EQ(SettingsRequest().children.size(), 13U);
  EXPECT_NE(SettingsRequest().FindChild("deviceId"), nullptr);
  EXPECT_EQ(SettingsRequest().FindChild("deviceid"), nullptr);
}

TEST(TheSettings, SayWhatBecomesOfADeviceWithoutThem) {
  std::set<std::string> harmless;
  for (const ElementShape& child : SettingsRequest().children) {
    if (child.ifMissing == nullptr) {
      harmless.insert(child.name);
    }
  }
  EXPECT_EQ(harmless, (std::set<std::string>{"snmpIsConfigDirty", "deviceId"}));
}

TEST(ADocument, IsFoundByItsRoot) {
  EXPECT_STREQ(FindDocument("managedDevice", false)->schema, "settings-request.xsd");
  EXPECT_STREQ(FindDocument("managedDevice", true)->schema, "settings-reply.xsd");
  for (const bool asReply : {false, true}) {
    EXPECT_STREQ(FindDocument("Success", asReply)->schema, "replies.xsd");
    EXPECT_STREQ(FindDocument("DeviceChanged", asReply)->schema, "notifications.xsd");
    EXPECT_STREQ(FindDocument("project", asReply)->schema, "project.xsd");
  }
  EXPECT_EQ(FindDocument("managedDevic", false), nullptr);
}

}  // namespace
}  // namespace devhost
