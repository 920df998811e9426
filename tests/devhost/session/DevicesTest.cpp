#include "devhost/session/Devices.h"

#include <filesystem>

#include "tests/devhost/session/SessionFixture.h"

namespace devhost {
namespace {

using testing::HasSubstr;
using testing::Not;

class ADeviceList : public SessionFixture {
 protected:
  Json Listed() { return Ask("GET", "/devices").body.at("devices"); }
};

TEST_F(ADeviceList, HasEachDriverThatIsADevice) {
  project.drivers.push_back(TestDriver(5, "well_behaved"));
  project.drivers.push_back(Device(7, "attic", "local_snmpd"));
  Start();
  const Json devices = Listed();
  ASSERT_EQ(devices.size(), 2U);
  EXPECT_EQ(devices[0].at("id"), 7);  // in the order of the ids
  EXPECT_EQ(devices[0].at("module"), "local_snmpd.so");
  EXPECT_THAT(devices[0].at("daemon").at("address").get<std::string>(), HasSubstr("127.0.0.1:"));
  EXPECT_EQ(devices[0].at("daemon").at("running"), false);
  const Json kitchen = {{"id", 12},          {"name", "kitchen"}, {"module", "simulated_device.so"},
                        {"listed", true},    {"managed", false},  {"dirty", false},
                        {"reachable", true}, {"daemon", nullptr}, {"version", "1.0.0"}};
  EXPECT_EQ(devices[1], kitchen);
}

TEST_F(ADeviceList, SaysWhichDevicesTheAgentDoesNotList) {
  project.drivers[1].configXml.insert(project.drivers[1].configXml.size() - 2, " versionValid='false'");
  project.drivers.push_back(Device(13, "attic"));
  Start();
  EXPECT_EQ(Listed()[0].at("listed"), false);
  EXPECT_EQ(Listed()[1].at("listed"), true);
  Tell(13, "Withdraw");
  EXPECT_EQ(Listed()[1].at("listed"), false);
  Tell(13, "Announce");
  EXPECT_EQ(Listed()[1].at("listed"), true);
}

TEST_F(ADeviceList, SaysWhichDevicesCannotBeReached) {
  project.drivers.push_back(Device(13, "attic", "local_snmpd"));
  Start();
  EXPECT_EQ(Listed()[1].at("reachable"), true);
  Tell(13, "SetOnline", {{"online", "false"}});
  EXPECT_EQ(Ask("GET", "/devices/13").body.at("reachable"), false);
  EXPECT_EQ(Listed()[1].at("reachable"), false);
  EXPECT_EQ(Listed()[0].at("reachable"), true);
  Tell(13, "SetOnline", {{"online", "true"}});
  EXPECT_EQ(Ask("GET", "/devices/13").body.at("reachable"), true);
  EXPECT_EQ(Listed()[1].at("reachable"), true);
}

TEST_F(ADeviceList, NamesTheFaultOfADeviceThatThrowsAndHasTheOthers) {
  project.drivers.push_back(TestDriver(20, "odd_device", "<config file='/nowhere' copyFrom='throw' announce='never'/>"));
  Start();
  ASSERT_EQ(Listed().size(), 2U);
  const Reply shown = Ask("GET", "/devices/20");
  EXPECT_EQ(shown.status, 200);
  EXPECT_THAT(shown.body.at("messages").at(0).get<std::string>(), HasSubstr("an exception came out of CopyFrom"));
  // What a driver says may quote what it holds.
  EXPECT_THAT(Said(), Not(HasSubstr("held by the driver")));
}

class ADevice : public SessionFixture {
 protected:
  Json Settings() { return Ask("GET", "/devices/12").body.at("settings"); }
};

TEST_F(ADevice, HoldsWhatItsFileHas) {
  folder.Write("kitchen/snmpd.conf", "# Halvoren Section Start\nsysContact  Ada\n# Halvoren Section End\n");
  Start();
  EXPECT_EQ(Settings().at("contact"), (Json{{"value", "Ada"}, {"erased", false}}));
}

TEST_F(ADevice, SaysOfACommunityOnlyWhetherItIsSet) {
  Start();
  Tell(12, "SetSetting", {{"name", "communityRead"}, {"value", "hidden1"}});
  Tell(12, "SetSetting", {{"name", "communityWrite"}, {"value", "hidden2"}});
  Tell(12, "EraseSetting", {{"name", "communityWrite"}});
  Tell(12, "AddTrapTarget", {{"target", "nms.example"}, {"community", "hidden3"}, {"port", "162"}});
  const Json settings = Settings();
  EXPECT_EQ(settings.at("readCommunity"), (Json{{"set", true}, {"erased", false}}));
  EXPECT_EQ(settings.at("writeCommunity"), (Json{{"set", false}, {"erased", true}}));
  EXPECT_EQ(settings.at("trapTargets"), Json::parse(R"([{"target":"nms.example","community":{"set":true},"port":"162"}])"));
  for (const char* const secret : {"hidden1", "hidden2", "hidden3"}) {
    EXPECT_THAT(Said(), Not(HasSubstr(secret)));
  }
}

TEST_F(ADevice, ShowsSecretsWhereTheyAreToBeShown) {
  Start(true);
  Tell(12, "SetSetting", {{"name", "communityRead"}, {"value", "hidden1"}});
  EXPECT_EQ(Settings().at("readCommunity"), (Json{{"set", true}, {"value", "hidden1"}, {"erased", false}}));
}

TEST_F(ADevice, IsManagedAndGivenUp) {
  Start();
  EXPECT_EQ(Ask("PUT", "/devices/12/managed").body.at("device").at("managed"), true);
  EXPECT_EQ(Ask("DELETE", "/devices/12/managed").body.at("device").at("managed"), false);
  EXPECT_EQ(Ask("PUT", "/devices/1/managed").status, 404);
  Tell(12, "Withdraw");
  EXPECT_EQ(Ask("PUT", "/devices/12/managed").status, 409);
}

TEST_F(ADevice, ActsOnlyWhenItsNameIsTypedAgain) {
  Start();
  const auto act = [this](const Json& body) { return Ask("POST", "/devices/12/actions", body); };
  EXPECT_EQ(act({{"action", "reboot"}, {"device", "Kitchen"}}).status, 422);
  EXPECT_EQ(act({{"action", "reboot"}}).status, 422);
  EXPECT_EQ(act({{"action", "explode"}, {"device", "kitchen"}}).status, 422);
  EXPECT_THAT(
      Events("command"),
      Not(testing::Contains(testing::Truly([](const Json& event) { return event.at("name") == "RebootController"; }))));
  EXPECT_EQ(act({{"action", "reboot"}, {"device", "kitchen"}}).body.at("reply"), "<Success/>");
}

}  // namespace
}  // namespace devhost
