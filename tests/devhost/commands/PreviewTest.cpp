#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/devhost/commands/CommandsFixture.h"

namespace devhost {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

class PreviewCommand : public CommandsFixture {
 protected:
  PreviewCommand() { SetDevices("simulated_device.so"); }

  void SetDevices(const std::string& module) const {
    File("project.xml",
         "<project>\n"
         "  <driver id='1' name='agent' module='snmp_configuration_agent.so'/>\n"
         "  <driver id='12' name='kitchen' module='" +
             module +
             "'><config folder='{project}/kitchen'/></driver>\n"
             "  <driver id='15' name='hall' module='simulated_device.so'><config folder='{project}/nowhere'/></driver>\n"
             "</project>\n");
  }

  Outcome Preview(const std::string& device, const std::vector<std::string>& options = {}) const {
    std::vector<std::string> arguments = {"preview", "--module-dir", MODULE_FOLDER, "--project", project, device, settings};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return Run(arguments);
  }

  void Play(const std::string& script, const std::vector<std::string>& options = {}) const {
    std::vector<std::string> arguments = {"run", "--module-dir", MODULE_FOLDER, "--project", project};
    arguments.insert(arguments.end(), options.begin(), options.end());
    arguments.push_back(File("script", script));
    ASSERT_EQ(Run(arguments).status, ExitStatus::Good);
  }

  const std::string conf = File("kitchen/snmpd.conf", "# by hand\n");
  const std::string project = folder.Path("project.xml");
  const std::string settings = File("settings.xml",
                                    "<managedDevice><snmpCommunityReadSetting>hidden</snmpCommunityReadSetting>"
                                    "<snmpSysNameSetting>kitchen</snmpSysNameSetting><deviceId>12</deviceId>"
                                    "</managedDevice>");
};

TEST_F(PreviewCommand, PrintsADifferenceAndChangesNothing) {
  const Outcome outcome = Preview("kitchen");
  EXPECT_EQ(outcome.status, ExitStatus::Good);
  EXPECT_EQ(outcome.errors, "");
  EXPECT_THAT(outcome.out, StartsWith("--- " + conf + "\n+++ " + conf + " after SetDeviceState\n"));
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("\n+sysName  kitchen\n"), HasSubstr("\n+rocommunity  *****\n")));
  EXPECT_EQ(folder.Read("kitchen/snmpd.conf"), "# by hand\n");
}

TEST_F(PreviewCommand, ShowsSecretsWhenAsked) {
  EXPECT_THAT(Preview("kitchen", {"--show-secrets"}).out, HasSubstr("\n+rocommunity  hidden\n"));
}

TEST_F(PreviewCommand, TakesTheDeviceByItsIdToo) {
  EXPECT_THAT(Preview("12").out, StartsWith("--- " + conf + "\n"));
}

TEST_F(PreviewCommand, SaysThatNothingWouldChange) {
  Play("command SetDeviceState xml=@settings.xml\n");
  const Outcome outcome = Preview("kitchen");
  EXPECT_EQ(outcome.status, ExitStatus::Good);
  EXPECT_EQ(outcome.out, "nothing would change in " + conf + "\n");
}

TEST_F(PreviewCommand, PrintsWhatTheDriversSayWhenTheAgentRefuses) {
  fs::rename(conf, folder.Path("elsewhere"));
  fs::create_symlink("../elsewhere", conf);
  const Outcome outcome = Preview("kitchen");
  EXPECT_EQ(outcome.status, ExitStatus::Failed);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.errors,
              testing::MatchesRegex("devhost: kitchen: SNMP device 12: cannot read [^\n]+\n"
                                    "devhost: SetDeviceState would answer <ReadFail/> and leave [^\n]+ as it is\n"));
}

// An empty setting is filled from the file unless somebody has erased it.
TEST_F(PreviewCommand, ReadsTheStateOfTheDevice) {
  SetDevices("local_snmpd.so");
  const std::string states = folder.Path("states");
  Play("command SetDeviceState xml=@settings.xml\n");
  Play("device kitchen erase sysName\n", {"--state", states});
  File("settings.xml", "<managedDevice><deviceId>12</deviceId></managedDevice>");
  EXPECT_THAT(Preview("kitchen").out, StartsWith("nothing would change in "));
  EXPECT_THAT(Preview("kitchen", {"--state", states}).out, HasSubstr("\n-sysName  kitchen\n"));

  File("states/driver-12.xml", "<torn");
  EXPECT_EQ(Preview("kitchen", {"--state", states}).status, ExitStatus::Wrong);
  EXPECT_EQ(folder.Read("states/driver-12.xml"), "<torn");
}

TEST_F(PreviewCommand, SaysWhatIsWrongWithWhatItIsGiven) {
  const Outcome missing = Preview("cellar");
  EXPECT_EQ(missing.status, ExitStatus::Wrong);
  EXPECT_THAT(missing.errors,
              AllOf(StartsWith("devhost: " + project + ": "), HasSubstr("\"cellar\""), HasSubstr("kitchen")));

  const Outcome other = Preview("hall");
  EXPECT_EQ(other.status, ExitStatus::Wrong);
  EXPECT_THAT(other.errors, StartsWith("devhost: " + settings + ":1: the settings are for device \"12\"; allowed: "));

  File("settings.xml", "<managedDevice><deviceId>15</deviceId></managedDevice>");
  const Outcome nowhere = Preview("hall");
  EXPECT_EQ(nowhere.status, ExitStatus::Wrong);
  EXPECT_THAT(nowhere.errors, StartsWith("devhost: " + project + ":4: there is no folder "));

  File("project.xml", "<project><driver id='1' name='k' module='simulated_device.so'/></project>");
  const Outcome alone = Preview("k");
  EXPECT_EQ(alone.status, ExitStatus::Wrong);
  EXPECT_THAT(alone.errors, HasSubstr("no driver of the project has the module snmp_configuration_agent.so"));
}

}  // namespace
}  // namespace devhost
