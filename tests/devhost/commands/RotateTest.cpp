// With the distribution's snmpd.
#include <gmock/gmock.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <thread>

#include "devhost/operations/Rotation.h"
#include "tests/devhost/commands/DeviceFixture.h"
#include "tests/devhost/support/SnmpDaemon.h"
#include "tests/e2e/TrapReceiver.h"
#include "tests/e2e/Wait.h"

namespace devhost {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class RotateCommand : public DeviceFixture {
 protected:
  // The file's own socket cannot be had beside other tests.
  RotateCommand() { File("kitchen/snmpd.conf", Conf() + "agentXSocket unix:/nonexistent\n"); }

  Outcome Start() const { return Do("rotate", {"--read", File("new", "newCommunity\n"), "--yes"}); }
};

TEST_F(RotateCommand, StartsAndFinishesARotation) {
  const Outcome start = Start();
  EXPECT_EQ(start.status, ExitStatus::Good) << start.errors;
  EXPECT_THAT(start.out, EndsWith("kitchen is changed; snapshot 3 has what was there before\n"));
  EXPECT_THAT(Conf(), AllOf(HasSubstr("\nrocommunity  newCommunity\n"), HasSubstr("\nrocommunity  hidden\n")));
  const SnmpDaemon daemon("rocommunity newCommunity\nsysName attic\n");  // it has read the file as it will be
  const Outcome finish = Do("rotate", {"--finish", "--yes", "--address", daemon.Address()});
  EXPECT_EQ(finish.status, ExitStatus::Good) << finish.out << finish.errors;
  EXPECT_THAT(finish.out, EndsWith("kitchen at " + daemon.Address() + " is as configured\n"));
  EXPECT_THAT(Conf(), AllOf(HasSubstr("\nrocommunity  newCommunity\n"), Not(HasSubstr("hidden"))));
}

TEST_F(RotateCommand, FailsWhenTheOldCommunityWorksAfterItsEnd) {
  Start();
  const SnmpDaemon daemon(Conf());  // it knows both, and does not read the file again
  const Outcome finish = Do("rotate", {"--finish", "--yes", "--address", daemon.Address()});
  EXPECT_EQ(finish.status, ExitStatus::Failed);
  EXPECT_THAT(finish.out, AllOf(HasSubstr("old read community  still works; the daemon has not read the file\n"),
                                EndsWith(" differs: old read community\n")));
  EXPECT_THAT(Conf(), Not(HasSubstr("hidden")));
}

TEST_F(RotateCommand, RotatesInAFileWithoutAProject) {
  const std::string file = folder.Path("kitchen/snmpd.conf");
  const auto rotate = [&](const std::vector<std::string>& more) {
    std::vector<std::string> words = {"rotate", "--module-dir", MODULE_FOLDER, "--file", file};
    words.insert(words.end(), more.begin(), more.end());
    return Run(words);
  };
  const std::string restarted = folder.Path("restarted");
  const Outcome start =
      rotate({"--read", File("new", "newCommunity\n"), "--yes", "--restart-command", "touch " + restarted});
  EXPECT_EQ(start.status, ExitStatus::Good) << start.errors;
  EXPECT_TRUE(std::filesystem::exists(restarted));
  EXPECT_THAT(Conf(), AllOf(HasSubstr("\nrocommunity  newCommunity\n"), HasSubstr("\nrocommunity  hidden\n")));
  const SnmpDaemon daemon(Conf());  // it knows both, and does not read the file again
  File("kitchen/snmpd.conf", Conf() + "agentaddress " + daemon.Address() + "\nincludeFile part.conf\n");
  const std::string part = File("kitchen/part.conf", "rocommunity hidden 192.0.2.5\n");
  const Outcome status = rotate({"--status"});
  EXPECT_EQ(status.status, ExitStatus::Good) << status.errors;
  EXPECT_EQ(status.errors, "devhost: " + part + ":1 has the old read community, too: it stays valid there\n");
  EXPECT_THAT(status.out, HasSubstr("ok      old read community  works\n"));
  const Outcome finish = rotate({"--finish", "--yes", "--restart-command", "touch " + restarted});
  EXPECT_EQ(finish.status, ExitStatus::Failed);
  EXPECT_THAT(finish.out, AllOf(HasSubstr("\n" + part + ":1 has the old read community, too: it stays valid there\n"),
                                HasSubstr("old read community  still works; " + part + ":1 lets it in\n")));
  EXPECT_THAT(Conf(), Not(HasSubstr("hidden")));
}

TEST_F(RotateCommand, NamesTheLineByWhichTheOldCommunityWorksAfterItsEnd) {
  Start();
  File("kitchen/snmpd.conf", Conf() + "com2sec name default hidden\n");
  const SnmpDaemon daemon(Conf());
  const Outcome finish = Do("rotate", {"--finish", "--yes", "--address", daemon.Address(), "--json"});
  EXPECT_EQ(finish.status, ExitStatus::Failed);
  const std::string text = Conf();
  const auto line = std::count(text.begin(), text.end(), '\n');
  EXPECT_THAT(finish.out, HasSubstr("\"reason\":\"line " + std::to_string(line) + " of the file lets it in\""));
}

TEST_F(RotateCommand, FailsWhenTheNewCommunityWorksAfterItWasAborted) {
  Start();
  const SnmpDaemon daemon(Conf());
  const Outcome outcome = Do("rotate", {"--abort", "--yes", "--address", daemon.Address()});
  EXPECT_EQ(outcome.status, ExitStatus::Failed);
  EXPECT_THAT(outcome.out, HasSubstr("new read community  still works; the daemon has not read the file\n"));
}

TEST_F(RotateCommand, ReadsTheCommunityFromStandardInput) {
  std::vector<std::string> words = {"rotate",  "--module-dir", MODULE_FOLDER, "--project", project,
                                    "kitchen", "--read",       "-",           "--yes"};
  EXPECT_EQ(RunOn("newCommunity\n", words).status, ExitStatus::Good);
  EXPECT_THAT(Conf(), HasSubstr("\nrocommunity  newCommunity\n"));
}

TEST_F(RotateCommand, RefusesAFileWithoutOneLine) {
  for (const char* text : {"", "\n", "a\nb\n", "a\r\n"}) {
    const Outcome outcome = Do("rotate", {"--read", File("new", text), "--yes"});
    EXPECT_EQ(outcome.status, ExitStatus::Wrong);
    EXPECT_EQ(outcome.errors, "devhost: --read: the file does not hold one line with a community\n");
  }
}

TEST_F(RotateCommand, RefusesAFileWithoutAnEnd) {
  for (const char* const option : {"--read", "--write"}) {
    const Outcome outcome = Do("rotate", {option, "/dev/zero", "--yes"});
    EXPECT_EQ(outcome.status, ExitStatus::Wrong);
    EXPECT_EQ(outcome.errors, "devhost: cannot read \"/dev/zero\": it is larger than the 65536 bytes that are allowed\n");
  }
}

TEST_F(RotateCommand, ReadsBothCommunitiesFromStandardInput) {
  const std::string settings = File("settings.xml",
                                    "<managedDevice><snmpCommunityReadSetting>hidden</snmpCommunityReadSetting>"
                                    "<snmpCommunityWriteSetting>hidden2</snmpCommunityWriteSetting>"
                                    "<snmpSysNameSetting>attic</snmpSysNameSetting><deviceId>12</deviceId>"
                                    "</managedDevice>");
  ASSERT_EQ(Do("apply", {settings, "--yes"}).status, ExitStatus::Good);
  const std::vector<std::string> words = {"rotate", "--module-dir", MODULE_FOLDER, "--project", project, "kitchen", "--read",
                                          "-",      "--write",      "-",           "--yes"};
  EXPECT_EQ(RunOn("oneLine\n", words).errors, "devhost: --write: the file does not hold one line with a community\n");
  EXPECT_EQ(RunOn("one\ntwo\nthree\n", words).errors,
            "devhost: --write: the file does not hold one line with a community\n");
  EXPECT_EQ(RunOn("newRead\nnewWrite\n", words).status, ExitStatus::Good);
  EXPECT_THAT(Conf(), AllOf(HasSubstr("\nrocommunity  newRead\nrwcommunity  newWrite\n"),
                            HasSubstr("\nrocommunity  hidden\nrwcommunity  hidden2\n")));
}

TEST_F(RotateCommand, MakesUpForTheRestartOfItsLastStep) {
  const std::string file = folder.Path("kitchen/snmpd.conf");
  const auto rotate = [&](const std::string& restart, const std::vector<std::string>& more) {
    std::vector<std::string> words = {"rotate", "--module-dir", MODULE_FOLDER,       "--file",
                                      file,     "--yes",        "--restart-command", restart};
    words.insert(words.end(), more.begin(), more.end());
    return Run(words);
  };
  const std::vector<std::string> start = {"--read", File("new", "newCommunity\n")};
  EXPECT_EQ(rotate("false", start).status, ExitStatus::Failed);
  const Outcome again = rotate("true", start);
  EXPECT_EQ(again.status, ExitStatus::Good) << again.errors;
  EXPECT_THAT(again.out, HasSubstr("was due, and the restart command was run now\nnothing to change on "));
  EXPECT_EQ(rotate("false", {"--finish", "--no-probe"}).status, ExitStatus::Failed);
  const SnmpDaemon daemon("rocommunity newCommunity\nrocommunity hidden\n");  // it has not read the file
  const Outcome finish = rotate("true", {"--finish", "--address", daemon.Address()});
  EXPECT_EQ(finish.status, ExitStatus::Failed);
  EXPECT_THAT(finish.out, AllOf(HasSubstr("was due, and the restart command was run now\n"),
                                HasSubstr("old read community  still works; the daemon has not read the file\n")));
  const Outcome last = rotate("true", {"--finish", "--no-probe"});
  EXPECT_EQ(last.status, ExitStatus::Good);
  EXPECT_THAT(last.out, AllOf(EndsWith("nothing to change on " + file + "\n"), Not(HasSubstr("was due"))));
}

TEST_F(RotateCommand, SaysWhichCommunitiesWork) {
  EXPECT_THAT(Do("rotate", {"--status"}).out, StartsWith("no rotation is open on kitchen\n"));
  Start();
  const SnmpDaemon daemon(Conf());
  const Outcome outcome = Do("rotate", {"--status", "--address", daemon.Address()});
  EXPECT_EQ(outcome.status, ExitStatus::Good);
  EXPECT_EQ(outcome.out,
            "a rotation is open on kitchen\n"
            "ok      read community      works\n"
            "ok      old read community  works\n"
            "kitchen at " +
                daemon.Address() + " is as configured\n");
  EXPECT_THAT(Do("rotate", {"--status", "--json", "--address", daemon.Address()}).out,
              StartsWith("{\"device\":\"kitchen\",\"open\":true,\"address\":\"" + daemon.Address() + "\","));
}

TEST_F(RotateCommand, DoesNotFinishBeforeTheNewCommunityIsProven) {
  const SnmpDaemon daemon(Conf());  // it knows the old one alone
  Start();
  const std::string open = Conf();
  const Outcome outcome = Do("rotate", {"--finish", "--yes", "--address", daemon.Address()});
  EXPECT_EQ(outcome.status, ExitStatus::Wrong);
  EXPECT_THAT(outcome.errors, HasSubstr("does not answer to the new read community; allowed: --no-probe"));
  EXPECT_THAT(Do("rotate", {"--finish", "--yes"}).errors, HasSubstr("nobody knows whether the new community works"));
  EXPECT_EQ(Conf(), open);
  EXPECT_EQ(Do("rotate", {"--finish", "--yes", "--no-probe"}).status, ExitStatus::Good);
}

TEST_F(RotateCommand, PutsTheOldCommunityBack) {
  Start();
  EXPECT_EQ(Do("rotate", {"--abort", "--yes"}).status, ExitStatus::Good);
  EXPECT_THAT(Conf(), AllOf(HasSubstr("\nrocommunity  hidden\n"), Not(HasSubstr("newCommunity"))));
}

TEST_F(RotateCommand, NeedsToKnowWhatToDo) {
  EXPECT_THAT(Do("rotate", {"--yes"}).errors, HasSubstr("nothing to do; allowed: --read FILE"));
  EXPECT_THAT(Do("rotate", {}).errors, HasSubstr("nothing to do; allowed: --read FILE"));
  EXPECT_THAT(Do("rotate", {"--finish"}).errors, HasSubstr("nobody can be asked"));
  EXPECT_EQ(Do("rotate", {"--finish", "--abort"}).status, ExitStatus::Wrong);
}

// The process that a killed program had beside it dies with it, but a moment later: it may be in the middle of a system
// call, and has the lock of the snapshots until then.
void AwaitOrphans() {
  while (::waitpid(-1, nullptr, 0) > 0) {
  }
}

// The file alone says how far a rotation has come, and it is written in one step.
TEST_F(RotateCommand, CanBeKilledAtAnyMoment) {
  const std::vector<std::string> words = {DEVHOST_PROGRAM, "rotate",    "--module-dir",
                                          MODULE_FOLDER,   "--project", project,
                                          "kitchen",       "--read",    File("new", "newCommunity\n"),
                                          "--yes"};
  ASSERT_EQ(::prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
  const auto begin = std::chrono::steady_clock::now();
  e2e::Background whole(words, {}, folder.Path("output"));
  ASSERT_TRUE(e2e::Eventually([&whole] { return whole.Ended(); }));
  const auto duration = std::chrono::steady_clock::now() - begin;
  EXPECT_EQ(OldCommunities(Conf()).read, "hidden");
  for (int part = 0; part <= 10; ++part) {
    Do("rotate", {"--abort", "--yes"});
    EXPECT_EQ(Conf().find("newCommunity"), std::string::npos);
    e2e::Background program(words, {}, folder.Path("output"));
    std::this_thread::sleep_for(duration * part / 10);
    program.Kill();
    AwaitOrphans();
    const bool isOpen = OldCommunities(Conf()).read == "hidden";
    EXPECT_EQ(isOpen, Conf().find("\nrocommunity  newCommunity\n") != std::string::npos);
    EXPECT_NE(Conf().find("\nrocommunity  hidden\n"), std::string::npos);
    EXPECT_EQ(Start().status, ExitStatus::Good);  // starts it, or finds nothing left to do
    EXPECT_EQ(OldCommunities(Conf()).read, "hidden");
  }
  ::prctl(PR_SET_CHILD_SUBREAPER, 0);
}

// What a change says about the daemon at its end.
class AChange : public DeviceFixture {
 protected:
  // The device is now one whose daemon the project knows.
  void SetPort(const std::string& port) const {
    File("project.xml",
         "<project><driver id='1' name='agent' module='snmp_configuration_agent.so'/><driver id='12' name='kitchen' "
         "module='local_snmpd.so'><config folder='{project}/kitchen' port='" +
             port + "'/></driver></project>");
  }
  Outcome Rename(const std::vector<std::string>& more = {}) const {
    const std::string settings =
        File("settings.xml",
             "<managedDevice><snmpCommunityReadSetting>hidden</snmpCommunityReadSetting>"
             "<snmpSysNameSetting>cellar</snmpSysNameSetting><deviceId>12</deviceId></managedDevice>");
    std::vector<std::string> words = {settings, "--yes"};
    words.insert(words.end(), more.begin(), more.end());
    return Do("apply", words);
  }
};

TEST_F(AChange, EndsWithAProbeOfTheDaemon) {
  const SnmpDaemon daemon("rocommunity hidden\nsysName cellar\n");
  SetPort(daemon.Port());
  const Outcome outcome = Rename();
  EXPECT_EQ(outcome.status, ExitStatus::Good) << outcome.errors;
  EXPECT_THAT(outcome.out, EndsWith("has what was there before\nkitchen at " + daemon.Address() + " is as configured\n"));
}

TEST_F(AChange, FailsWhenTheDaemonServesSomethingElse) {
  const SnmpDaemon daemon("rocommunity hidden\nsysName attic\n");
  SetPort(daemon.Port());
  const Outcome outcome = Rename({"--json"});
  EXPECT_EQ(outcome.status, ExitStatus::Failed);
  EXPECT_THAT(outcome.out,
              AllOf(HasSubstr("\"verdict\":\"changed\""), HasSubstr("\"probe\":{\"address\":\"" + daemon.Address()),
                    HasSubstr("\"configured\":\"cellar\",\"served\":\"attic\"")));
}

TEST_F(AChange, IsNotProbedWhereNobodyAnswersOrNobodyShallAsk) {
  const SnmpDaemon daemon("rocommunity hidden\nsysName attic\n");
  SetPort(daemon.Port());
  const Outcome unasked = Rename({"--no-probe"});
  EXPECT_EQ(unasked.status, ExitStatus::Good);
  EXPECT_THAT(unasked.out, EndsWith("has what was there before\n"));
  SetPort(e2e::FreePort());
  EXPECT_EQ(Do("undo", {"--yes"}).status, ExitStatus::Good);
  EXPECT_THAT(Rename().out, HasSubstr("not probed: the daemon at 127.0.0.1:"));
}

}  // namespace
}  // namespace devhost
