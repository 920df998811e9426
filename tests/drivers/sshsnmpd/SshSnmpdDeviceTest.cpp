// A device behind the distribution's SSH server, with a real daemon there, in a host that is a fake.

#include "drivers/sshsnmpd/SshSnmpdDevice.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <memory>
#include <string>
#include <vector>

#include "drivers/common/FileStatus.h"
#include "drivers/sshsnmpd/SshStatus.h"
#include "tests/drivers/support/FakeHost.h"
#include "tests/drivers/support/Processes.h"
#include "tests/drivers/support/SshServer.h"
#include "tests/drivers/support/TcpProxy.h"

namespace {

using Lines = std::vector<std::string>;
using State = h7::auto_com<H7XML::INode>;

const char kPath[] = "/etc/snmp/snmpd.conf.local";

// An attribute's value.
std::string Escaped(const std::string& text) {
  std::string escaped;
  for (const char character : text) {
    escaped += character == '\''  ? "&apos;"
               : character == '&' ? "&amp;"
               : character == '<' ? "&lt;"
                                  : std::string(1, character);
  }
  return escaped;
}

// A server whose account has the commands that a controller has, as a script named "control", and a daemon behind them.
struct ServerWithDaemon {
  ServerWithDaemon() : server(WithPrograms()) {
    programs.Write("control", "#!/bin/sh\ncd '" + Folder() + "' || exit 1\n" + kControl);
    EXPECT_EQ(0, ::chmod(programs.Path("control").c_str(), 0755));
  }

  SshServer::Options WithPrograms() const {
    SshServer::Options options;
    options.path = programs.Path() + ":";
    return options;
  }
  std::string Folder() const {
    std::string quoted;
    for (const char character : server.Files().Path()) {
      quoted += character == '\'' ? std::string("'\\''") : std::string(1, character);
    }
    return quoted;
  }

  static constexpr char kControl[] =
      "echo \"$1\" >>calls\n"
      "stop() { [ ! -e pid ] || { kill \"$(cat pid)\"; while [ -e pid ]; do sleep 0.01; done; }; }\n"
      "start() {\n"
      "  [ -e pid ] || SNMP_PERSISTENT_DIR=p SNMPCONFPATH=p snmpd -LF w snmpd.log -C -c snmpd.conf -m '' -M '' -I -smux -r "
      "\\\n"
      "    -p \"$PWD/pid\" \"udp:127.0.0.1:$(cat port)\"\n"
      "}\n"
      "case $1 in\n"
      "start) start ;;\n"
      "stop) stop ;;\n"
      "restart) [ ! -e pid ] || { stop; start; } ;;\n"
      "reboot)\n"
      "  session=$PPID\n"
      "  [ \"$(cat \"/proc/$session/comm\")\" = sshd ] || session=$(cut -d ' ' -f 4 \"/proc/$session/stat\")\n"
      "  kill -9 \"$session\" ;;\n"
      "esac\n";

  TemporaryFolder programs;
  SshServer server;
};

class ADeviceBehindSsh : public testing::Test {
 protected:
  ADeviceBehindSsh() : m_proxy(m_controller.server.Port()) {
    Write("rwcommunity public\nsysName kitchen\n");
    m_controller.server.Files().Write("port", std::to_string(m_proxy.Port()));
    m_controller.server.GiveFiles();
    Begin();
  }
  ~ADeviceBehindSsh() override { m_driver.reset(); }

  // A new life of the driver.
  int Begin(const State& state = State(), const std::string& more = kCommands) {
    m_driver.reset();
    m_host.log.clear();
    m_driver = std::make_unique<drivers::SshSnmpdDevice>(m_host.Instances());
    IDriver& driver = *m_driver;
    const SshServer& server = m_controller.server;
    const int result = driver.Initialize(
        12,
        *ToNode("<config host='127.0.0.1' port='" + std::to_string(m_proxy.Port()) + "' user='controller' key='" +
                Escaped(server.Key()) + "' knownHosts='" + Escaped(server.KnownHosts(m_proxy.Port())) + "' file='" +
                Escaped(server.Files().Path("snmpd.conf")) + "' " + more + "/>"),
        state.Get());
    driver.RegisterCommands();
    return result;
  }
  State Keep() { return static_cast<IDriver&>(*m_driver).GetPersistState(0); }
  ISupportSNMP& Device() { return *static_cast<ISupportSNMP*>(m_host.Instances().Query(ISupportSNMP_IID)); }

  void Write(const std::string& text) const {
    m_controller.server.Files().Write("snmpd.conf", text);
    m_controller.server.GiveFiles();
  }
  std::string File() const { return m_controller.server.Files().Read("snmpd.conf"); }
  std::string Calls() const { return m_controller.server.Files().Read("calls"); }
  std::string CopyOut() {
    std::string text = "nothing came";
    m_status = Device().CopyFrom(kPath, text);
    return text;
  }
  int CopyIn(const std::string& text) { return Device().CopyTo(kPath, text); }
  std::string Name() const { return SnmpGet("udp:127.0.0.1:" + std::to_string(m_proxy.Port()), "public", kSysName); }
  std::string Controller() { return m_host.Command("GetController"); }
  std::string Shown(const std::string& online, const std::string& pending) const {
    return "<controller address=" + Address() + " online=" + online + " pending=" + pending + ">";
  }
  std::string Address() const { return "127.0.0.1:" + std::to_string(m_proxy.Port()); }
  std::string Line(const std::string& text) const { return "3: SNMP device 12: " + text; }
  std::string FilePath() const { return m_controller.server.Files().Path("snmpd.conf"); }

  static constexpr char kCommands[] =
      "start='control start' stop='control stop' restart='control restart' reboot='control reboot'";

  ServerWithDaemon m_controller;
  TcpProxy m_proxy;
  FakeHost m_host;
  std::unique_ptr<drivers::SshSnmpdDevice> m_driver;
  int m_status = 0;
};

TEST_F(ADeviceBehindSsh, HasADaemonThatServesWhatIsCopiedIn) {
  EXPECT_EQ("rwcommunity public\nsysName kitchen\n", CopyOut());
  EXPECT_EQ(0, m_status);
  EXPECT_EQ(0, Device().StartMasterAgent());
  EXPECT_TRUE(Eventually([this] { return Name() == "kitchen"; }));
  EXPECT_EQ(0, CopyIn("rwcommunity public\nsysName cellar\n"));
  EXPECT_EQ("rwcommunity public\nsysName cellar\n", File());
  EXPECT_TRUE(Eventually([this] { return Name() == "cellar"; }));
  EXPECT_EQ(0, Device().StopMasterAgent());
  EXPECT_EQ("", Name());
  EXPECT_EQ("start\nrestart\nstop\n", Calls());
  EXPECT_EQ(1U, m_proxy.Connections());
  EXPECT_EQ(Lines(), m_host.log);
}

TEST_F(ADeviceBehindSsh, TakesAConnectionThatBreaksWhileItRebootsForSuccess) {
  EXPECT_EQ(0, Device().RebootController());
  EXPECT_EQ("reboot\n", Calls());
  EXPECT_EQ("rwcommunity public\nsysName kitchen\n", CopyOut());
}

TEST_F(ADeviceBehindSsh, NeverOverwritesWhatSomebodyChangedSinceItWasCopiedOut) {
  EXPECT_EQ(drivers::kFileWasChanged, CopyIn("too early"));
  CopyOut();
  Write("by hand");
  EXPECT_EQ(drivers::kFileWasChanged, CopyIn("second"));
  EXPECT_EQ("by hand", File());
  const std::string line = Line("cannot replace " + FilePath() + " of " + Address() +
                                ": somebody changed it since it was copied out; read it again (status -4)");
  EXPECT_EQ((Lines{line, line}), m_host.log);
}

TEST_F(ADeviceBehindSsh, KeepsATextWhileItCannotBeReachedAndInstallsItWhenItIsBack) {
  const std::string first = CopyOut();
  m_proxy.Refuse(true);
  EXPECT_EQ(first, CopyOut());
  EXPECT_EQ(-9, m_status);
  EXPECT_EQ(-9, CopyIn("second"));
  Device().SetIsConfigDirty(true);
  EXPECT_EQ("second", CopyOut());
  EXPECT_EQ(-9, m_status);
  EXPECT_EQ(drivers::DescribeSshStatus(-20), "the controller is off line");
  EXPECT_EQ(-20, Device().StartMasterAgent());
  EXPECT_EQ(Shown("false", "true"), Controller());
  m_proxy.Refuse(false);
  EXPECT_EQ("second", CopyOut());
  EXPECT_EQ(0, m_status);
  EXPECT_EQ("second", File());
  EXPECT_FALSE(Device().GetIsConfigDirty());
  EXPECT_EQ("restart\n", Calls());
  EXPECT_EQ(Shown("true", "false"), Controller());
  ASSERT_FALSE(m_host.log.empty());
  EXPECT_EQ(0U, m_host.log.front().find(Line("the controller " + Address() + " cannot be reached: "))) << m_host.log.front();
  m_host.log.erase(m_host.log.begin());
  EXPECT_EQ((Lines{Line("cannot start the daemon: the controller is off line (status -20)"),
                   Line("the controller " + Address() + " can be reached again"),
                   Line("the text that was accepted off line is in " + FilePath())}),
            m_host.log);
}

TEST_F(ADeviceBehindSsh, SaysWhenSomebodyElseChangedTheFileMeanwhile) {
  CopyOut();
  m_proxy.Refuse(true);
  EXPECT_EQ(-9, CopyIn("second"));
  m_proxy.Refuse(false);
  Write("by hand");
  EXPECT_EQ("by hand", CopyOut());
  EXPECT_EQ(0, m_status);
  EXPECT_EQ("by hand", File());
  EXPECT_EQ(Line("the text that was accepted off line is dropped: somebody changed " + FilePath() +
                 " meanwhile; the settings stay, send them again"),
            m_host.log.back());
  EXPECT_EQ(Shown("true", "false"), Controller());
}

TEST_F(ADeviceBehindSsh, FindsATextThatWaitsAgainInItsNextLife) {
  CopyOut();
  m_proxy.Refuse(true);
  EXPECT_EQ(-9, CopyIn("second"));
  const State state = Keep();
  EXPECT_EQ("SshSnmpd", state->GetName());
  EXPECT_EQ(0, Begin(state));
  EXPECT_EQ("second", CopyOut());
  EXPECT_EQ(-9, m_status);
  m_proxy.Refuse(false);
  EXPECT_EQ("<Success>", m_host.Command("Connect"));
  EXPECT_EQ("second", File());
}

TEST_F(ADeviceBehindSsh, KnowsNoTextOfAControllerThatItNeverReached) {
  m_proxy.Refuse(true);
  CopyOut();
  EXPECT_EQ(-21, m_status);
  EXPECT_EQ(drivers::kFileWasChanged, CopyIn("text"));
  EXPECT_EQ("<Fail>the controller is off line", m_host.Command("Connect"));
}

TEST_F(ADeviceBehindSsh, SaysWhichCommandIsMissingOrFailed) {
  EXPECT_EQ(0, Begin(State(), "start='false'"));
  EXPECT_EQ(drivers::kCommandFailed, Device().StartMasterAgent());
  EXPECT_EQ(drivers::kNoCommand, Device().StopMasterAgent());
  EXPECT_EQ(drivers::kNoCommand, Device().RebootController());
  CopyOut();
  EXPECT_EQ(0, CopyIn("without a restart"));
  EXPECT_EQ((Lines{Line("cannot start the daemon: the command failed on the controller (status -35)"),
                   Line("cannot stop the daemon: the project gives no command for this (status -34)"),
                   Line("cannot reboot the controller: the project gives no command for this (status -34)")}),
            m_host.log);
}

TEST_F(ADeviceBehindSsh, AnswersWithTheRestartsStatusWhenTheNewFileIsInPlace) {
  EXPECT_EQ(0, Begin(State(), "restart='false'"));
  CopyOut();
  EXPECT_EQ(drivers::kCommandFailed, CopyIn("new"));
  EXPECT_EQ("new", File());
}

TEST_F(ADeviceBehindSsh, ShowsItsHostKeyAndTrustsItOnlyByItsFingerprint) {
  const SshServer& server = m_controller.server;
  EXPECT_EQ(0, Begin(State(), ""));
  const auto hostKey = [this] { return m_host.Command("GetHostKey"); };
  EXPECT_NE(std::string::npos, hostKey().find("state=known")) << hostKey();
  m_driver.reset();
  m_driver = std::make_unique<drivers::SshSnmpdDevice>(m_host.Instances());
  IDriver& driver = *m_driver;
  const std::string known = server.Files().Path("known");
  EXPECT_EQ(0, driver.Initialize(12,
                                 *ToNode("<config host='127.0.0.1' port='" + std::to_string(m_proxy.Port()) +
                                         "' user='controller' key='" + Escaped(server.Key()) + "' knownHosts='" +
                                         Escaped(known) + "' file='" + Escaped(FilePath()) + "'/>"),
                                 nullptr));
  driver.RegisterCommands();
  CopyOut();
  EXPECT_EQ(drivers::kHostKeyUnknown, m_status);
  EXPECT_NE(std::string::npos, hostKey().find("fingerprint=" + server.Fingerprint() + " state=unknown")) << hostKey();
  EXPECT_EQ("<Fail>the parameter fingerprint is missing; needed: fingerprint", m_host.Command("TrustHostKey"));
  EXPECT_EQ("<Fail>" + drivers::DescribeSshStatus(drivers::kHostKeyDiffers),
            m_host.Command("TrustHostKey", {{"fingerprint", "SHA256:other"}}));
  CopyOut();
  EXPECT_EQ(drivers::kHostKeyUnknown, m_status);
  EXPECT_EQ("<Success>", m_host.Command("TrustHostKey", {{"fingerprint", server.Fingerprint()}}));
  CopyOut();
  EXPECT_EQ(0, m_status);
}

TEST_F(ADeviceBehindSsh, WithAnInvalidConfigurationAnswersNothing) {
  EXPECT_EQ(1, Begin(State(), "sudo='perhaps'"));
  EXPECT_EQ((Lines{Line("invalid configuration: sudo is \"perhaps\"; allowed are no, commands and all")}), m_host.log);
  for (const char* const name : {"GetController", "Connect", "GetHostKey", "TrustHostKey"}) {
    EXPECT_EQ("<Fail>the configuration of the device is invalid; see the log", m_host.Command(name));
  }
}

TEST_F(ADeviceBehindSsh, HasNoFileOnThisMachine) {
  EXPECT_EQ("<filePath>", m_host.Command("GetFilePath"));
}

}  // namespace
