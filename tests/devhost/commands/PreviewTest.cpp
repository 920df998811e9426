#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <vector>

#include "devhost/system/RunProgram.h"
#include "tests/devhost/commands/CommandsFixture.h"

namespace devhost {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::EndsWith;
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

const std::string kHead = "--- snmpd.conf of kitchen\n+++ snmpd.conf of kitchen after SetDeviceState\n";

TEST_F(PreviewCommand, PrintsADifferenceAndChangesNothing) {
  const Outcome outcome = Preview("kitchen");
  EXPECT_EQ(outcome.status, ExitStatus::Failed);
  EXPECT_EQ(outcome.errors, "");
  EXPECT_THAT(outcome.out, StartsWith(kHead));
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("\n+sysName  kitchen\n"), HasSubstr("\n+rocommunity  *****\n")));
  EXPECT_EQ(folder.Read("kitchen/snmpd.conf"), "# by hand\n");
}

TEST_F(PreviewCommand, SaysBelowTheDifferenceWhatWouldBeLost) {
  File("kitchen/snmpd.conf", "# by hand\n# Halvoren Section Start\n# Halvoren Section End\n");
  EXPECT_THAT(
      Preview("kitchen").out,
      testing::ContainsRegex("\n-# by hand\n(.|\n)*\nsnmpd.conf of kitchen:1: error: text above the section: the next "
                             "write drops it[^\n]* \\[text-above-section\\]\n    [^\n]+\n$"));
}

TEST_F(PreviewCommand, PrintsOneJsonObjectWhenAsked) {
  File("kitchen/snmpd.conf", "rocommunity hidden-old\n# Halvoren Section Start\n# Halvoren Section End\n");
  const Outcome changed = Preview("kitchen", {"--json"});
  EXPECT_EQ(changed.status, ExitStatus::Failed);
  EXPECT_THAT(changed.out, testing::Not(HasSubstr("hidden")));
  EXPECT_EQ(changed.out.find('\n'), changed.out.size() - 1);
  EXPECT_THAT(
      changed.out,
      AllOf(StartsWith("{\"device\":\"kitchen\",\"verdict\":\"changed\",\"difference\":\"--- snmpd.conf of kitchen\\n+++ "),
            HasSubstr("\\n-rocommunity *****\\n"),
            HasSubstr("\",\"findings\":[{\"file\":\"snmpd.conf of kitchen\",\"line\":1,\"severity\":\"error\","
                      "\"rule\":\"text-above-section\",\"reason\":\""),
            EndsWith("\"}],\"messages\":[]}\n")));
  EXPECT_THAT(Preview("kitchen", {"--json", "--show-secrets"}).out, HasSubstr("hidden-old"));

  Play("command SetDeviceState xml=@settings.xml\n");
  const Outcome unchanged = Preview("kitchen", {"--json"});
  EXPECT_EQ(unchanged.status, ExitStatus::Good);
  EXPECT_EQ(unchanged.out,
            "{\"device\":\"kitchen\",\"verdict\":\"unchanged\",\"difference\":\"\",\"findings\":[],\"messages\":[]}\n");

  fs::remove(conf);
  fs::create_directory(conf);
  const Outcome refused = Preview("kitchen", {"--json"});
  EXPECT_EQ(refused.status, ExitStatus::Wrong);
  EXPECT_EQ(refused.errors, "");
  EXPECT_THAT(
      refused.out,
      AllOf(
          StartsWith("{\"device\":\"kitchen\",\"verdict\":\"refused\",\"difference\":\"\",\"findings\":[],\"messages\":[\""),
          HasSubstr("SetDeviceState would answer <ReadFail/>"), EndsWith(" as it is\"}\n"),
          HasSubstr(" as it is\"],\"stage\":\"plan\",\"reason\":\"kitchen: SNMP device 12: cannot read "),
          HasSubstr("(status -2); CopyFrom of kitchen gave -2: ")));

  SetDevices(std::string(TEST_MODULE_FOLDER) + "/well_behaved.so");
  EXPECT_THAT(Preview("kitchen", {"--json"}).out, HasSubstr("\"verdict\":\"failed\""));
}

TEST_F(PreviewCommand, SaysWhenTheDeviceIsOffLine) {
  SetDevices("local_snmpd.so");
  const std::string states = folder.Path("states");
  Play("command GetDeviceList\ndevice kitchen offline\n", {"--state", states});
  const std::string state = folder.Read("states/driver-12.xml");
  File("kitchen/snmpd.conf", "# changed meanwhile\n");
  const Outcome outcome = Preview("kitchen", {"--state", states});
  EXPECT_EQ(outcome.status, ExitStatus::Failed);
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("\n # by hand\n"), testing::Not(HasSubstr("meanwhile")),
                                 HasSubstr("\nkitchen cannot be reached now (CopyFrom gave -9): ")));
  EXPECT_EQ(folder.Read("states/driver-12.xml"), state);
}

// Status 1 would say that something would change.
TEST_F(PreviewCommand, EndsWithTwoWhenADriverEndsTheProcess) {
  File("project.xml",
       "<project><driver id='1' name='agent' module='snmp_configuration_agent.so'/><driver id='12' "
       "name='kitchen' module='" TEST_MODULE_FOLDER
       "/odd_device.so'><config announce='Initialize' copyFrom='exit'/></driver></project>");
  ProgramRun run;
  run.words = {DEVHOST_PROGRAM, "preview", "--project", project, "kitchen", settings};
  const ProgramResult result = RunProgram(run);
  EXPECT_EQ(result.exitStatus, 2);
  EXPECT_THAT(result.output, HasSubstr("the process was ended during CopyFrom of driver 12 \"kitchen\""));
}

TEST_F(PreviewCommand, EndsWithTwoWhenItsOutputIsLost) {
  const FileDescriptor full(::open("/dev/full", O_WRONLY | O_CLOEXEC));
  const FileDescriptor errors(::open("/dev/null", O_WRONLY | O_CLOEXEC));
  Console console(full.Get(), errors.Get());
  const std::string modules = MODULE_FOLDER;
  const char* const argv[] = {"devhost",   "preview",       "--module-dir", modules.c_str(),
                              "--project", project.c_str(), "kitchen",      settings.c_str()};
  EXPECT_EQ(RunCommandLine(8, argv, console), ExitStatus::Wrong);
}

TEST_F(PreviewCommand, ShowsSecretsWhenAsked) {
  EXPECT_THAT(Preview("kitchen", {"--show-secrets"}).out, HasSubstr("\n+rocommunity  hidden\n"));
}

TEST_F(PreviewCommand, TakesTheDeviceByItsIdToo) {
  EXPECT_THAT(Preview("12").out, StartsWith(kHead));
}

TEST_F(PreviewCommand, SaysThatNothingWouldChange) {
  Play("command SetDeviceState xml=@settings.xml\n");
  const Outcome outcome = Preview("kitchen");
  EXPECT_EQ(outcome.status, ExitStatus::Good);
  EXPECT_EQ(outcome.out, "nothing would change in the snmpd.conf of kitchen\n");
}

TEST_F(PreviewCommand, PrintsWhatTheDriversSayWhenTheAgentRefuses) {
  fs::rename(conf, folder.Path("elsewhere"));
  fs::create_symlink("../elsewhere", conf);
  const Outcome outcome = Preview("kitchen");
  EXPECT_EQ(outcome.status, ExitStatus::Wrong);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.errors,
              testing::MatchesRegex("devhost: kitchen: SNMP device 12: cannot read [^\n]+\n"
                                    "devhost: CopyFrom of kitchen gave -1: SetDeviceState would answer <ReadFail/> and "
                                    "leave [^\n]+ as it is\n"));
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
              AllOf(StartsWith("devhost: " + project + ": "), HasSubstr("no driver of that name"), HasSubstr("kitchen")));

  const Outcome other = Preview("hall");
  EXPECT_EQ(other.status, ExitStatus::Wrong);
  EXPECT_THAT(other.errors, StartsWith("devhost: " + settings + ":1: the settings are for device \"12\"; allowed: "));

  File("settings.xml", "<managedDevice><deviceId>15</deviceId></managedDevice>");
  const Outcome nowhere = Preview("hall");
  EXPECT_EQ(nowhere.status, ExitStatus::Wrong);
  EXPECT_THAT(nowhere.errors, HasSubstr("devhost: CopyFrom of hall gave -102: "));

  File("project.xml", "<project><driver id='1' name='k' module='simulated_device.so'/></project>");
  const Outcome alone = Preview("k");
  EXPECT_EQ(alone.status, ExitStatus::Wrong);
  EXPECT_THAT(alone.errors, HasSubstr("no driver of the project has the module snmp_configuration_agent.so"));
}

}  // namespace
}  // namespace devhost
