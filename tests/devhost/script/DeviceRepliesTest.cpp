#include "devhost/script/DeviceReplies.h"

#include <gmock/gmock.h>

#include <functional>
#include <stdexcept>

namespace devhost {
namespace {

constexpr char kSettings[] =
    "<settings><setting name=\"enabled\" value=\"true\"/>"
    "<setting name=\"sysName\" value=\"my box\" erased=\"false\"/>"
    "<setting name=\"sysContact\" value=\"\" erased=\"true\"/>"
    "<trapTarget target=\"10.0.0.5\" community=\"pub lic\" port=\"\"/></settings>";

std::string ErrorOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "";
}

TEST(ASettingsReply, GivesAnEmptySettingButNotAMissingOne) {
  EXPECT_EQ(SettingIn("kitchen", kSettings, "sysName"), "my box");
  EXPECT_EQ(SettingIn("kitchen", kSettings, "sysContact"), "");
  EXPECT_EQ(ErrorOf([] { SettingIn("kitchen", kSettings, "sysLocation"); }),
            "kitchen has no such setting; it has: enabled, sysName, sysContact");
}

TEST(AFailReply, IsRefusedWithItsReason) {
  EXPECT_EQ(ErrorOf([] { CheckReply("kitchen", "<Fail>no agent is present</Fail>"); }),
            "kitchen refused: no agent is present");
  EXPECT_EQ(ErrorOf([] { CheckReply("kitchen", "<Fail/>"); }), "kitchen refused: no reason given");
  EXPECT_EQ(ErrorOf([] { CheckReply("kitchen", "<Success/>"); }), "");
  EXPECT_EQ(ErrorOf([] { CheckReply("kitchen", "<ReadFail/>"); }), "");
}

TEST(ADaemonReply, GivesItsAddress) {
  EXPECT_EQ(AddressIn("<daemon running=\"true\" pid=\"4711\" address=\"udp:127.0.0.1:40161\"/>"), "udp:127.0.0.1:40161");
  EXPECT_EQ(AddressIn("<other address=\"a\"/>"), "");
}

TEST(AFilePathReply, GivesItsPath) {
  EXPECT_EQ(FilePathIn("kitchen", "<filePath>/a b</filePath>"), "/a b");
  EXPECT_EQ(ErrorOf([] { FilePathIn("kitchen", "<filePath/>"); }), "kitchen names no file");
  EXPECT_EQ(ErrorOf([] { FilePathIn("kitchen", "<other>/a</other>"); }), "kitchen names no file");
}

TEST(AReplyThatIsNoXml, HoldsNothing) {
  EXPECT_EQ(ErrorOf([] { CheckReply("kitchen", ""); }), "");
  EXPECT_EQ(ErrorOf([] { SettingIn("kitchen", "<settings>", "a"); }), "kitchen has no such setting; it has: none");
  EXPECT_EQ(AddressIn("x"), "");
  EXPECT_EQ(ErrorOf([] { FilePathIn("kitchen", "x"); }), "kitchen names no file");
}

}  // namespace
}  // namespace devhost
