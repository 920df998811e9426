// A change that waits for its controller, as somebody sees it who looks at the device with "devhost": the built module, the
// distribution's SSH server behind a line that fails, and a real daemon there.

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "tests/drivers/support/ServerWithDaemon.h"
#include "tests/drivers/support/TcpProxy.h"
#include "tests/module/Shell.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;

const char kWaits[] =
    "a change of kitchen waits, which was made while it could not be reached: the next change or start of its daemon brings "
    "it to the device, unless somebody has changed the file there meanwhile\n";

class AChangeThatWaits : public testing::Test {
 protected:
  AChangeThatWaits() : m_proxy(m_controller.server.Port()) {
    const SshServer& server = m_controller.server;
    server.Files().Write("snmpd.conf", "# by hand\n");
    server.GiveFiles();
    m_folder.Write("project.xml",
                   "<project><driver id='1' name='agent' module='snmp_configuration_agent.so'/>"
                   "<driver id='12' name='kitchen' module='ssh_snmpd.so'><config host='127.0.0.1' port='" +
                       std::to_string(m_proxy.Port()) + "' user='controller' key=\"" + server.Key() + "\" knownHosts=\"" +
                       server.KnownHosts(m_proxy.Port()) + "\" file=\"" + server.Files().Path("snmpd.conf") +
                       "\" start='control start' restart='control restart'/></driver></project>");
    m_folder.Write("fleet.xml", "<fleet settings='settings.xml'><project file='project.xml' state='states'/></fleet>");
    Name("kitchen");
    EXPECT_EQ(0, Do("apply", "settings.xml --yes --no-probe").status);
    m_folder.Write("start.devhost", "command StartMasterAgent deviceId=12\n");
    EXPECT_EQ(0, Start().status);
    m_proxy.Refuse(true);
    Name("attic");
    EXPECT_THAT(Do("apply", "settings.xml --yes").output, HasSubstr("kitchen gets the change when it is back"));
    m_before = Seen();
  }

  void Name(const std::string& name) const {
    m_folder.Write("settings.xml",
                   "<managedDevice><snmpCommunityReadSetting>hidden</snmpCommunityReadSetting>"
                   "<snmpSysNameSetting>" +
                       name + "</snmpSysNameSetting><deviceId>12</deviceId></managedDevice>");
  }
  ShellResult Run(const std::string& line) const {
    return RunInShell("cd '" + m_folder.Path() + "' && '" DEVHOST_PROGRAM "' " + line);
  }
  ShellResult Do(const std::string& command, const std::string& more = "") const {
    return Run(command + " --project project.xml --state states kitchen " + more);
  }
  ShellResult Start() const { return Run("run --project project.xml --state states start.devhost"); }
  std::string File() const { return m_controller.server.Files().Read("snmpd.conf"); }

  // All that a look could change.
  struct State {
    std::string file;
    std::string daemon;
    std::string calls;
    std::string kept;
    bool operator==(const State& other) const {
      return file == other.file && daemon == other.daemon && calls == other.calls && kept == other.kept;
    }
  };
  State Seen() const {
    const TemporaryFolder& files = m_controller.server.Files();
    return {files.Read("snmpd.conf"), files.Read("pid"), files.Read("calls"), m_folder.Read("states/driver-12.xml")};
  }

  ServerWithDaemon m_controller;
  TcpProxy m_proxy;
  TemporaryFolder m_folder;
  State m_before;
};

TEST_F(AChangeThatWaits, IsNamedAndLeftAloneWhileTheControllerCannotBeReached) {
  const ShellResult drift = Do("drift");
  EXPECT_EQ(drift.status, 2);
  EXPECT_THAT(drift.output, AllOf(HasSubstr(kWaits), HasSubstr("kitchen cannot be reached now\n")));
  EXPECT_EQ(Seen(), m_before);
}

TEST_F(AChangeThatWaits, IsNamedAndNotMadeByWhoOnlyLooks) {
  m_proxy.Refuse(false);
  for (const char* const command : {"drift", "drift", "probe --no-traps", "history --from 1"}) {
    EXPECT_THAT(Do(command).output, HasSubstr(kWaits)) << command;
    EXPECT_EQ(Seen(), m_before) << command;
  }
  const ShellResult drift = Do("drift");
  EXPECT_EQ(drift.status, 1);
  EXPECT_THAT(drift.output, HasSubstr("\n-sysName  kitchen\n+sysName  attic\n"));
  for (const char* const command : {"preview", "apply --dry-run", "apply --yes --json --accept nothing"}) {
    m_folder.Write("refused.xml",
                   "<managedDevice><snmpSysNameSetting># no</snmpSysNameSetting><deviceId>12</deviceId>"
                   "</managedDevice>");
    EXPECT_THAT(Do(command, "refused.xml").output, HasSubstr("a change of kitchen waits")) << command;
    EXPECT_EQ(Seen(), m_before) << command;
  }
  EXPECT_EQ(Run("fleet drift fleet.xml").status, 1);
  EXPECT_EQ(Run("fleet preview fleet.xml").status, 1);
  EXPECT_EQ(Seen(), m_before);
}

TEST_F(AChangeThatWaits, IsMadeOnceByTheNextApply) {
  m_proxy.Refuse(false);
  const ShellResult dry = Do("apply", "settings.xml --dry-run");
  EXPECT_EQ(dry.status, 1);
  EXPECT_THAT(dry.output, HasSubstr(kWaits));
  const ShellResult made = Do("apply", "settings.xml --yes --no-probe");
  EXPECT_EQ(made.status, 0);
  EXPECT_THAT(made.output, HasSubstr("kitchen is changed; snapshot 3 has what was there before\n"));
  EXPECT_THAT(File(), HasSubstr("\nsysName  attic\n"));
  EXPECT_EQ(Seen().calls, m_before.calls + "restart\n");
  EXPECT_NE(Seen().daemon, m_before.daemon);
  EXPECT_EQ(Do("apply", "settings.xml --yes").output, "nothing to change on kitchen\n");
  EXPECT_EQ(Do("drift").status, 0);
  EXPECT_EQ(Seen().calls, m_before.calls + "restart\n");
}

TEST_F(AChangeThatWaits, IsMadeOnceByTheNextStart) {
  m_proxy.Refuse(false);
  EXPECT_EQ(Do("drift").status, 1);
  const ShellResult start = Start();
  EXPECT_EQ(start.status, 0) << start.output;
  EXPECT_THAT(File(), HasSubstr("\nsysName  attic\n"));
  EXPECT_EQ(Seen().calls, m_before.calls + "restart\nstart\n");
  EXPECT_EQ(Do("drift").output, "no drift on kitchen since the change of snapshot 2\n");
}

// Whoever has changed it gets told, and the settings can be sent again.
TEST_F(AChangeThatWaits, IsNotMadeOverWhatSomebodyHasChanged) {
  m_proxy.Refuse(false);
  m_controller.server.Files().Write("snmpd.conf", File() + "# again\n");
  EXPECT_EQ(Do("drift").status, 1);
  EXPECT_EQ(Start().status, 0);
  EXPECT_THAT(File(), AllOf(HasSubstr("\nsysName  kitchen\n"), HasSubstr("# again\n")));
  EXPECT_EQ(Do("apply", "settings.xml --yes --no-probe").status, 0);
  EXPECT_THAT(File(), AllOf(HasSubstr("\nsysName  attic\n"), HasSubstr("# again\n")));
}

}  // namespace
