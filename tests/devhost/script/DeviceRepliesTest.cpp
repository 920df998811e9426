#include "devhost/script/DeviceReplies.h"

#include <gmock/gmock.h>

namespace devhost {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kSettings[] =
    "<settings><setting name=\"enabled\" value=\"true\"/>"
    "<setting name=\"sysName\" value=\"my box\" erased=\"false\"/>"
    "<setting name=\"sysContact\" value=\"\" erased=\"true\"/>"
    "<trapTarget target=\"10.0.0.5\" community=\"pub lic\" port=\"\"/></settings>";

TEST(ASettingsReply, GivesOneLineForEachSettingAndTrapTarget) {
  EXPECT_THAT(SettingLines(kSettings), ElementsAre("enabled=true", "sysName='my box'", "sysContact='' erased",
                                                   "trapTarget=10.0.0.5 community='pub lic' port=''"));
}

TEST(ASettingsReply, TellsAnEmptySettingFromAMissingOne) {
  EXPECT_EQ(SettingIn(kSettings, "sysName"), "my box");
  EXPECT_EQ(SettingIn(kSettings, "sysContact"), "");
  EXPECT_EQ(SettingIn(kSettings, "sysLocation"), std::nullopt);
  EXPECT_EQ(SettingNames(kSettings), "enabled, sysName, sysContact");
}

TEST(ACountsReply, IsOneLine) {
  EXPECT_EQ(
      CountLine("<counts><count operation=\"CopyFrom\" value=\"3\"/><count operation=\"CopyTo\" value=\"0\"/></counts>"),
      "CopyFrom=3 CopyTo=0");
}

TEST(AFailReply, CarriesItsReason) {
  EXPECT_EQ(FailureIn("<Fail>no agent is present</Fail>"), "no agent is present");
  EXPECT_EQ(FailureIn("<Fail/>"), "no reason given");
  EXPECT_EQ(FailureIn("<Success/>"), std::nullopt);
  EXPECT_EQ(FailureIn("<ReadFail/>"), std::nullopt);
}

TEST(ADaemonReply, IsOneLine) {
  EXPECT_EQ(DaemonLine(DaemonIn("<daemon running=\"true\" pid=\"4711\" address=\"udp:127.0.0.1:40161\" online=\"true\" "
                                "pending=\"false\"/>")),
            "running pid=4711 address=udp:127.0.0.1:40161 online");
  EXPECT_EQ(DaemonLine(DaemonIn("<daemon running=\"false\" pid=\"0\" address=\"udp:127.0.0.1:40161\" online=\"false\" "
                                "pending=\"true\"/>")),
            "stopped address=udp:127.0.0.1:40161 offline pending");
  EXPECT_EQ(DaemonIn("<Fail/>").address, "");
}

TEST(AReplyThatIsNoXml, HoldsNothing) {
  EXPECT_EQ(FailureIn(""), std::nullopt);
  EXPECT_THAT(SettingLines("<settings>"), IsEmpty());
  EXPECT_EQ(SettingNames(""), "none");
  EXPECT_EQ(CountLine("x"), "");
  EXPECT_EQ(FilePathIn("<Fail/>"), "");
  EXPECT_EQ(FilePathIn("<filePath>/a b</filePath>"), "/a b");
}

}  // namespace
}  // namespace devhost
