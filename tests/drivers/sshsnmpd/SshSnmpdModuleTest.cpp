// The built module in a development host, beside a stand-in for the agent.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <set>
#include <string>

#include "devhost/engine/Host.h"
#include "devhost/state/StateStore.h"
#include "devhost/xml/XmlObserver.h"
#include "tests/drivers/support/SshServer.h"
#include "tests/module/Shell.h"
#include "tests/support/ScratchFolder.h"

namespace {

using devhost::DriverEntry;
using devhost::Occurrence;

class TheModule : public testing::Test, private devhost::HostObserver {
 protected:
  TheModule() {
    m_server.Files().Write("snmpd.conf", "first");
    m_server.GiveFiles();
    Begin();
  }
  ~TheModule() override {
    m_host.reset();
    EXPECT_EQ("", m_manners);
    EXPECT_EQ(0U, devhost::LiveXmlObjects());
  }

  void Begin() {
    m_host.reset();
    m_host = std::make_unique<devhost::Host>(static_cast<devhost::HostObserver&>(*this), &m_states);
    Load(1, "agent", FAKE_AGENT_MODULE, "<config/>");
    Load(12, "kitchen", SSH_SNMPD_MODULE, Config());
  }

  std::string Config() const {
    return "<config host='127.0.0.1' port='" + std::to_string(m_server.Port()) + "' user='controller' key=\"" +
           m_server.Key() + "\" knownHosts=\"" + m_server.KnownHosts(m_server.Port()) + "\" file=\"" +
           m_server.Files().Path("snmpd.conf") + "\"/>";
  }

  std::string CopyFrom() { return m_host->Command(1, "CopyFrom", {{"id", "12"}}); }
  std::string CopyTo(const std::string& text) { return m_host->Command(1, "CopyTo", {{"id", "12"}, {"text", text}}); }

  SshServer m_server;
  devhost::StateMemory m_states;
  std::unique_ptr<devhost::Host> m_host;

 private:
  void Load(unsigned long id, const std::string& name, const std::string& module, const std::string& config) {
    DriverEntry entry;
    entry.id = id;
    entry.name = name;
    entry.module = module;
    entry.configXml = config;
    m_host->Load(entry);
  }

  void OnOccurrence(const Occurrence& occurrence) override {
    if (occurrence.kind == Occurrence::Kind::Manners) {
      m_manners += TextOf(occurrence) + "\n";
    }
  }

  std::string m_manners;
};

TEST_F(TheModule, ReadsAndReplacesTheFileOfAController) {
  EXPECT_EQ("<status value=\"0\">first</status>", CopyFrom());
  EXPECT_EQ("<status value=\"0\"/>", CopyTo("second"));
  EXPECT_EQ("second", m_server.Files().Read("snmpd.conf"));
}

TEST_F(TheModule, KeepsTheContractOfDrivers) {
  const TemporaryFolder folder;
  folder.Write("profile.xml", "<conform>" + Config() +
                                  "<claim name='keeps-state'/><claim name='goes-off-line'/>"
                                  "<claim name='withdraws' out='Withdraw' back='Announce'/></conform>");
  const char* const level = std::getenv("CONFORM_LEVEL");
  const ShellResult result = RunInShell("'" DEVHOST_PROGRAM "' conform --profile '" + folder.Path("profile.xml") +
                                        "' --level " + (level == nullptr ? "basic" : level) + " '" SSH_SNMPD_MODULE "'");
  EXPECT_EQ(0, result.status) << result.output;
}

TEST_F(TheModule, FindsItsStateAgainInTheNextHost) {
  EXPECT_EQ("<status value=\"0\">first</status>", CopyFrom());
  m_server.Stop();
  EXPECT_EQ("<status value=\"-9\"/>", CopyTo("later"));
  Begin();
  EXPECT_EQ("<status value=\"-9\">later</status>", CopyFrom());
  m_server.Start();
  EXPECT_EQ("<status value=\"0\">later</status>", CopyFrom());
  EXPECT_EQ("later", m_server.Files().Read("snmpd.conf"));
}

// The state and the file were recorded with that version: tests/data/scripts/state-1.0.0/record.devhost.
TEST_F(TheModule, InstallsATextThatWaitsSinceVersion100) {
  const auto read = [](const std::string& name) {
    return testsupport::ScratchFolder::ReadFile(SOURCE_FOLDER "/tests/data/scripts/state-1.0.0/ssh/" + name);
  };
  m_host.reset();
  m_server.Files().Write("snmpd.conf", read("snmpd.conf"));
  m_server.GiveFiles();
  m_states.Save(12, read("driver-12.xml"));
  Begin();
  EXPECT_EQ(m_server.Files().Read("snmpd.conf"), read("snmpd.conf"));
  CopyFrom();
  const std::string file = m_server.Files().Read("snmpd.conf");
  EXPECT_NE(std::string::npos, file.find("\nsysName  store, waiting\n")) << file;
  EXPECT_NE(std::string::npos, file.find("\n# Somebody wrote this line on the controller.\n")) << file;
}

// A controller whose restart command is a script, and a project for "devhost apply".
class ARestart : public testing::Test {
 protected:
  ARestart() : m_server(WithPrograms()) {
    std::filesystem::permissions(m_folder.Path(), std::filesystem::perms::all);
    SetRestart("exit 0");
    m_server.Files().Write("snmpd.conf", "# by hand\n");
    m_server.GiveFiles();
    m_folder.Write("project.xml",
                   "<project><driver id='1' name='agent' module='snmp_configuration_agent.so'/><driver id='12' "
                   "name='kitchen' module='ssh_snmpd.so'><config host='127.0.0.1' port='" +
                       std::to_string(m_server.Port()) + "' user='controller' key=\"" + m_server.Key() + "\" knownHosts=\"" +
                       m_server.KnownHosts(m_server.Port()) + "\" file=\"" + m_server.Files().Path("snmpd.conf") +
                       "\" restart='tell-daemon'/></driver></project>");
    m_folder.Write("settings.xml",
                   "<managedDevice><snmpCommunityReadSetting>hidden1</snmpCommunityReadSetting><snmpSysNameSetting>kitchen</"
                   "snmpSysNameSetting><deviceId>12</deviceId></managedDevice>");
  }

  SshServer::Options WithPrograms() const {
    SshServer::Options options;
    options.path = m_folder.Path() + ":";
    return options;
  }
  // `script` is what the command does after it has noted the call.
  void SetRestart(const std::string& script) const {
    m_folder.Write("tell-daemon", "#!/bin/sh\ncd " + m_folder.Path() + " && echo restart >>calls\n" + script + "\n");
    std::filesystem::permissions(m_folder.Path("tell-daemon"), std::filesystem::perms::all);
  }
  std::string Line(const std::string& more) const {
    return "'" DEVHOST_PROGRAM "' apply --project " + m_folder.Path("project.xml") + " kitchen " +
           m_folder.Path("settings.xml") + " --no-probe " + more;
  }
  ShellResult Apply(const std::string& more = "--yes") const { return RunInShell(Line(more)); }
  std::size_t Calls() const {
    return m_folder.Names().count("calls") == 0 ? 0 : m_folder.Read("calls").size() / std::string("restart\n").size();
  }
  bool IsInFile() const { return m_server.Files().Read("snmpd.conf").find("\nsysName  kitchen\n") != std::string::npos; }
  std::set<std::string> Snapshots() const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(m_folder.Path("project.xml.snapshots/driver-12"))) {
      names.insert(entry.path().filename().string());
    }
    return names;
  }
  // After a change whose restart has not been done: it is made up for once, and then nothing is left to do.
  void ExpectMadeUp(std::size_t calls, const std::string& more = "") const;

  const TemporaryFolder m_folder;
  SshServer m_server;
};

void ARestart::ExpectMadeUp(std::size_t calls, const std::string& more) const {
  EXPECT_TRUE(IsInFile());
  const std::string due =
      "the daemon of kitchen may not serve what is in the file: the change of snapshot 1 has not come to "
      "its end; the change is due again\n";
  const ShellResult dry = Apply("--dry-run " + more);
  EXPECT_EQ(1, dry.status);
  EXPECT_EQ(due + "the snmpd.conf of kitchen would be written again\n", dry.output);
  EXPECT_EQ(calls, Calls());
  const ShellResult late = Apply("--yes " + more);
  EXPECT_EQ(0, late.status);
  EXPECT_EQ(due + "kitchen is changed; snapshot 1 has what was there before\n", late.output);
  EXPECT_EQ(calls + 1, Calls());
  const ShellResult again = Apply("--yes " + more);
  EXPECT_EQ(0, again.status);
  EXPECT_EQ("nothing to change on kitchen\n", again.output);
  EXPECT_EQ(calls + 1, Calls());
  EXPECT_EQ((std::set<std::string>{"1", "lock"}), Snapshots());
  EXPECT_EQ("# by hand\n", m_folder.Read("project.xml.snapshots/driver-12/1/before.conf"));
}

TEST_F(ARestart, ThatHasFailedIsReportedUntilAnApplyMakesUpForIt) {
  for (const std::string& more : {std::string(), "--state " + m_folder.Path("states")}) {
    SetRestart("exit 4");
    const std::size_t before = Calls();
    EXPECT_EQ(1, Apply("--yes " + more).status);
    EXPECT_TRUE(IsInFile());
    const ShellResult still = Apply("--yes " + more);
    EXPECT_EQ(1, still.status);
    EXPECT_NE(std::string::npos, still.output.find("cannot restart the daemon: the command failed on the controller"))
        << still.output;
    EXPECT_EQ(before + 2, Calls());
    SetRestart("exit 0");
    ExpectMadeUp(before + 2, more);
    std::filesystem::remove_all(m_folder.Path("project.xml.snapshots"));
    m_server.Files().Write("snmpd.conf", "# by hand\n");
    m_server.GiveFiles();
  }
}

TEST_F(ARestart, OfAnApplyThatWasKilledIsMadeUpForByTheNext) {
  SetRestart("for second in 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15; do [ -e go ] && exit 0; sleep 1; done; exit 1");
  const ShellResult killed = RunInShell(Line("--yes") + " & pid=$!; for tenth in $(seq 1200); do [ -e " +
                                        m_folder.Path("calls") + " ] && break; sleep 0.1; done; kill -9 $pid; wait $pid");
  EXPECT_EQ(128 + 9, killed.status) << killed.output;
  m_folder.Write("go", "");
  ExpectMadeUp(1);
}

TEST_F(ARestart, ThatTheStateSaysIsDueIsMadeUpFor) {
  const std::string state = "--state " + m_folder.Path("states");
  EXPECT_EQ(0, Apply("--yes " + state).status);
  std::string kept = m_folder.Read("states/driver-12.xml");
  const std::string online = "online=\"true\"";
  ASSERT_NE(std::string::npos, kept.find(online)) << kept;
  m_folder.Write("states/driver-12.xml", kept.replace(kept.find(online), online.size(), online + " restartDue=\"true\""));
  SetRestart("exit 4");
  const ShellResult failed = Apply("--yes " + state);
  EXPECT_EQ(1, failed.status);
  EXPECT_EQ(0U,
            failed.output.find("the daemon of kitchen may not serve what is in the file: the driver still has to restart "
                               "it; the change is due again\n"))
      << failed.output;
  EXPECT_NE(std::string::npos, m_folder.Read("states/driver-12.xml").find("restartDue=\"true\""));
  SetRestart("exit 0");
  EXPECT_EQ(0, Apply("--yes " + state).status);
  EXPECT_EQ(3U, Calls());
  EXPECT_EQ(std::string::npos, m_folder.Read("states/driver-12.xml").find("restartDue"));
  EXPECT_EQ("nothing to change on kitchen\n", Apply("--yes " + state).output);
  EXPECT_EQ(3U, Calls());
}

// A change as "devhost apply" makes it.
class AChangeOverSsh : public testing::Test {
 protected:
  AChangeOverSsh() {
    m_server.Files().Write("snmpd.conf", "# by hand\n");
    m_server.GiveFiles();
    m_folder.Write("project.xml",
                   "<project><driver id='1' name='agent' module='snmp_configuration_agent.so'/>"
                   "<driver id='12' name='kitchen' module='ssh_snmpd.so'><config host='127.0.0.1' port='" +
                       std::to_string(m_server.Port()) + "' user='controller' key=\"" + m_server.Key() + "\" knownHosts=\"" +
                       m_server.KnownHosts(m_server.Port()) + "\" file=\"" + m_server.Files().Path("snmpd.conf") +
                       "\" restart='true'/></driver></project>");
    Name("kitchen");
  }

  void Name(const std::string& name) const {
    m_folder.Write("settings.xml",
                   "<managedDevice><snmpEnabledSetting>true</snmpEnabledSetting>"
                   "<snmpCommunityReadSetting>hidden</snmpCommunityReadSetting><snmpSysNameSetting>" +
                       name + "</snmpSysNameSetting><deviceId>12</deviceId></managedDevice>");
  }
  // The logins that the command needs.
  std::size_t LoginsOf(const std::string& command, const std::string& more, int status) const {
    const std::size_t before = m_server.Logins();
    const ShellResult result = RunInShell("cd '" + m_folder.Path() + "' && '" DEVHOST_PROGRAM "' " + command +
                                          " --project project.xml kitchen " + more);
    EXPECT_EQ(status, result.status) << result.output;
    return m_server.Logins() - before;
  }
  std::string File() const { return m_server.Files().Read("snmpd.conf"); }

  SshServer m_server;
  TemporaryFolder m_folder;
};

TEST_F(AChangeOverSsh, NeedsOneLogin) {
  EXPECT_EQ(1U, LoginsOf("apply", "settings.xml --yes", 0));
  EXPECT_NE(std::string::npos, File().find("\nsysName  kitchen\n")) << File();
  Name("attic");
  EXPECT_EQ(1U, LoginsOf("apply", "settings.xml --yes --state states", 0));
  EXPECT_NE(std::string::npos, File().find("\nsysName  attic\n")) << File();
}

TEST_F(AChangeOverSsh, NeedsOneLoginWhereThereIsNothingToChange) {
  LoginsOf("apply", "settings.xml --yes", 0);
  EXPECT_EQ(1U, LoginsOf("apply", "settings.xml --yes", 0));
  EXPECT_EQ(1U, LoginsOf("drift", "", 0));
}

TEST_F(AChangeOverSsh, ThatIsOnlyTriedWritesNeitherToTheControllerNorToTheState) {
  EXPECT_EQ(1U, LoginsOf("apply", "settings.xml --dry-run --state states", 1));
  EXPECT_EQ("# by hand\n", File());
  EXPECT_FALSE(std::filesystem::exists(m_folder.Path("states")));
  EXPECT_FALSE(std::filesystem::exists(m_folder.Path("project.xml.snapshots")));
}

// The process that loads it holds the same code: neither may take the other's.
TEST(TheModulesSymbols, NameNothingOfTheDevelopmentHost) {
  const ShellResult symbols = RunInShell("nm --dynamic --demangle '" SSH_SNMPD_MODULE "'");
  EXPECT_EQ(symbols.status, 0) << symbols.output;
  EXPECT_NE(symbols.output.find(" GetCreationFunc"), std::string::npos) << symbols.output;
  EXPECT_EQ(symbols.output.find("devhost::"), std::string::npos) << symbols.output;
}

}  // namespace
