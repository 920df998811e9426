// Sessions of the whole program are in tests/scripts.
#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/devhost/commands/CommandsFixture.h"

namespace devhost {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class RunCommand : public CommandsFixture {
 protected:
  // Plays a script to the drivers of `project`, or to the agent alone.
  Outcome Play(const std::string& script, const std::vector<std::string>& options = {}, const std::string& project = "") {
    std::vector<std::string> arguments = {"run", "--module-dir", MODULE_FOLDER};
    arguments.insert(arguments.end(), options.begin(), options.end());
    if (!project.empty()) {
      arguments.insert(arguments.end(), {"--project", File("project.xml", project)});
    }
    arguments.push_back(File("script", script));
    return Run(arguments);
  }

  const std::string kitchen =
      "<project><driver id='1' name='agent' module='snmp_configuration_agent.so'/>"
      "<driver id='12' name='kitchen' module='simulated_device.so'><config folder='{project}'/></driver></project>";
};

TEST_F(RunCommand, LoadsTheAgentAloneAndUnloadsIt) {
  const Outcome outcome = Run({"run", "--module-dir", MODULE_FOLDER});
  EXPECT_EQ(outcome.status, ExitStatus::Good);
  EXPECT_THAT(outcome.out, AllOf(StartsWith("load agent 1 "), EndsWith("unload agent\n")));
  EXPECT_EQ(outcome.errors, "");
}

TEST_F(RunCommand, PlaysAScriptFromAFileOrStandardInput) {
  const std::string script = "device kitchen set sysName 'k n'\nexpect setting kitchen sysName is 'k n'\n";
  const Outcome outcome = Play(script, {}, kitchen);
  EXPECT_EQ(outcome.status, ExitStatus::Good);
  EXPECT_THAT(outcome.out, HasSubstr("\ncommand kitchen SetSetting name=sysName value='k n'\n"));
  const Outcome again = RunOn(script, {"run", "--module-dir", MODULE_FOLDER, "--project", folder.Path("project.xml"), "-"});
  EXPECT_EQ(again.out, outcome.out);
}

TEST_F(RunCommand, CountsWhatWentWrongAndSaysWhereItBegan) {
  const Outcome outcome = Play("command Blub\nexpect reply is a\nexpect reply is a\n");
  EXPECT_EQ(outcome.status, ExitStatus::Failed);
  EXPECT_EQ(outcome.errors, "devhost: 1 action failed, 2 expectations not met; first: " + folder.Path("script") + ":1\n");
}

TEST_F(RunCommand, EndsWithTwoWhenADriverCannotBeLoaded) {
  const std::string module = File("text.so", "text");
  const Outcome outcome = Play("print a\n", {}, "<project><driver id='1' name='a' module='" + module + "'/></project>");
  EXPECT_EQ(outcome.status, ExitStatus::Wrong);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.errors, StartsWith("devhost: "));
}

TEST_F(RunCommand, ShowsSecretsWhenAsked) {
  const std::string script = "device kitchen set communityRead hidden\n";
  EXPECT_THAT(Play(script, {}, kitchen).out, AllOf(HasSubstr("value=*****"), Not(HasSubstr("hidden"))));
  EXPECT_THAT(Play(script, {"--show-secrets"}, kitchen).out, HasSubstr("value=hidden"));
}

TEST_F(RunCommand, PrintsInColourWhenAsked) {
  const std::string colour = "\x1b[";
  EXPECT_THAT(Play("print a\n", {"--color", "always"}).out, HasSubstr(colour));
  EXPECT_THAT(Play("print a\n", {"--color", "never"}).out, Not(HasSubstr(colour)));
  EXPECT_THAT(Play("print a\n").out, Not(HasSubstr(colour))) << "a file is not a terminal";
}

TEST_F(RunCommand, PrintsXmlOnSeveralLinesWhenAsked) {
  const std::string script = "device kitchen set sysName kitchen\ncommand GetDeviceList\n";
  EXPECT_THAT(Play(script, {}, kitchen).out, Not(HasSubstr("\n  ")));
  EXPECT_THAT(Play(script, {"--pretty"}, kitchen).out, HasSubstr("\n  "));
}

TEST_F(RunCommand, WritesJsonWhenAsked) {
  const std::string script = "device kitchen set communityRead hidden\n";
  const std::string json = Play(script, {"--json"}, kitchen).out;
  EXPECT_THAT(json, AllOf(StartsWith("{\"n\":1,\"kind\":\"load\","), HasSubstr("\"value\":\"*****\""), EndsWith("}\n")));
  EXPECT_THAT(json, AllOf(Not(HasSubstr("hidden")), Not(HasSubstr("\x1b["))));
  EXPECT_THAT(Play(script, {"--json", "--show-secrets"}, kitchen).out, HasSubstr("\"value\":\"hidden\""));
}

TEST_F(RunCommand, KeepsStatesInAFolderWhenAsked) {
  const std::string project =
      "<project><driver id='12' name='kitchen' module='local_snmpd.so'><config folder='{project}'/></driver></project>";
  EXPECT_EQ(Play("device kitchen set sysName kept\n", {"--state", folder.Path("states")}, project).status, ExitStatus::Good);
  EXPECT_TRUE(std::filesystem::exists(folder.Path("states/driver-12.xml")));
  const std::string expects = "expect setting kitchen sysName is kept\n";
  EXPECT_EQ(Play(expects, {"--state", folder.Path("states")}, project).status, ExitStatus::Good);
  EXPECT_EQ(Play(expects, {}, project).status, ExitStatus::Failed);
}

}  // namespace
}  // namespace devhost
