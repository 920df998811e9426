#include "devhost/session/LiveHost.h"

#include <algorithm>
#include <ctime>

#include "tests/devhost/session/SessionFixture.h"

namespace devhost {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

using ALiveHost = SessionFixture;

// Each list would be another round trip to every controller.
TEST_F(ALiveHost, HasTheAgentReadTheFilesOnlyWhenADeviceHasCome) {
  Start();
  const auto lists = [this] { return Events("command").size(); };
  Ask("GET", "/devices");
  Ask("GET", "/devices");
  EXPECT_EQ(lists(), 1U);
  Tell(12, "Withdraw");
  Tell(12, "Announce");
  Ask("GET", "/devices");
  EXPECT_EQ(lists(), 4U);
}

TEST_F(ALiveHost, TellsOfADaemonThatWasStartedAnew) {
  project.drivers[1] = Device(12, "kitchen", "local_snmpd");
  Start();
  Tell(12, "SetSetting", {{"name", "enabled"}, {"value", "true"}});
  const auto act = [this](const char* action) {
    return Ask("POST", "/devices/12/actions", {{"action", action}, {"device", "kitchen"}}).body.at("reply");
  };
  EXPECT_EQ(act("start"), "<Success/>");
  EXPECT_THAT(Events("restart"), IsEmpty());
  EXPECT_EQ(act("reboot"), "<Success/>");
  EXPECT_THAT(Events("restart"), ElementsAre(Json{{"kind", "restart"}, {"device", 12}}));
}

TEST_F(ALiveHost, GoesOnWhenADeviceWithdrawsWhileItIsAsked) {
  folder.Write("odd.conf", "sysName odd\n");
  project.drivers.push_back(TestDriver(
      20, "odd_device", "<config file='" + folder.Path("odd.conf") + "' copyFrom='withdraw' announce='Initialize'/>"));
  Start();
  EXPECT_EQ(Ask("GET", "/devices/20").status, 200);
  EXPECT_EQ(Ask("GET", "/devices").status, 200);
}

TEST_F(ALiveHost, HasTheReasonWhyAFileWasNotRead) {
  project.drivers.push_back(TestDriver(20, "odd_device", "<config file='/nowhere' copyFrom='-2' announce='never'/>"));
  Start();
  EXPECT_THAT(Ask("GET", "/devices/20/file").ErrorText(), HasSubstr("CopyFrom gave -2; asked for the file, with *****"));
  EXPECT_THAT(Said(), Not(HasSubstr("held by the driver")));
}

// What a file of a mebibyte teaches was learnt each time that its device was asked, several times in a request.
TEST_F(ALiveHost, LearnsAFileOnce) {
  std::string text;
  while (text.size() < std::size_t{2} << 20) {
    text += "# what nobody reads, and nobody removes\n";
  }
  folder.Write("kitchen/snmpd.conf", text + "rocommunity hidden1\n");
  Start();
  // Its own time, because other programs may keep a busy machine from it.
  const auto taken = [this] {
    const std::clock_t begin = std::clock();
    EXPECT_EQ(Ask("GET", "/devices/12").status, 200);
    return std::clock() - begin;
  };
  const std::clock_t first = taken();
  std::clock_t later = taken();
  for (int i = 0; i < 10; ++i) {
    later = std::min(later, taken());
  }
  EXPECT_LT(later * 3, first);
  EXPECT_EQ(secrets->Text("hidden1"), "*****");
}

}  // namespace
}  // namespace devhost
