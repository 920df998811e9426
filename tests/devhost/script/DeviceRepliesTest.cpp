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

TEST(ASettingsReply, GivesAllSettingsAndTrapTargetsInItsOrder) {
  const DeviceSettings reply = SettingsIn(kSettings);
  ASSERT_EQ(reply.settings.size(), 3U);
  EXPECT_EQ(reply.settings[0].name, "enabled");
  EXPECT_EQ(reply.settings[1].value, "my box");
  EXPECT_FALSE(reply.settings[1].erased);
  EXPECT_TRUE(reply.settings[2].erased);
  ASSERT_EQ(reply.trapTargets.size(), 1U);
  EXPECT_EQ(reply.trapTargets[0].target, "10.0.0.5");
  EXPECT_EQ(reply.trapTargets[0].community, "pub lic");
  EXPECT_EQ(reply.trapTargets[0].port, "");
}

TEST(ACountsReply, GivesTheNumberOfCallsOfEachOperation) {
  const std::vector<OperationCount> counts =
      CountsIn("<counts><count operation=\"CopyFrom\" value=\"3\"/><count operation=\"CopyTo\" value=\"many\"/></counts>");
  ASSERT_EQ(counts.size(), 2U);
  EXPECT_EQ(counts[0].operation, "CopyFrom");
  EXPECT_EQ(counts[0].count, 3U);
  EXPECT_EQ(counts[1].count, 0U) << "not a number";
}

TEST(ADaemonReply, GivesTheDaemon) {
  const DaemonState daemon =
      DaemonIn("<daemon running=\"true\" pid=\"4711\" address=\"udp:127.0.0.1:40161\" online=\"true\" pending=\"true\"/>");
  EXPECT_TRUE(daemon.running && daemon.online && daemon.pending);
  EXPECT_EQ(daemon.pid, 4711U);
  EXPECT_EQ(daemon.address, "udp:127.0.0.1:40161");
  EXPECT_EQ(DaemonIn("<other address=\"a\"/>").address, "");
}

TEST(AFilePathReply, GivesItsPath) {
  EXPECT_EQ(FilePathIn("kitchen", "<filePath>/a b</filePath>"), "/a b");
  EXPECT_EQ(ErrorOf([] { FilePathIn("kitchen", "<filePath/>"); }), "kitchen names no file");
  EXPECT_EQ(ErrorOf([] { FilePathIn("kitchen", "<other>/a</other>"); }), "kitchen names no file");
}

TEST(AReplyThatIsNoXml, HoldsNothing) {
  EXPECT_EQ(ErrorOf([] { CheckReply("kitchen", ""); }), "");
  EXPECT_EQ(ErrorOf([] { SettingIn("kitchen", "<settings>", "a"); }), "kitchen has no such setting; it has: none");
  EXPECT_EQ(DaemonIn("x").address, "");
  EXPECT_TRUE(SettingsIn("<settings>").settings.empty());
  EXPECT_TRUE(CountsIn("").empty());
  EXPECT_EQ(ErrorOf([] { FilePathIn("kitchen", "x"); }), "kitchen names no file");
}

}  // namespace
}  // namespace devhost
