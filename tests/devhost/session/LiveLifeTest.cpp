#include "devhost/session/LiveLife.h"

#include "devhost/engine/HostError.h"
#include "tests/devhost/session/SessionFixture.h"

namespace devhost {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

// A device in a host without a session around it.
class ALiveLife : public SessionFixture {
 protected:
  void Begin() {
    lines.emplace(::open(folder.Write("lines", "").c_str(), O_WRONLY | O_APPEND | O_CLOEXEC));
    output.emplace(lines->Get());
    secrets.emplace(false);
    channel.emplace(*output, *secrets);
    host.emplace(project, states, *secrets, *channel, false);
    host->Start();
    life.emplace(*host, 12,
                 [this](const char* step, const char* state) { steps.push_back(step + std::string(" ") + state); });
  }
  void TearDown() override {
    life.reset();
    if (host) {
      host->Stop();
    }
  }

  std::optional<LiveHost> host;
  std::optional<LiveLife> life;
  std::vector<std::string> steps;
};

TEST_F(ALiveLife, IsAskedWithoutAStepAndChangedWithOne) {
  Begin();
  EXPECT_EQ(life->Ask("").file, "# by hand\n");
  EXPECT_TRUE(steps.empty());
  EXPECT_EQ(life->SetDeviceState("<managedDevice><deviceId>12</deviceId></managedDevice>", nullptr), "<Success/>");
  EXPECT_THAT(life->Ask("").file, HasSubstr("# Halvoren Section Start"));
  EXPECT_THAT(steps, ElementsAre("snapshot done", "set begun", "set done", "look begun", "look done"));
}

TEST_F(ALiveLife, SaysThatAChangeHasFailed) {
  Begin();
  EXPECT_EQ(life->SetDeviceState("<managedDevice><deviceId>99</deviceId></managedDevice>", nullptr), "<Fail/>");
  EXPECT_THAT(steps, ElementsAre("snapshot done", "set begun", "set failed"));
}

TEST_F(ALiveLife, LooksAtTheFileThatItIsGivenInPlaceOfItsOwn) {
  Begin();
  DeviceLife::File file;
  file.text = "sysName elsewhere\n";
  EXPECT_EQ(life->AskSettings("", file).file, "sysName elsewhere\n");
}

// The edit would go through the files of all devices.
TEST_F(ALiveLife, TakesNoEditOfTheTextBelowTheSection) {
  Begin();
  EXPECT_THROW(life->LetAgentIn("", [](std::string&) {}), HostError);
  EXPECT_EQ(folder.Read("kitchen/snmpd.conf"), "# by hand\n");
}

TEST_F(ALiveLife, LetsTheAgentReadTheExpectedFileAndNoOther) {
  Begin();
  EXPECT_EQ(life->LetAgentIn("# by hand\n", nullptr), DeviceLife::AgentRead::Expected);
  EXPECT_EQ(life->LetAgentIn("# of yesterday\n", nullptr), DeviceLife::AgentRead::Other);
  EXPECT_THROW(life->SetDeviceState("<managedDevice><deviceId>12</deviceId></managedDevice>", nullptr), HostError);
  EXPECT_EQ(life->Ask("").file, "# by hand\n") << "whoever only asks is not kept from it";
}

}  // namespace
}  // namespace devhost
