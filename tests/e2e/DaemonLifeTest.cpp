// Daemons are started, stopped and rebooted through the tool, and killed from outside.
#include <gmock/gmock.h>
#include <signal.h>

#include <string>

#include "tests/e2e/OpenPorts.h"
#include "tests/e2e/RealSystem.h"
#include "tests/e2e/Wait.h"

namespace e2e {
namespace {

using testing::Contains;
using testing::HasSubstr;

using TheMasterAgent = ARealSystem;
using ADaemonThatIsKilled = ARealSystem;
using ARebootedController = ARealSystem;
using TwoDevices = ARealSystem;

Settings Named(const std::string& name, const std::string& read = "public") {
  Settings settings;
  settings.read = read;
  settings.name = name;
  return settings;
}

TEST_F(TheMasterAgent, StopsAndStartsThroughTheTool) {
  Begin();
  Serve(kKitchen, Named("kitchen"));
  const Daemon first = GetDaemon(kKitchen);
  EXPECT_TRUE(first.running);
  EXPECT_EQ(As("public").Get(kSysName).value, "kitchen");

  EXPECT_EQ(Action(kKitchen, "StopMasterAgent"), "<Success/>");
  EXPECT_FALSE(GetDaemon(kKitchen).running);
  EXPECT_FALSE(Exists(first.pid));
  EXPECT_EQ(As("public").GetNothing(kSysName).error, "timeout");

  EXPECT_EQ(Action(kKitchen, "StartMasterAgent"), "<Success/>");
  const Daemon second = GetDaemon(kKitchen);
  EXPECT_TRUE(second.running);
  EXPECT_EQ(second.address, first.address);
  EXPECT_EQ(As("public").Get(kSysName).value, "kitchen");
}

// The section names a privileged AgentX port, which an ordinary user cannot open. The owner's line names two more ports.
// Several daemons could not share these ports.
TEST_F(TheMasterAgent, OpensItsOwnPortOnly) {
  Begin("agentaddress udp:127.0.0.1:" + FreePort() + ",tcp:127.0.0.1:" + FreePort() + "\n");
  Serve(kKitchen, Named("kitchen"));
  const Daemon daemon = GetDaemon(kKitchen);
  EXPECT_THAT(OpenPorts(daemon.pid), testing::ElementsAre("udp" + daemon.address.substr(daemon.address.rfind(':'))));
}

TEST_F(TheMasterAgent, IsLeftAloneByASecondStartAndASecondStop) {
  Begin();
  EXPECT_EQ(Action(kKitchen, "StopMasterAgent"), "<Success/>");
  Serve(kKitchen, Named("kitchen"));
  const pid_t pid = GetDaemon(kKitchen).pid;
  EXPECT_EQ(Action(kKitchen, "StartMasterAgent"), "<Success/>");
  EXPECT_EQ(GetDaemon(kKitchen).pid, pid);
  EXPECT_EQ(Action(99, "StartMasterAgent"), "<Fail/>");
}

TEST_F(TheMasterAgent, ThatIsStoppedStaysStoppedWhenSettingsChange) {
  Begin();
  ASSERT_EQ(SetState(kKitchen, Named("kitchen")), "<Success/>");
  EXPECT_FALSE(GetDaemon(kKitchen).running);
}

TEST_F(TheMasterAgent, EndsWithTheHost) {
  Begin();
  Serve(kKitchen, Named("kitchen"));
  const pid_t pid = GetDaemon(kKitchen).pid;
  ASSERT_TRUE(Exists(pid));
  RestartHost();
  EXPECT_FALSE(Exists(pid));
}

TEST_F(ARebootedController, ServesAgainWithANewDaemon) {
  Begin();
  Serve(kKitchen, Named("kitchen"));
  const Daemon before = GetDaemon(kKitchen);
  EXPECT_EQ(Action(kKitchen, "RebootController"), "<Success/>");
  const Daemon after = GetDaemon(kKitchen);
  EXPECT_TRUE(after.running);
  EXPECT_NE(after.pid, before.pid);
  EXPECT_FALSE(Exists(before.pid));
  EXPECT_EQ(As("public").Get(kSysName).value, "kitchen");
}

TEST_F(ARebootedController, TellsItsTrapTargets) {
  TrapReceiver receiver;
  Begin();
  Settings settings = Named("kitchen");
  settings.traps = {TrapTarget("127.0.0.1", "alpha", receiver.Port())};
  Serve(kKitchen, settings);
  EXPECT_EQ(Action(kKitchen, "RebootController"), "<Success/>");
  EXPECT_THAT(receiver.Traps(),
              testing::ElementsAre(Trap{kColdStart, "alpha"}, Trap{kShutdown, "alpha"}, Trap{kColdStart, "alpha"}));
}

TEST_F(ADaemonThatIsKilled, IsSeenToBeGoneAndServesAgainAfterAStart) {
  Begin();
  Serve(kKitchen, Named("kitchen"));
  const Daemon killed = GetDaemon(kKitchen);
  ASSERT_EQ(::kill(killed.pid, SIGKILL), 0);
  EXPECT_TRUE(Eventually([this] { return !GetDaemon(kKitchen).running; }));
  EXPECT_FALSE(Exists(killed.pid));
  EXPECT_EQ(Action(kKitchen, "StartMasterAgent"), "<Success/>");
  EXPECT_NE(GetDaemon(kKitchen).pid, killed.pid);
  EXPECT_EQ(As("public").Get(kSysName).value, "kitchen");
}

// The test does not wait: the driver may or may not have noticed yet that the daemon is gone.
TEST_F(ADaemonThatIsKilled, ComesBackWithAStartRightAfter) {
  Begin();
  Serve(kKitchen, Named("kitchen"));
  const Daemon killed = GetDaemon(kKitchen);
  ASSERT_EQ(::kill(killed.pid, SIGKILL), 0);
  EXPECT_TRUE(Eventually([this, &killed] {
    EXPECT_EQ(Action(kKitchen, "StartMasterAgent"), "<Success/>");
    const Daemon now = GetDaemon(kKitchen);
    return now.running && now.pid != killed.pid;
  }));
  EXPECT_EQ(As("public").Get(kSysName).value, "kitchen");
}

TEST_F(ADaemonThatIsKilled, DoesNotKeepSettingsFromBeingWritten) {
  Begin();
  Serve(kKitchen, Named("kitchen"));
  ASSERT_EQ(::kill(GetDaemon(kKitchen).pid, SIGKILL), 0);
  EXPECT_TRUE(Eventually([this] { return !GetDaemon(kKitchen).running; }));
  EXPECT_EQ(SetState(kKitchen, Named("pantry")), "<Success/>");
  EXPECT_THAT(Log(), Contains(HasSubstr("signal 9")));
  ASSERT_EQ(Action(kKitchen, "StartMasterAgent"), "<Success/>");
  EXPECT_EQ(As("public").Get(kSysName).value, "pantry");
}

TEST_F(TwoDevices, HaveTwoDaemonsAtTheSameTime) {
  MakeDevice(kKitchen, "# kitchen, by hand\n");
  MakeDevice(kBath, "# bath, by hand\n");
  LoadAgent();
  LoadDevice(kKitchen);
  LoadDevice(kBath);
  Serve(kKitchen, Named("kitchen", "our kitchen"));
  Serve(kBath, Named("bath", "our bath"));
  EXPECT_NE(GetDaemon(kKitchen).address, GetDaemon(kBath).address);
  EXPECT_EQ(As("our kitchen", kKitchen).Get(kSysName).value, "kitchen");
  EXPECT_EQ(As("our bath", kBath).Get(kSysName).value, "bath");
  EXPECT_TRUE(Refuses("our bath", As("our kitchen", kKitchen), kKitchen));
  EXPECT_TRUE(Refuses("our kitchen", As("our bath", kBath), kBath));

  const pid_t bath = GetDaemon(kBath).pid;
  ASSERT_EQ(SetState(kKitchen, Named("pantry", "our kitchen")), "<Success/>");
  ASSERT_EQ(Action(kKitchen, "StopMasterAgent"), "<Success/>");
  EXPECT_EQ(GetDaemon(kBath).pid, bath);
  EXPECT_EQ(As("our bath", kBath).Get(kSysName).value, "bath");
}

}  // namespace
}  // namespace e2e
