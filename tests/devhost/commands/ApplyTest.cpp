#include <gmock/gmock.h>
#include <pty.h>
#include <sys/wait.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "devhost/operations/Snapshots.h"
#include "devhost/system/RunProgram.h"
#include "tests/devhost/commands/CommandsFixture.h"
#include "tests/devhost/support/SnmpDaemon.h"
#include "tests/support/ReadPipe.h"

namespace devhost {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// What the program prints on a terminal where somebody types `answer`.
std::string OnTerminal(std::vector<std::string> words, const std::string& answer, int& status) {
  words.insert(words.begin(), DEVHOST_PROGRAM);
  std::vector<char*> arguments;
  for (std::string& word : words) {
    arguments.push_back(word.data());
  }
  arguments.push_back(nullptr);
  int terminal = -1;
  const pid_t child = ::forkpty(&terminal, nullptr, nullptr, nullptr);
  if (child == 0) {
    ::execv(arguments[0], arguments.data());
    ::_exit(127);
  }
  std::string typed = answer + "\n";
  EXPECT_EQ(::write(terminal, typed.data(), typed.size()), static_cast<ssize_t>(typed.size()));
  std::string shown;
  testsupport::ReadPipe(terminal, std::chrono::minutes(1), [&](std::string_view block) { shown += block; });
  ::close(terminal);
  ::waitpid(child, &status, 0);
  return shown;
}

class ApplyCommand : public CommandsFixture {
 protected:
  ApplyCommand() { SetDevice("simulated_device.so", ""); }

  void SetDevice(const std::string& module, const std::string& attributes) const {
    File("project.xml",
         "<project><driver id='1' name='agent' module='snmp_configuration_agent.so'/><driver id='12' "
         "name='kitchen' module='" +
             module + "'><config folder='{project}/kitchen' " + attributes + "/></driver></project>");
  }
  std::vector<std::string> Words(const std::vector<std::string>& options) const {
    std::vector<std::string> words = {"apply", "--module-dir", MODULE_FOLDER, "--project", project, "kitchen", settings};
    words.insert(words.end(), options.begin(), options.end());
    return words;
  }
  Outcome Apply(const std::vector<std::string>& options) const { return Run(Words(options)); }

  std::string ApplyOnTerminal(const std::string& answer, int& status) const { return OnTerminal(Words({}), answer, status); }

  const std::string conf = File("kitchen/snmpd.conf", "# by hand\n");
  const std::string project = folder.Path("project.xml");
  const std::string settings = File("settings.xml",
                                    "<managedDevice><snmpCommunityReadSetting>hidden</snmpCommunityReadSetting>"
                                    "<snmpSysNameSetting>kitchen</snmpSysNameSetting><deviceId>12</deviceId>"
                                    "</managedDevice>");
};

constexpr char kChanges[] =
    "snmpCommunityReadSetting: \"\" -> \"*****\"\n"
    "snmpSysNameSetting: \"\" -> \"kitchen\"\n";

TEST_F(ApplyCommand, ChangesTheDeviceAndSaysWhatHasChanged) {
  const Outcome outcome = Apply({"--yes"});
  EXPECT_EQ(outcome.status, ExitStatus::Good);
  EXPECT_EQ(outcome.errors, "");
  EXPECT_EQ(outcome.out, std::string(kChanges) + "kitchen is changed; snapshot 1 has what was there before\n");
  EXPECT_THAT(folder.Read("kitchen/snmpd.conf"), HasSubstr("\nrocommunity  hidden\n"));
  EXPECT_EQ(folder.Read("project.xml.snapshots/driver-12/1/before.conf"), "# by hand\n");
}

TEST_F(ApplyCommand, ChangesNothingASecondTime) {
  ASSERT_EQ(Apply({"--yes"}).status, ExitStatus::Good);
  const std::string written = folder.Read("kitchen/snmpd.conf");
  const Outcome outcome = Apply({"--yes"});
  EXPECT_EQ(outcome.status, ExitStatus::Good);
  EXPECT_EQ(outcome.out, "nothing to change on kitchen\n");
  EXPECT_EQ(folder.Read("kitchen/snmpd.conf"), written);
  EXPECT_FALSE(fs::exists(folder.Path("project.xml.snapshots/driver-12/2")));
}

TEST_F(ApplyCommand, OnlySaysWhatWouldChangeInADryRun) {
  const Outcome outcome = Apply({"--dry-run"});
  EXPECT_EQ(outcome.status, ExitStatus::Failed);
  EXPECT_EQ(outcome.out, std::string(kChanges) + "the snmpd.conf of kitchen would change\n");
  EXPECT_THAT(Apply({"--dry-run", "--diff"}).out, AllOf(StartsWith("--- snmpd.conf of kitchen\n"), HasSubstr(kChanges)));
  EXPECT_EQ(folder.Read("kitchen/snmpd.conf"), "# by hand\n");
  EXPECT_FALSE(fs::exists(folder.Path("project.xml.snapshots")));
}

TEST_F(ApplyCommand, RefusesWhereNobodyCanBeAsked) {
  const Outcome outcome = RunOn("y\n", Words({}));
  EXPECT_EQ(outcome.status, ExitStatus::Wrong);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.errors, HasSubstr("allowed: --yes, --dry-run, or a terminal"));
  EXPECT_EQ(folder.Read("kitchen/snmpd.conf"), "# by hand\n");
}

TEST_F(ApplyCommand, ShowsTheDifferenceAndAsksOnATerminal) {
  for (const char* const no : {"", "n", "yess", "Y es"}) {
    int status = 0;
    const std::string shown = ApplyOnTerminal(no, status);
    EXPECT_EQ(WEXITSTATUS(status), 2) << no;
    EXPECT_THAT(shown, AllOf(HasSubstr("+sysName  kitchen\r\n"), HasSubstr("Change kitchen like this? [y/N] "),
                             HasSubstr("not confirmed: nothing was changed")));
    EXPECT_EQ(folder.Read("kitchen/snmpd.conf"), "# by hand\n");
  }
  int status = -1;
  EXPECT_THAT(ApplyOnTerminal("y", status), HasSubstr("kitchen is changed; snapshot 1 has what was there before\r\n"));
  EXPECT_EQ(WEXITSTATUS(status), 0);
  EXPECT_THAT(folder.Read("kitchen/snmpd.conf"), HasSubstr("\nsysName  kitchen\n"));
}

TEST_F(ApplyCommand, PrintsOneJsonObject) {
  const Outcome planned = Apply({"--json", "--dry-run"});
  EXPECT_EQ(planned.status, ExitStatus::Failed);
  EXPECT_THAT(planned.out, StartsWith("{\"device\":\"kitchen\",\"verdict\":\"would-change\",\"changed\":false,"
                                      "\"snapshot\":null,\"difference\":\"--- snmpd.conf of kitchen\\n"));
  const Outcome changed = Apply({"--json", "--yes"});
  EXPECT_EQ(changed.status, ExitStatus::Good);
  EXPECT_EQ(changed.out.find('\n'), changed.out.size() - 1);
  EXPECT_THAT(changed.out, AllOf(HasSubstr("\"verdict\":\"changed\",\"changed\":true,\"snapshot\":1,"),
                                 HasSubstr("{\"name\":\"snmpSysNameSetting\",\"before\":\"\",\"after\":\"kitchen\"}"),
                                 EndsWith(",\"findings\":[],\"messages\":[]}\n"), Not(HasSubstr("hidden"))));
  const Outcome unchanged = Apply({"--json", "--yes"});
  EXPECT_EQ(unchanged.out,
            "{\"device\":\"kitchen\",\"verdict\":\"unchanged\",\"changed\":false,\"snapshot\":null,\"difference\":\"\","
            "\"settings\":[],\"findings\":[],\"messages\":[]}\n");
}

TEST_F(ApplyCommand, PrintsOneJsonObjectWhereverItStops) {
  const auto stops = [this](const std::string& stage, const std::string& reason) {
    const Outcome outcome = Apply({"--json", "--yes"});
    EXPECT_EQ(outcome.status, ExitStatus::Wrong) << stage;
    EXPECT_EQ(outcome.out.find('\n'), outcome.out.size() - 1) << outcome.out;
    EXPECT_THAT(outcome.out, AllOf(StartsWith("{\"device\":\"kitchen\",\"verdict\":\"stopped\",\"changed\":false,"),
                                   HasSubstr(",\"stage\":\"" + stage + "\",\"reason\":\""), HasSubstr(reason)));
  };
  {
    const SnapshotFolder busy(folder.Path("project.xml.snapshots"), 12);
    stops("prepare", "another devhost is at work on this device");
  }
  SetDevice("missing.so", "");
  stops("input", "missing.so");
  const std::string broken = File("broken.so", "not a module");
  SetDevice(broken, "");
  stops("plan", "broken.so");
  File("project.xml", "<project><driver id='1' name='agent' module='snmp_configuration_agent.so'/></project>");
  stops("input", "there is no driver of that name or id");
  SetDevice("simulated_device.so", "");
  File("settings.xml", "<managedDevice>");
  stops("plan", "not well-formed XML");
  File("settings.xml", "<managedDevice><snmpEnabledSeting/><deviceId>12</deviceId></managedDevice>");
  stops("plan", "because of element-ignored");
  fs::remove(settings);
  stops("input", "cannot read");
  EXPECT_EQ(folder.Read("kitchen/snmpd.conf"), "# by hand\n");
}

TEST_F(ApplyCommand, PrintsAJsonObjectForAStateThatItCannotRead) {
  const std::string states = folder.Path("states");
  File("states/driver-12.xml", "<broken");
  ::chmod(states.c_str(), 0700);
  const Outcome outcome = Apply({"--json", "--yes", "--state", states});
  EXPECT_EQ(outcome.status, ExitStatus::Wrong);
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("\"verdict\":\"stopped\""), HasSubstr("\"stage\":\"plan\"")));
}

TEST_F(ApplyCommand, PrintsAJsonObjectForAChangeThatHasFailed) {
  fs::create_directory(folder.Path("kitchen/.snmpd.conf.new"));  // where the driver writes
  EXPECT_THAT(Apply({"--json", "--yes"}).out,
              AllOf(HasSubstr("\"verdict\":\"failed\",\"changed\":true,"),
                    HasSubstr("\"stage\":\"change\",\"reason\":\"kitchen: SNMP device 12: cannot replace "),
                    EndsWith("; SetDeviceState answered <WriteFail/>\"}\n")));
}

TEST_F(ApplyCommand, SaysThatTheAgentIsNotADevice) {
  const Outcome outcome = Run({"apply", "--module-dir", MODULE_FOLDER, "--project", project, "agent", settings, "--yes"});
  EXPECT_EQ(outcome.status, ExitStatus::Wrong);
  EXPECT_THAT(
      outcome.errors,
      HasSubstr("project.xml: \"agent\" is the agent, not a device; allowed: a device of the project, such as kitchen\n"));
}

TEST_F(ApplyCommand, StopsAtErrorsThatAreNotAccepted) {
  File("settings.xml",
       "<managedDevice><snmpSysContactSetting># nobody</snmpSysContactSetting><deviceId>12</deviceId></managedDevice>");
  File("kitchen/snmpd.conf", "# by hand\n# Halvoren Section Start\n# Halvoren Section End\n");
  const Outcome stopped = Apply({"--yes"});
  EXPECT_EQ(stopped.status, ExitStatus::Wrong);
  EXPECT_THAT(stopped.out, HasSubstr(" [value-begins-with-hash]\n"));
  EXPECT_THAT(stopped.errors, HasSubstr("because of text-above-section, value-begins-with-hash: remove the cause"));
  EXPECT_EQ(Apply({"--yes", "--accept", "text-above-section"}).status, ExitStatus::Wrong);
  EXPECT_THAT(Apply({"--json", "--yes"}).out, HasSubstr("\"verdict\":\"stopped\",\"changed\":false,\"snapshot\":null"));
  EXPECT_EQ(Apply({"--yes", "--accept", "text-above-section,value-begins-with-hash"}).status, ExitStatus::Good);
}

TEST_F(ApplyCommand, StopsAtAMissingSettingUnlessTheRuleIsAccepted) {
  ASSERT_EQ(Apply({"--yes"}).status, ExitStatus::Good);
  const std::string written = folder.Read("kitchen/snmpd.conf");
  File("settings.xml",
       "<managedDevice><snmpSysNameSetting>attic</snmpSysNameSetting><deviceId>12</deviceId></managedDevice>");
  const Outcome stopped = Apply({"--yes"});
  EXPECT_EQ(stopped.status, ExitStatus::Wrong);
  EXPECT_THAT(stopped.out,
              HasSubstr(":1: error: the element is the whole state of the device, and these settings are missing: "
                        "snmpCommunityReadSetting (the community is removed) [setting-missing]\n"
                        "    add each setting: its value to keep it, empty (a switch: false) to give it up\n"));
  EXPECT_THAT(stopped.errors, HasSubstr("because of setting-missing: remove the cause, or accept the rule"));
  EXPECT_EQ(folder.Read("kitchen/snmpd.conf"), written);
  EXPECT_EQ(Apply({"--yes", "--accept", "setting-missing"}).status, ExitStatus::Good);
  EXPECT_THAT(folder.Read("kitchen/snmpd.conf"), AllOf(HasSubstr("\nsysName  attic\n"), Not(HasSubstr("\nrocommunity"))));
}

TEST_F(ApplyCommand, SaysThatTheChangeHasFailed) {
  fs::create_directory(folder.Path("kitchen/.snmpd.conf.new"));  // where the driver writes
  const Outcome failed = Apply({"--yes"});
  EXPECT_EQ(failed.status, ExitStatus::Failed);
  EXPECT_THAT(failed.errors, AllOf(HasSubstr("SetDeviceState answered <WriteFail/>\n"),
                                   EndsWith("the change of kitchen has failed; snapshot 1 has what was there before\n")));
  EXPECT_THAT(Apply({"--yes", "--json"}).out, HasSubstr("\"verdict\":\"failed\",\"changed\":true,\"snapshot\":2,"));
}

TEST_F(ApplyCommand, SaysWhatIsWrongWithWhatItIsGiven) {
  File("settings.xml", "<managedDevice><deviceId>15</deviceId></managedDevice>");
  const Outcome other = Apply({"--yes"});
  EXPECT_EQ(other.status, ExitStatus::Wrong);
  EXPECT_THAT(other.errors, HasSubstr("settings.xml:1: the settings are for device \"15\"; allowed: "));
}

class ApplyToAFile : public CommandsFixture {
 protected:
  Outcome Do(std::vector<std::string> words) const {
    words.insert(words.begin() + 1, {"--module-dir", MODULE_FOLDER, "--file", file});
    return Run(words);
  }
  std::string Settings(const std::string& name, const std::string& more = "") const {
    return File("settings.xml", "<managedDevice>" + more + "<snmpCommunityReadSetting>hidden</snmpCommunityReadSetting>" +
                                    "<snmpSysNameSetting>" + name + "</snmpSysNameSetting><deviceId>1</deviceId>" +
                                    "</managedDevice>");
  }

  const std::string file = File("etc/snmpd.conf", "# by hand\n");
};

TEST_F(ApplyToAFile, ChangesItAndItsHistoryKnows) {
  const Outcome changed = Do({"apply", Settings("kitchen"), "--yes"});
  EXPECT_EQ(changed.status, ExitStatus::Good);
  EXPECT_EQ(changed.errors, "");
  EXPECT_EQ(changed.out, std::string(kChanges) + file + " is changed; snapshot 1 has what was there before\n");
  EXPECT_EQ(Do({"apply", Settings("kitchen"), "--yes"}).out, "nothing to change on " + file + "\n");
  EXPECT_EQ(Do({"drift"}).status, ExitStatus::Good);
  EXPECT_EQ(Do({"apply", Settings("attic"), "--yes"}).status, ExitStatus::Good);
  EXPECT_THAT(Do({"history", "--from", "2"}).out, StartsWith("--- " + file + " before snapshot 2\n+++ " + file + " now\n"));
  EXPECT_EQ(Do({"undo", "2", "--yes"}).status, ExitStatus::Good);
  EXPECT_THAT(folder.Read("etc/snmpd.conf"), HasSubstr("\nsysName  kitchen\n"));
}

TEST_F(ApplyToAFile, StopsAtAMissingSettingThatTheFileHolds) {
  const std::string contact = "<snmpSysContactSetting>Ada</snmpSysContactSetting>";
  ASSERT_EQ(Do({"apply", Settings("kitchen", contact), "--yes"}).status, ExitStatus::Good);
  const Outcome stopped = Do({"apply", Settings("attic"), "--yes"});
  EXPECT_EQ(stopped.status, ExitStatus::Wrong);
  EXPECT_THAT(stopped.out, HasSubstr("are missing: snmpSysContactSetting (emptied) [setting-missing]\n"));
  EXPECT_THAT(folder.Read("etc/snmpd.conf"), HasSubstr("\nsysName  kitchen\n"));
  EXPECT_EQ(Do({"apply", Settings("attic", "<snmpSysContactSetting/>"), "--yes"}).status, ExitStatus::Good);
}

TEST_F(ApplyToAFile, RestartsOnlyAfterAChangeAndSaysWhenThatFails) {
  const std::string restarted = folder.Path("restarted");
  Do({"apply", Settings("kitchen"), "--dry-run", "--restart-command", "touch " + restarted});
  EXPECT_FALSE(fs::exists(restarted));
  Do({"apply", Settings("kitchen"), "--yes", "--no-probe", "--restart-command", "touch " + restarted});
  EXPECT_TRUE(fs::exists(restarted));
  fs::remove(restarted);
  Do({"apply", Settings("kitchen"), "--yes", "--no-probe", "--restart-command", "touch " + restarted});
  EXPECT_FALSE(fs::exists(restarted));
  const Outcome failed = Do({"apply", Settings("attic"), "--yes", "--json", "--restart-command", "sh -c 'exit 4'"});
  EXPECT_EQ(failed.status, ExitStatus::Failed);
  EXPECT_THAT(failed.out, AllOf(HasSubstr("\"verdict\":\"failed\",\"changed\":true,\"snapshot\":2,"),
                                HasSubstr("\"stage\":\"restart\",\"reason\":\"the file is changed, but the restart command "
                                          "has failed: it has ended with status 4\"}")));
}

TEST_F(ApplyToAFile, MakesUpForARestartThatIsDue) {
  const std::string restarted = folder.Path("restarted");
  EXPECT_EQ(Do({"apply", Settings("kitchen"), "--yes", "--restart-command", "false"}).status, ExitStatus::Failed);

  const Outcome dry = Do({"apply", Settings("kitchen"), "--dry-run", "--restart-command", "touch " + restarted});
  EXPECT_EQ(dry.out, "the restart of the change of snapshot 1 is due\nnothing to change on " + file + "\n");
  EXPECT_EQ(dry.status, ExitStatus::Failed);
  EXPECT_FALSE(fs::exists(restarted));

  const Outcome drift = Do({"drift"});
  EXPECT_EQ(drift.status, ExitStatus::Failed);
  EXPECT_THAT(drift.errors, HasSubstr("the daemon has not been told of the change of snapshot 1"));

  const Outcome untold = Do({"apply", Settings("kitchen"), "--yes", "--json"});
  EXPECT_EQ(untold.status, ExitStatus::Failed);
  EXPECT_THAT(untold.out, AllOf(HasSubstr("\"verdict\":\"failed\",\"changed\":false,\"snapshot\":null,"),
                                HasSubstr("\"stage\":\"restart\",\"reason\":\"the daemon has not been told")));

  const Outcome late = Do({"apply", Settings("kitchen"), "--yes", "--no-probe", "--restart-command", "touch " + restarted});
  EXPECT_EQ(late.status, ExitStatus::Good);
  EXPECT_EQ(late.out,
            "the restart of the change of snapshot 1 was due, and the restart command was run now\nnothing to change on " +
                file + "\n");
  EXPECT_TRUE(fs::exists(restarted));
}

// A whole answer is wanted before anything is done, also where only what is due is made up for.
TEST_F(ApplyToAFile, AsksOnATerminalBeforeItMakesUpForARestart) {
  const std::string restarted = folder.Path("restarted");
  const std::string settings = Settings("kitchen");
  Do({"apply", settings, "--yes", "--restart-command", "false"});
  const std::vector<std::string> words = {"apply",      "--module-dir",      MODULE_FOLDER,       "--file", file, settings,
                                          "--no-probe", "--restart-command", "touch " + restarted};
  int status = 0;
  EXPECT_THAT(OnTerminal(words, "n", status), HasSubstr("not confirmed: nothing was changed"));
  EXPECT_EQ(WEXITSTATUS(status), 2);
  EXPECT_FALSE(fs::exists(restarted));
  EXPECT_THAT(OnTerminal(words, "y", status), HasSubstr("the restart command was run now"));
  EXPECT_EQ(WEXITSTATUS(status), 0);
  EXPECT_TRUE(fs::exists(restarted));
}

#ifndef WITHOUT_SNMP_CLIENT
TEST_F(ApplyToAFile, AsksItsDaemonWhenThatHasReadIt) {
  const SnmpDaemon daemon("rocommunity hidden\nsysName attic\n");
  File("etc/snmpd.conf", "agentaddress " + daemon.Address() + "\nagentXSocket unix:" + folder.Path("agentx") + "\n");
  const std::string settings = Settings("kitchen");
  EXPECT_EQ(Do({"apply", settings, "--yes"}).status, ExitStatus::Good);  // it has not been told of the file yet
  const Outcome differs = Do({"apply", Settings("hall"), "--yes", "--restart-command", "true"});
  EXPECT_EQ(differs.status, ExitStatus::Failed);
  EXPECT_THAT(differs.out, HasSubstr("\nDIFFERS name             configured \"hall\", served \"attic\""));
  const Outcome good = Do({"apply", Settings("attic"), "--yes", "--restart-command", "true"});
  EXPECT_EQ(good.status, ExitStatus::Good) << good.out;
  EXPECT_EQ(Do({"apply", Settings("hall"), "--yes", "--no-probe", "--restart-command", "true"}).status, ExitStatus::Good);
}

TEST_F(ApplyToAFile, FailsWhenItsDaemonDoesNotComeBack) {
  const SnmpDaemon daemon("rocommunity hidden\nsysName attic\n");
  File("etc/snmpd.conf", "agentaddress " + daemon.Address() + "\nagentXSocket unix:" + folder.Path("agentx") + "\n");
  const std::string kill = "sh -c 'kill " + std::to_string(daemon.Pid()) + "'";
  const Outcome gone = Do({"apply", Settings("attic"), "--yes", "--json", "--restart-command", kill});
  EXPECT_EQ(gone.status, ExitStatus::Failed);
  const std::string reason =
      "the daemon at " + daemon.Address() + " answered before the change, and does not answer after it";
  EXPECT_THAT(gone.out, AllOf(HasSubstr("\"verdict\":\"changed\",\"changed\":true,"),
                              HasSubstr("\"verdict\":\"gone\",\"items\":[],\"messages\":[\"" + reason + "\"]")));
  // Nobody can say of the next change that it has ended the daemon.
  const Outcome off = Do({"apply", Settings("hall"), "--yes", "--restart-command", "true"});
  EXPECT_EQ(off.status, ExitStatus::Good);
  EXPECT_THAT(off.out, HasSubstr("not probed: the daemon at " + daemon.Address() + " cannot be asked: refused\n"));
}
#endif

TEST_F(ApplyToAFile, IsNotChangedWhenTheRestartCommandIsNotThere) {
  const std::string plain = File("plain", "");
  for (const std::string& program : {std::string("no-such-program"), folder.Path("nowhere"), plain, folder.Path("etc")}) {
    const Outcome outcome = Do({"apply", Settings("kitchen"), "--yes", "--json", "--restart-command", program});
    EXPECT_EQ(outcome.status, ExitStatus::Wrong) << program;
    EXPECT_THAT(outcome.out, AllOf(HasSubstr("\"stage\":\"input\""), HasSubstr("--restart-command: ")));
    EXPECT_EQ(folder.Read("etc/snmpd.conf"), "# by hand\n");
  }
}

TEST_F(ApplyToAFile, SaysWhatIsWrongWithTheLine) {
  const std::string settings = Settings("kitchen");
  EXPECT_THAT(Do({"apply", "--yes"}).errors, HasSubstr("the settings are missing; allowed: "));
  EXPECT_THAT(Do({"apply", "kitchen", settings, "--yes"}).errors, HasSubstr("a device and --file cannot stand together"));
  EXPECT_THAT(Run({"apply", settings, "--yes"}).errors, HasSubstr("allowed: DEVICE --project FILE, or --file FILE"));
  EXPECT_THAT(Do({"apply", settings, "--project", "p"}).errors, HasSubstr("cannot stand together"));
  EXPECT_THAT(Do({"apply", settings, "--yes", "--restart-command", " "}).errors, HasSubstr("--restart-command is empty"));
  fs::remove(file);
  const Outcome missing = Do({"apply", settings, "--yes", "--json"});
  EXPECT_THAT(missing.out,
              AllOf(StartsWith("{\"device\":\"" + file + "\",\"verdict\":\"stopped\""), HasSubstr("\"stage\":\"input\"")));
}

TEST_F(ApplyToAFile, SaysThatAFileDoesNotSwitchSnmpOff) {
  const std::string off = "<snmpEnabledSetting>false</snmpEnabledSetting>";
  EXPECT_THAT(Do({"apply", Settings("kitchen", off), "--dry-run"}).out, HasSubstr("stop the daemon to switch SNMP off\n"));
  EXPECT_THAT(Do({"apply", Settings("kitchen"), "--dry-run"}).out, Not(HasSubstr("stop the daemon")));
}

// Status 0 or 1 would say that the device may be changed.
TEST_F(ApplyCommand, EndsWithTwoWhenADriverEndsTheProcessBeforeTheChange) {
  SetDevice(TEST_MODULE_FOLDER "/odd_device.so", "announce='Initialize' copyFrom='exit'");
  ProgramRun run;
  run.words = Words({"--yes"});
  run.words.insert(run.words.begin(), DEVHOST_PROGRAM);
  EXPECT_EQ(RunProgram(run).exitStatus, 2);
}

}  // namespace
}  // namespace devhost
