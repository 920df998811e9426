// A device behind the distribution's SSH server, with a real daemon there, in a host that is a fake.

#include "drivers/sshsnmpd/SshSnmpdDevice.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "drivers/common/FileStatus.h"
#include "drivers/sshsnmpd/SshStatus.h"
#include "tests/drivers/support/FakeHost.h"
#include "tests/drivers/support/Processes.h"
#include "tests/drivers/support/ServerWithDaemon.h"
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

class ADeviceBehindSsh : public testing::Test {
 protected:
  ADeviceBehindSsh() : m_proxy(m_controller.server.Port()) {
    Write(kFirst);
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
  // The state after a life that has accepted a text off line; now the controller can be reached again.
  State AfterATextThatWaits() {
    EXPECT_EQ(kFirst, CopyOut());
    m_proxy.Refuse(true);
    EXPECT_EQ(-9, CopyIn(kSecond));
    m_proxy.Refuse(false);
    return Keep();
  }
  State Keep() { return static_cast<IDriver&>(*m_driver).GetPersistState(0); }
  ISupportSNMP& Device() { return *static_cast<ISupportSNMP*>(m_host.Instances().Query(ISupportSNMP_IID)); }

  void Write(const std::string& text) const {
    m_controller.server.Files().Write("snmpd.conf", text);
    m_controller.server.GiveFiles();
  }
  std::string File() const { return m_controller.server.Files().Read("snmpd.conf"); }
  std::string Calls() const {
    const TemporaryFolder& files = m_controller.server.Files();
    return files.Names().count("calls") == 0 ? "" : files.Read("calls");
  }
  std::string CopyOut() {
    std::string text = "nothing came";
    m_status = Device().CopyFrom(kPath, text);
    return text;
  }
  int CopyIn(const std::string& text) { return Device().CopyTo(kPath, text); }
  std::string SnmpAddress() const { return "udp:127.0.0.1:" + std::to_string(m_controller.port.GetPort()); }
  std::string Name() const { return SnmpGet(SnmpAddress(), "public", kSysName); }
  std::string Controller() { return m_host.Command("GetController"); }
  std::string Shown(const std::string& online, const std::string& pending) const {
    return "<controller address=" + Address() + " online=" + online + " pending=" + pending + " restartDue=false>";
  }
  bool IsRestartDue() { return Controller().find(" restartDue=true>") != std::string::npos; }
  // Whether all commands of the controller fail.
  void Break(bool isBroken) const {
    const std::string mark = m_controller.server.Files().Path("broken");
    isBroken ? m_controller.server.Files().Write("broken", "") : static_cast<void>(std::filesystem::remove(mark));
  }
  std::string Address() const { return "127.0.0.1:" + std::to_string(m_proxy.Port()); }
  std::string Line(const std::string& text) const { return "3: SNMP device 12: " + text; }
  std::string FilePath() const { return m_controller.server.Files().Path("snmpd.conf"); }

  static constexpr char kFirst[] = "rwcommunity public\nsysName kitchen\n";
  static constexpr char kSecond[] = "rwcommunity public\nsysName cellar\n";
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
  EXPECT_FALSE(AnswersSnmp(SnmpAddress(), "public"));
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

// A host that keeps no state is one of somebody who only looks.
TEST_F(ADeviceBehindSsh, InstallsNothingForWhoOnlyLooksUntilHeStartsTheDaemon) {
  EXPECT_EQ(0, Begin(AfterATextThatWaits()));
  for (int look = 0; look < 2; ++look) {
    EXPECT_EQ(kFirst, CopyOut());
    EXPECT_EQ(0, m_status);
  }
  EXPECT_EQ(kFirst, File());
  EXPECT_EQ("", Calls());
  EXPECT_EQ(Shown("false", "true"), Controller());
  EXPECT_EQ((Lines{Line("the text that was accepted off line waits: the next change, or start of the daemon, replaces " +
                        FilePath())}),
            m_host.log);
  EXPECT_EQ(0, Device().StartMasterAgent());
  EXPECT_EQ(kSecond, File());
  EXPECT_EQ("restart\nstart\n", Calls());
  EXPECT_TRUE(Eventually([this] { return Name() == "cellar"; }));
  EXPECT_EQ(Shown("true", "false"), Controller());
}

TEST_F(ADeviceBehindSsh, InstallsATextThatWaitsWhereTheHostKeepsItsState) {
  EXPECT_EQ(0, Begin(AfterATextThatWaits()));
  EXPECT_NE(0, m_host.invalidations);
  Keep();
  EXPECT_EQ(kSecond, CopyOut());
  EXPECT_EQ(kSecond, CopyOut());
  EXPECT_EQ(kSecond, File());
  EXPECT_EQ("restart\n", Calls());
}

TEST_F(ADeviceBehindSsh, PutsANewTextInThePlaceOfTheOneThatWaits) {
  EXPECT_EQ(0, Begin(AfterATextThatWaits()));
  EXPECT_EQ(kFirst, CopyOut());
  EXPECT_EQ(0, CopyIn("third"));
  EXPECT_EQ("third", File());
  EXPECT_EQ("restart\n", Calls());
  EXPECT_EQ(Shown("true", "false"), Controller());
}

TEST_F(ADeviceBehindSsh, NeverOverwritesWhatSomebodyChangedBeforeALook) {
  EXPECT_EQ(0, Begin(AfterATextThatWaits()));
  Write("by hand");
  EXPECT_EQ("by hand", CopyOut());
  EXPECT_EQ(0, m_status);
  EXPECT_EQ(Line("the text that was accepted off line is dropped: somebody changed " + FilePath() +
                 " meanwhile; the settings stay, send them again"),
            m_host.log.back());
  EXPECT_EQ(0, Device().StartMasterAgent());
  EXPECT_EQ("by hand", File());
}

// The answer to the installation was lost, or its host ended.
TEST_F(ADeviceBehindSsh, HasARestartDueWhenTheTextThatWaitsIsInTheFileAlready) {
  EXPECT_EQ(0, Begin(AfterATextThatWaits()));
  Write(kSecond);
  EXPECT_EQ(kSecond, CopyOut());
  EXPECT_EQ("", Calls());
  EXPECT_TRUE(IsRestartDue());
  EXPECT_EQ("<Success>", m_host.Command("Connect"));
  EXPECT_EQ("restart\n", Calls());
}

TEST_F(ADeviceBehindSsh, WhoseFileCannotBeReadSaysSoAlsoWhileATextWaits) {
  EXPECT_EQ(0, Begin(AfterATextThatWaits()));
  std::filesystem::remove(FilePath());
  std::filesystem::create_directory(FilePath());
  CopyOut();
  EXPECT_EQ(drivers::kFileIsNotRegular, m_status);
  EXPECT_EQ(Shown("false", "true"), Controller());
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

TEST_F(ADeviceBehindSsh, HasARestartThatFailedDueUntilTheNextTextMakesUpForIt) {
  CopyOut();
  EXPECT_EQ(0, Device().StartMasterAgent());
  EXPECT_TRUE(Eventually([this] { return Name() == "kitchen"; }));
  Break(true);
  EXPECT_EQ(drivers::kCommandFailed, CopyIn("rwcommunity public\nsysName cellar\n"));
  EXPECT_TRUE(IsRestartDue());
  Break(false);
  EXPECT_EQ("rwcommunity public\nsysName cellar\n", CopyOut());
  EXPECT_TRUE(IsRestartDue()) << "who only looks restarts nothing";
  EXPECT_EQ("start\nrestart\n", Calls());
  EXPECT_EQ("kitchen", Name());
  EXPECT_EQ(0, CopyIn("rwcommunity public\nsysName cellar\n"));
  EXPECT_TRUE(Eventually([this] { return Name() == "cellar"; }));
  EXPECT_FALSE(IsRestartDue());
}

TEST_F(ADeviceBehindSsh, MakesUpForARestartWithTheNextStartAlsoInAnotherLife) {
  CopyOut();
  EXPECT_EQ(0, Device().StartMasterAgent());
  EXPECT_TRUE(Eventually([this] { return Name() == "kitchen"; }));
  Break(true);
  EXPECT_EQ(drivers::kCommandFailed, CopyIn("rwcommunity public\nsysName cellar\n"));
  Device().SetIsConfigDirty(true);
  const State state = Keep();
  EXPECT_EQ(0, Begin(state));
  EXPECT_TRUE(IsRestartDue());
  EXPECT_EQ(drivers::kCommandFailed, Device().StartMasterAgent());
  EXPECT_EQ((Lines{Line("cannot restart the daemon: the command failed on the controller (status -35)")}), m_host.log);
  EXPECT_TRUE(IsRestartDue());
  Break(false);
  EXPECT_EQ(0, Device().StartMasterAgent());
  EXPECT_TRUE(Eventually([this] { return Name() == "cellar"; }));
  EXPECT_FALSE(IsRestartDue());
  EXPECT_EQ("start\nrestart\nrestart\nrestart\nstart\n", Calls());
}

TEST_F(ADeviceBehindSsh, MakesUpForARestartWhoseLineWasCut) {
  EXPECT_EQ(0, Begin(State(), "restart='control restart-slowly'"));
  CopyOut();
  m_controller.programs.Write("control", "#!/bin/sh\ncd '" + m_controller.Folder() +
                                             "' || exit 1\necho \"$1\" >>calls\nwhile [ -e broken ]; do sleep 0.05; done\n");
  Break(true);
  std::thread cutter([this] {
    EXPECT_TRUE(Eventually([this] { return m_controller.server.Files().Names().count("calls") != 0; }));
    m_proxy.Refuse(true);
    Break(false);
  });
  EXPECT_EQ(drivers::kOutcomeUnknown, CopyIn("second"));
  cutter.join();
  m_proxy.Refuse(false);
  EXPECT_TRUE(IsRestartDue());
  EXPECT_EQ("<Success>", m_host.Command("Connect"));
  EXPECT_FALSE(IsRestartDue());
  EXPECT_EQ("restart-slowly\nrestart-slowly\n", Calls());
  EXPECT_EQ("<Success>", m_host.Command("Connect"));
  EXPECT_EQ("restart-slowly\nrestart-slowly\n", Calls());
}

TEST_F(ADeviceBehindSsh, HasTheRestartDueOfATextThatWaitedAndIsInTheFile) {
  CopyOut();
  m_proxy.Refuse(true);
  EXPECT_EQ(-9, CopyIn("second"));
  EXPECT_FALSE(IsRestartDue());
  m_proxy.Refuse(false);
  Break(true);
  Device().SetIsConfigDirty(true);
  EXPECT_EQ("second", CopyOut());
  EXPECT_EQ(0, m_status);
  EXPECT_TRUE(IsRestartDue());
  EXPECT_TRUE(Device().GetIsConfigDirty());
  EXPECT_EQ("<Fail>the command failed on the controller", m_host.Command("Connect"));
  Break(false);
  EXPECT_EQ("<Success>", m_host.Command("Connect"));
  EXPECT_FALSE(IsRestartDue());
  EXPECT_FALSE(Device().GetIsConfigDirty());
}

TEST_F(ADeviceBehindSsh, HasNoRestartDueWithoutACommandForIt) {
  EXPECT_EQ(0, Begin(State(), ""));
  CopyOut();
  EXPECT_EQ(0, CopyIn("second"));
  EXPECT_FALSE(IsRestartDue());
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
