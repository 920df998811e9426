#include <gmock/gmock.h>

#include <filesystem>

#include "tests/devhost/commands/DeviceFixture.h"
#include "tests/devhost/support/SnmpDaemon.h"
#include "tests/e2e/TrapReceiver.h"

namespace devhost {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

using DriftCommand = DeviceFixture;

TEST_F(DriftCommand, SaysThatThereIsNone) {
  const Outcome outcome = Do("drift");
  EXPECT_EQ(outcome.status, ExitStatus::Good);
  EXPECT_EQ(outcome.out, "no drift on kitchen since the change of snapshot 2\n");
  EXPECT_EQ(Do("drift", {"--json"}).out,
            "{\"device\":\"kitchen\",\"verdict\":\"none\",\"section\":\"\",\"overridden\":[],\"snapshot\":2,"
            "\"difference\":\"\",\"settings\":[],\"messages\":[]}\n");
}

TEST_F(DriftCommand, SaysWhatHasChangedAndWhatOverridesTheSection) {
  File("kitchen/snmpd.conf", Conf() + "sysName elsewhere\n");
  const Outcome outcome = Do("drift");
  EXPECT_EQ(outcome.status, ExitStatus::Failed);
  EXPECT_THAT(outcome.out, AllOf(HasSubstr(" [overrides-section]\n"), HasSubstr("\nchanged since snapshot 2:\n--- "),
                                 HasSubstr("\n+++ snmpd.conf of kitchen now\n"), EndsWith("\n+sysName elsewhere\n")));
  EXPECT_THAT(Do("drift", {"--json"}).out,
              AllOf(HasSubstr("\"verdict\":\"drift\""), HasSubstr("\"rule\":\"overrides-section\"")));
}

TEST_F(DriftCommand, ShowsWhatTheAgentWouldWrite) {
  std::string text = Conf();
  text.replace(text.find("agentXRetries  2"), 16, "agentXRetries  5");
  File("kitchen/snmpd.conf", text);
  EXPECT_THAT(Do("drift").out,
              AllOf(StartsWith("the file is not what the agent would write for the settings of kitchen:\n--- "),
                    HasSubstr("\n-agentXRetries  5\n+agentXRetries  2\n")));
}

TEST_F(DriftCommand, SaysThatThereIsNoSection) {
  File("kitchen/snmpd.conf", "# by hand\n");
  const Outcome outcome = Do("drift", {"--snapshots", folder.Path("nowhere")});
  EXPECT_EQ(outcome.status, ExitStatus::Failed);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.errors,
            "devhost: the snmpd.conf of kitchen has no section of the agent: nothing was applied yet, or somebody has "
            "removed it\n");
}

#ifndef WITHOUT_SNMP_CLIENT
TEST_F(DriftCommand, AsksTheDaemonWhenItIsToldTo) {
  const auto serveOn = [this](const std::string& port) {
    File("project.xml",
         "<project><driver id='1' name='agent' module='snmp_configuration_agent.so'/><driver id='12' name='kitchen' "
         "module='local_snmpd.so'><config folder='{project}/kitchen' port='" +
             port + "'/></driver></project>");
  };
  const SnmpDaemon daemon(Conf());
  serveOn(daemon.Port());
  const Outcome same = Do("drift", {"--probe"});
  EXPECT_EQ(same.status, ExitStatus::Good) << same.errors;
  EXPECT_EQ(same.out,
            "no drift on kitchen since the change of snapshot 2\nkitchen at " + daemon.Address() + " is as configured\n");

  const SnmpDaemon old("rocommunity hidden\nsysName hall\n");
  serveOn(old.Port());
  const Outcome drift = Do("drift", {"--probe"});
  EXPECT_EQ(drift.status, ExitStatus::Failed);
  EXPECT_THAT(drift.out, AllOf(Not(HasSubstr("no drift")), HasSubstr("DIFFERS name             configured \"attic\"")));
  EXPECT_THAT(Do("drift", {"--probe", "--json"}).out,
              AllOf(HasSubstr("\"verdict\":\"drift\""), HasSubstr("\"probe\":{\"address\":\"" + old.Address())));
  EXPECT_EQ(Do("drift").status, ExitStatus::Good);

  serveOn(e2e::FreePort());
  const Outcome off = Do("drift", {"--probe", "--json"});
  EXPECT_EQ(off.status, ExitStatus::Wrong);
  EXPECT_THAT(off.out,
              AllOf(HasSubstr("\"verdict\":\"unknown\""), HasSubstr("\"stage\":\"plan\",\"reason\":\"the daemon at ")));
  EXPECT_THAT(Do("drift", {"--probe"}).errors, HasSubstr(" cannot be asked: refused"));
}
#endif

TEST_F(DriftCommand, PrintsAJsonObjectWhereItStops) {
  ::chmod(folder.Path("project.xml.snapshots").c_str(), 0755);
  EXPECT_THAT(Do("drift", {"--json"}).out, AllOf(StartsWith("{\"device\":\"kitchen\",\"verdict\":\"unknown\","),
                                                 HasSubstr("\"stage\":\"plan\",\"reason\":\"cannot use the snapshots in ")));
}

TEST_F(DriftCommand, EndsWithTwoWhenTheDeviceDoesNotAnswer) {
  fs::remove(conf);
  fs::create_directory(conf);
  const Outcome outcome = Do("drift");
  EXPECT_EQ(outcome.status, ExitStatus::Wrong);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.errors, HasSubstr("CopyFrom of kitchen gave -2"));
  EXPECT_THAT(Do("drift", {"--json"}).out, HasSubstr("\"verdict\":\"unknown\""));
}

}  // namespace
}  // namespace devhost
