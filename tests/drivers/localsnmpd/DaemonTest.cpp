// The daemon of a device: the real one where its behaviour is the point, scripts where a failure is.

#include "drivers/localsnmpd/Daemon.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "drivers/localsnmpd/DaemonStatus.h"
#include "drivers/localsnmpd/PortReservation.h"
#include "drivers/localsnmpd/UdpPort.h"
#include "tests/drivers/support/Child.h"
#include "tests/drivers/support/Processes.h"
#include "tests/drivers/support/SnmpResponder.h"
#include "tests/drivers/support/TemporaryFolder.h"

namespace {

using drivers::Daemon;
using Lines = std::vector<std::string>;

const char kPublic[] = "rocommunity public\nsysName kitchen\n";

class ADaemon : public testing::Test {
 protected:
  ~ADaemon() override {
    m_daemon.reset();
    EXPECT_EQ(0U, CountChildren());
  }

  // A daemon in `folder`, a name in the test's own; `program` "" is the real one.
  Daemon& Make(const std::string& program = std::string(), int deadlineSeconds = 30) {
    m_options = {m_folder.Path("kitchen"), program, m_port.GetPort(), std::chrono::seconds(deadlineSeconds)};
    m_options.gentleStop = m_gentleStop;
    std::filesystem::create_directory(m_options.folder);
    m_daemon = std::make_unique<Daemon>(m_options, [this](const std::string& line) { m_log.push_back(line); });
    return *m_daemon;
  }

  // A program of the test's own.
  std::string Script(const std::string& text) {
    m_folder.Write("program", "#!/bin/sh\n" + text + "\n");
    EXPECT_EQ(0, ::chmod(m_folder.Path("program").c_str(), 0755));
    return m_folder.Path("program");
  }

  std::string Get(const std::string& oid = kSysName, const std::string& community = "public") {
    return SnmpGet(m_daemon->GetAddress(), community, oid);
  }

  bool HasLogged(const std::string& text) const {
    return std::any_of(m_log.begin(), m_log.end(),
                       [&](const std::string& line) { return line.find(text) != std::string::npos; });
  }

  TemporaryFolder m_folder;
  drivers::PortReservation m_port;
  Lines m_log;
  Daemon::Options m_options;
  std::chrono::milliseconds m_gentleStop{60000};  // the machine may be busy
  std::unique_ptr<Daemon> m_daemon;
};

TEST_F(ADaemon, AnswersWhenItsStartIsDoneAndNoMoreWhenItIsStopped) {
  Make();
  EXPECT_FALSE(m_daemon->IsRunning());
  EXPECT_EQ(0, m_daemon->GetPid());
  EXPECT_EQ(0, m_daemon->Start(kPublic));
  EXPECT_EQ("kitchen", Get());
  const pid_t pid = m_daemon->GetPid();
  EXPECT_TRUE(IsAlive(pid));
  EXPECT_EQ(0, m_daemon->Stop());
  EXPECT_EQ(-1, ::kill(pid, 0));
  EXPECT_TRUE(drivers::IsUdpPortFree(m_port.GetPort()));
  EXPECT_EQ(0, m_daemon->GetPid());
  EXPECT_EQ(Lines(), m_log);
}

TEST_F(ADaemon, IsStartedAndStoppedOnceHoweverOftenThatIsAsked) {
  Make();
  EXPECT_EQ(0, m_daemon->Stop());
  EXPECT_EQ(0, m_daemon->Start(kPublic));
  const pid_t pid = m_daemon->GetPid();
  EXPECT_EQ(0, m_daemon->Start(""));
  EXPECT_EQ(pid, m_daemon->GetPid());
  EXPECT_EQ("kitchen", Get());
  EXPECT_EQ(0, m_daemon->Stop());
  EXPECT_EQ(0, m_daemon->Stop());
}

TEST_F(ADaemon, SharesItsFolderWithNoOther) {
  ASSERT_EQ(0, Make().Start(kPublic));
  Lines log;
  const drivers::PortReservation port;
  Daemon::Options options = m_options;
  options.port = port.GetPort();
  Daemon other(options, [&log](const std::string& line) { log.push_back(line); });
  EXPECT_EQ(drivers::kDaemonFolderUnusable, other.Start(kPublic));
  ASSERT_EQ(1U, log.size());
  EXPECT_NE(std::string::npos, log[0].find("/daemon is in use by another device; give each device a folder of its own"));
  EXPECT_EQ("kitchen", Get());
  EXPECT_EQ(0, m_daemon->Restart(kPublic));

  m_daemon.reset();
  EXPECT_EQ(0, other.Start(kPublic));
  EXPECT_EQ(0, other.Stop());
}

TEST_F(ADaemon, ServesAnotherConfigurationAfterARestart) {
  Make();
  EXPECT_EQ(0, m_daemon->Start(kPublic));
  const pid_t pid = m_daemon->GetPid();
  EXPECT_EQ(0, m_daemon->Restart("rocommunity other\nsysName cellar\n"));
  EXPECT_NE(pid, m_daemon->GetPid());
  EXPECT_EQ("cellar", Get(kSysName, "other"));
  EXPECT_FALSE(AnswersSnmp(m_daemon->GetAddress(), "public"));
}

TEST_F(ADaemon, GoesBackToItsDefaultForWhatIsRemovedAndKeepsItsEngineAndWhatWasSet) {
  Make();
  EXPECT_EQ(0, m_daemon->Start("rwcommunity public\n"));
  const std::string byDefault = Get(kSysContact);
  const std::string engine = Get(kEngineId);
  EXPECT_NE("", engine);
  EXPECT_EQ(0, m_daemon->Restart("rwcommunity public\nsysContact Ada\n"));
  EXPECT_EQ("Ada", Get(kSysContact));
  EXPECT_EQ(0, m_daemon->Restart("rwcommunity public\n"));
  EXPECT_EQ(byDefault, Get(kSysContact));
  EXPECT_TRUE(SnmpSet(m_daemon->GetAddress(), "public", kSysContact, "by SNMP"));
  EXPECT_EQ(0, m_daemon->Restart("rwcommunity public\n"));
  EXPECT_EQ("by SNMP", Get(kSysContact));
  EXPECT_EQ(engine, Get(kEngineId));
}

TEST_F(ADaemon, RunsWithoutAConfigurationAndAnswersNobody) {
  Make();
  EXPECT_EQ(0, m_daemon->Start(""));
  EXPECT_TRUE(m_daemon->IsRunning());
  EXPECT_FALSE(AnswersSnmp(m_daemon->GetAddress(), "public"));
}

TEST_F(ADaemon, ThatIsKilledFromOutsideIsNoticedOnceAndStartsAgain) {
  Make();
  EXPECT_EQ(0, m_daemon->Start(kPublic));
  const pid_t pid = m_daemon->GetPid();
  ::kill(pid, SIGKILL);
  EXPECT_TRUE(Eventually([this] { return !m_daemon->IsRunning(); }));
  EXPECT_FALSE(m_daemon->IsRunning());
  EXPECT_EQ((Lines{"the daemon (process " + std::to_string(pid) + ") ended by itself: killed by signal 9 (SIGKILL)"}),
            m_log);
  // What it left, the socket for its subagents, is not in the way.
  EXPECT_TRUE(std::filesystem::exists(m_folder.Path("kitchen/daemon")));
  EXPECT_EQ(0, m_daemon->Start("master agentx\n" + std::string(kPublic)));
  ::kill(m_daemon->GetPid(), SIGKILL);
  EXPECT_TRUE(Eventually([this] { return !m_daemon->IsRunning(); }));
  EXPECT_TRUE(std::filesystem::exists(m_folder.Path("kitchen/daemon/agentx")));
  EXPECT_EQ(0, m_daemon->Start("master agentx\n" + std::string(kPublic)));
  EXPECT_EQ("kitchen", Get());
}

TEST_F(ADaemon, ThatDoesNotStopIsKilled) {
  m_gentleStop = std::chrono::milliseconds(50);
  Make();
  EXPECT_EQ(0, m_daemon->Start(kPublic));
  const pid_t pid = m_daemon->GetPid();
  ::kill(pid, SIGSTOP);
  EXPECT_EQ(0, m_daemon->Stop());
  EXPECT_EQ(-1, ::kill(pid, 0));
  EXPECT_EQ((Lines{"the daemon (process " + std::to_string(pid) + ") does not stop; it is killed"}), m_log);
}

TEST_F(ADaemon, EndsWithItsObject) {
  Make();
  EXPECT_EQ(0, m_daemon->Start(kPublic));
  const pid_t pid = m_daemon->GetPid();
  m_daemon.reset();
  EXPECT_EQ(-1, ::kill(pid, 0));
}

TEST_F(ADaemon, EndsWithAHostThatIsKilled) {
  Make();
  Child host([this] {
    if (m_daemon->Start(kPublic) != 0) {
      return 1;
    }
    m_folder.Write("pid.new", std::to_string(m_daemon->GetPid()));
    std::filesystem::rename(m_folder.Path("pid.new"), m_folder.Path("pid"));
    ::pause();
    return 2;
  });
  ASSERT_TRUE(Eventually([this] { return std::filesystem::exists(m_folder.Path("pid")); }));
  const pid_t pid = std::stoi(m_folder.Read("pid"));
  EXPECT_TRUE(IsAlive(pid));
  EXPECT_EQ("kitchen", Get());
  host.Kill();
  EXPECT_EQ(std::nullopt, host.Result());
  EXPECT_TRUE(Eventually([pid] { return !IsAlive(pid); }));
  EXPECT_EQ(0, m_daemon->Start(kPublic));
  EXPECT_EQ("kitchen", Get());
}

TEST_F(ADaemon, EndsWithAllThatItsScriptHasStartedWhenHostAndKeeperAreKilled) {
  Make(Script("sleep 1000 & echo $! $PPID > pids.new; mv pids.new pids; exec /usr/sbin/snmpd \"$@\""));
  Child host([this] {
    const int status = m_daemon->Start(kPublic);
    ::pause();
    return status;
  });
  ASSERT_TRUE(Eventually([this] { return std::filesystem::exists(m_folder.Path("kitchen/daemon/pids")); }));
  std::istringstream text(m_folder.Read("kitchen/daemon/pids"));
  pid_t started = 0;
  pid_t keeper = 0;
  text >> started >> keeper;
  EXPECT_TRUE(IsAlive(started));
  // It has no time to see the end of the host.
  ::kill(keeper, SIGSTOP);
  host.Kill();
  ::kill(keeper, SIGKILL);
  EXPECT_EQ(std::nullopt, host.Result());
  EXPECT_TRUE(Eventually([started] { return !IsAlive(started); }));
  EXPECT_TRUE(Eventually([this] { return drivers::IsUdpPortFree(m_port.GetPort()); }));
}

TEST_F(ADaemon, OfAScriptThatDoesNotReplaceItselfIsStoppedWithTheScript) {
  // The daemon has its process id written before it is one: it may answer before the script goes on.
  Make(Script("sh -c 'echo $$ > pid; exec /usr/sbin/snmpd \"$@\"' sh \"$@\" & wait"));
  EXPECT_EQ(drivers::kPortTaken, m_daemon->Start(kPublic));
  EXPECT_FALSE(IsAlive(std::stoi(m_folder.Read("kitchen/daemon/pid"))));
  EXPECT_TRUE(drivers::IsUdpPortFree(m_port.GetPort()));
}

TEST_F(ADaemon, OpensNoPortsButItsOwn) {
  Make();
  const drivers::PortReservation other;
  const std::string address = "udp:127.0.0.1:" + std::to_string(other.GetPort());
  m_folder.Write("other.conf", "agentaddress " + address + "\n");
  const std::string config = "AgentAddress " + address + "\n" + kPublic + "[snmpd] agentaddress " + address +
                             "\nincludeFile " + m_folder.Path("other.conf") +
                             "\nmaster agentx\nagentXSocket tcp:127.0.0.1:705\n";
  EXPECT_EQ(0, m_daemon->Start(config));
  EXPECT_TRUE(drivers::IsUdpPortFree(other.GetPort()));
  EXPECT_EQ("kitchen", Get());
  const std::string what = ": this directive would open other ports; the daemon does not get this line";
  EXPECT_EQ((Lines{"snmpd.conf:1" + what, "snmpd.conf:4" + what, m_folder.Path("other.conf") + ":1" + what}), m_log);
  m_log.clear();
  EXPECT_EQ(0, m_daemon->Restart("\n" + config));
  EXPECT_EQ(Lines(), m_log);
}

TEST_F(ADaemon, ReadsTheLinesOfTheOwnersFileFromMemory) {
  Make(Script("cat > copy; exec /usr/sbin/snmpd \"$@\""));
  EXPECT_EQ(0, m_daemon->Start("agentaddress 161\n" + std::string(kPublic)));
  EXPECT_EQ("# agentaddress 161\nrocommunity public\nsysname kitchen\n", m_folder.Read("kitchen/daemon/copy"));
  const std::string input = "/proc/" + std::to_string(m_daemon->GetPid()) + "/fd/0";
  EXPECT_EQ("/memfd:devhost (deleted)", std::filesystem::read_symlink(input).string());
  struct stat attributes = {};
  ASSERT_EQ(0, ::stat(input.c_str(), &attributes));
  EXPECT_EQ(mode_t{0600}, attributes.st_mode & 07777);
  ASSERT_EQ(0, ::stat(m_folder.Path("kitchen/daemon").c_str(), &attributes));
  EXPECT_EQ(mode_t{0700}, attributes.st_mode & 07777);
  EXPECT_FALSE(std::filesystem::exists(m_folder.Path("kitchen/snmpd.conf")));
}

TEST_F(ADaemon, ReadsTheSameFileAgainAfterAHangUp) {
  Make();
  EXPECT_EQ(0, m_daemon->Start(kPublic));
  EXPECT_EQ("kitchen", Get());
  ASSERT_EQ(0, ::kill(m_daemon->GetPid(), SIGHUP));
  EXPECT_EQ("kitchen", Get());
}

TEST_F(ADaemon, LeavesNoTextOfItsConfigurationOnDisk) {
  Make();
  EXPECT_EQ(0, m_daemon->Start("rocommunity hush99\ntrap2sink 127.0.0.1 hush98 65535\nsysName #hush97\n"));
  EXPECT_TRUE(HasLogged("snmpd.conf:3: Error: "));
  const auto ended = m_daemon->GetPid();
  ASSERT_EQ(0, ::kill(ended, SIGKILL));
  ASSERT_TRUE(Eventually([this] { return !m_daemon->IsRunning(); }));
  for (const auto& entry : std::filesystem::recursive_directory_iterator(m_folder.Path())) {
    if (entry.is_regular_file()) {
      const std::string name = std::filesystem::relative(entry.path(), m_folder.Path()).string();
      EXPECT_EQ(std::string::npos, m_folder.Read(name).find("hush")) << name;
    }
  }
}

TEST_F(ADaemon, KeepsItsFilesToItselfWhateverTheHostsEnvironmentSays) {
  std::filesystem::create_directory(m_folder.Path("elsewhere"));
  m_folder.Write("elsewhere/snmpd.conf", "rocommunity other\n");
  ::setenv("SNMPCONFPATH", m_folder.Path("elsewhere").c_str(), 1);
  ::setenv("SNMP_PERSISTENT_DIR", m_folder.Path("elsewhere/data").c_str(), 1);
  Make();
  EXPECT_EQ(0, m_daemon->Start(kPublic));
  ::unsetenv("SNMPCONFPATH");
  ::unsetenv("SNMP_PERSISTENT_DIR");
  EXPECT_EQ("kitchen", Get());
  EXPECT_FALSE(AnswersSnmp(m_daemon->GetAddress(), "other"));
  EXPECT_EQ(0, m_daemon->Stop());
  EXPECT_TRUE(std::filesystem::exists(m_folder.Path("kitchen/daemon/data/snmpd.conf")));
  EXPECT_TRUE(std::filesystem::is_directory(m_folder.Path("kitchen/daemon/data/cert_indexes")));
  EXPECT_FALSE(std::filesystem::exists(m_folder.Path("elsewhere/data")));
}

TEST_F(ADaemon, WorksInAFolderWhosePathIsLongerThanThatOfASocketMayBe) {
  std::string path = "kitchen";
  for (int depth = 0; depth < 12; ++depth) {
    path += "/" + std::string(90, 'd');
  }
  Make();
  std::filesystem::create_directories(m_folder.Path(path));
  m_options.folder = m_folder.Path(path);
  m_daemon = std::make_unique<Daemon>(m_options, [this](const std::string& line) { m_log.push_back(line); });
  EXPECT_EQ(0, m_daemon->Start("master agentx\n" + std::string(kPublic)));
  EXPECT_EQ("kitchen", Get());
  EXPECT_TRUE(std::filesystem::is_socket(m_folder.Path(path) + "/daemon/agentx"));
  EXPECT_EQ(Lines(), m_log);
}

TEST_F(ADaemon, WorksForAnOrdinaryUser) {
  EXPECT_EQ(0, ::chmod(m_folder.Path().c_str(), 0777));
  EXPECT_EQ(0, ResultAsOrdinaryUser([this] {
              Daemon& daemon = Make();
              const int status = daemon.Start("master agentx\nagentXSocket tcp:127.0.0.1:705\n" + std::string(kPublic));
              return status != 0 ? status : Get() != "kitchen" ? 1 : daemon.Stop();
            }));
}

TEST_F(ADaemon, LogsWhichLinesTheDaemonRejectsWithoutTheCommunitiesInThem) {
  Make();
  EXPECT_EQ(0, m_daemon->Start(std::string(kPublic) + "trap2sink 127.0.0.1 hush 65535\nhush all\nsysName # x\n"));
  ASSERT_EQ(2U, m_log.size());
  EXPECT_TRUE(HasLogged("snmpd.conf:4: the driver does not know this directive; the daemon does not get this line"));
  EXPECT_TRUE(HasLogged("snmpd.conf:5: Error: "));
}

TEST_F(ADaemon, ShowsNoPieceOfASecretThatIsLongerThanALineOfTheLog) {
  Make();
  const std::string secret(500, 'h');
  EXPECT_EQ(0, m_daemon->Start(kPublic + secret + " all\n"));
  EXPECT_EQ((Lines{"snmpd.conf:3: the driver does not know this directive; the daemon does not get this line"}), m_log);
}

TEST_F(ADaemon, WhoseProgramIsNotInstalledSaysSoOnce) {
  Make("/no/program");
  EXPECT_EQ(drivers::kDaemonNotInstalled, m_daemon->Start(kPublic));
  EXPECT_EQ(drivers::kDaemonNotInstalled, m_daemon->Start(kPublic));
  EXPECT_EQ((Lines{"the program /no/program cannot be run: install it, or name another one (status -10)"}), m_log);
  EXPECT_TRUE(std::filesystem::is_empty(m_folder.Path("kitchen")));
}

TEST_F(ADaemon, WhoseProgramTheSystemDoesNotStartSaysWhy) {
  m_folder.Write("program", "#!/no/interpreter\n");
  EXPECT_EQ(0, ::chmod(m_folder.Path("program").c_str(), 0755));
  Make(m_folder.Path("program"));
  EXPECT_EQ(drivers::kDaemonNotStarted, m_daemon->Start(kPublic));
  EXPECT_EQ((Lines{"cannot start " + m_folder.Path("program") + ": No such file or directory (status -11)"}), m_log);
}

TEST_F(ADaemon, ThatEndsAtItsStartSaysHowAndWhatItComplainedOf) {
  Make(Script("echo '/proc/self/fd/0: line 2: Error: illegal oid' >&2; echo 'cannot create sink: hush' >&2; exit 3"), 600);
  EXPECT_EQ(drivers::kDaemonEndedAtStart, m_daemon->Start(kPublic));
  EXPECT_EQ((Lines{"the daemon ended while it started: exit status 3 (status -12)", "snmpd.conf:2: Error: illegal oid",
                   "snmpd: cannot create sink: *****"}),
            m_log);
  EXPECT_FALSE(m_daemon->IsRunning());
}

TEST_F(ADaemon, ThatNeverAnswersIsStoppedAtItsDeadline) {
  // Long enough for the script's first step, also on a busy machine.
  Make(Script("echo $$ > pid; exec sleep 1000"), 5);
  EXPECT_EQ(drivers::kDaemonNotReady, m_daemon->Start(kPublic));
  EXPECT_EQ((Lines{"the daemon did not answer at " + m_daemon->GetAddress() + " within 5 s and was stopped (status -13)"}),
            m_log);
  EXPECT_FALSE(m_daemon->IsRunning());
  EXPECT_FALSE(IsAlive(std::stoi(m_folder.Read("kitchen/daemon/pid"))));
}

TEST_F(ADaemon, WhosePortSomebodyHasIsNotStarted) {
  Make(Script("touch started"));
  const SnmpResponder other(m_port.GetPort(), SnmpResponder::Report());
  EXPECT_EQ(drivers::kPortTaken, m_daemon->Start(kPublic));
  EXPECT_EQ((Lines{"cannot start the daemon: another program has " + m_daemon->GetAddress() + " (status -14)"}), m_log);
  EXPECT_FALSE(std::filesystem::exists(m_folder.Path("kitchen/daemon/started")));
}

TEST_F(ADaemon, IsNotMistakenForAnotherEngineThatTookItsPort) {
  Make(Script("touch started; exec sleep 1000"));
  const SnmpResponder other(m_port.GetPort(), SnmpResponder::Report(), m_folder.Path("kitchen/daemon/started"));
  EXPECT_EQ(drivers::kPortTaken, m_daemon->Start(kPublic));
  EXPECT_FALSE(m_daemon->IsRunning());
  EXPECT_TRUE(HasLogged("another program answers at"));
}

TEST_F(ADaemon, WhoseFilesCannotBeMadeSaysWhyAndGoesOnAsItIs) {
  Make();
  EXPECT_EQ(0, m_daemon->Start(kPublic));
  const pid_t pid = m_daemon->GetPid();
  std::filesystem::remove(m_folder.Path("kitchen/daemon/driver.conf"));
  std::filesystem::create_directories(m_folder.Path("kitchen/daemon/driver.conf/in the way"));
  EXPECT_EQ(drivers::kDaemonFolderUnusable, m_daemon->Restart("rocommunity other\n"));
  EXPECT_TRUE(HasLogged("cannot write " + m_folder.Path("kitchen/daemon/driver.conf") + ": Is a directory (status -15)"));
  EXPECT_EQ(pid, m_daemon->GetPid());
  EXPECT_EQ("kitchen", Get());
}

TEST_F(ADaemon, WithoutMemoryForItsFileSaysWhyAndIsNotStarted) {
  Child host([this] {
    Make();
    const rlimit limit = {1000, 1000};
    ::signal(SIGXFSZ, SIG_IGN);
    ::setrlimit(RLIMIT_FSIZE, &limit);
    const int status = m_daemon->Start(kPublic + std::string("# ") + std::string(2000, 'x') + "\n");
    return HasLogged("cannot make a file in memory: File too large (status -16)") && !m_daemon->IsRunning() ? status : 1;
  });
  EXPECT_EQ(drivers::kServedCopyNotWritten, host.Result());
}

TEST_F(ADaemon, WithoutAFolderOfItsOwnSaysWhy) {
  Make();
  m_folder.Write("kitchen/daemon", "");
  EXPECT_EQ(drivers::kDaemonFolderUnusable, m_daemon->Start(kPublic));
  EXPECT_TRUE(HasLogged("cannot make " + m_folder.Path("kitchen/daemon") + ": Not a directory (status -15)"));
  std::filesystem::remove(m_folder.Path("kitchen/daemon"));
  std::filesystem::create_directory(m_folder.Path("elsewhere"));
  std::filesystem::create_directory_symlink("../elsewhere", m_folder.Path("kitchen/daemon"));
  EXPECT_EQ(drivers::kDaemonFolderUnusable, m_daemon->Start(kPublic));
  EXPECT_TRUE(std::filesystem::is_empty(m_folder.Path("elsewhere")));
  std::filesystem::remove_all(m_folder.Path("kitchen"));
  EXPECT_EQ(drivers::kDaemonFolderUnusable, m_daemon->Start(kPublic));
  EXPECT_FALSE(std::filesystem::exists(m_folder.Path("kitchen")));
}

TEST_F(ADaemon, InAFolderThatAnotherUserOwnsOrThatIsReadOnlySaysWhy) {
  Make();
  EXPECT_EQ(drivers::kDaemonFolderUnusable, [this] {
    EXPECT_EQ(0, ::chmod(m_folder.Path("kitchen").c_str(), 0555));
    return ResultAsOrdinaryUser([this] { return m_daemon->Start(kPublic); });
  }());
  EXPECT_TRUE(std::filesystem::is_empty(m_folder.Path("kitchen")));
  EXPECT_EQ(0, ::chmod(m_folder.Path("kitchen").c_str(), 0777));
  if (::geteuid() != 0) {
    GTEST_SKIP() << "only root can make folders of another user";
  }
  std::filesystem::create_directory(m_folder.Path("kitchen/daemon"));
  EXPECT_EQ(0, ::chown(m_folder.Path("kitchen/daemon").c_str(), 65534, 65534));
  EXPECT_EQ(drivers::kDaemonFolderUnusable, m_daemon->Start(kPublic));
  EXPECT_TRUE(HasLogged("kitchen/daemon belongs to another user; remove it, it is made anew (status -15)"));
}

TEST_F(ADaemon, FollowsNoLinksThatStandInPlaceOfItsFiles) {
  Make();
  m_folder.Write("precious", "kept");
  std::filesystem::create_directory(m_folder.Path("kitchen/daemon"));
  for (const char* const name : {"daemon/log", "daemon/driver.conf"}) {
    std::filesystem::create_symlink(m_folder.Path("precious"), m_folder.Path("kitchen/" + std::string(name)));
  }
  EXPECT_EQ(0, m_daemon->Start(kPublic));
  EXPECT_EQ("kept", m_folder.Read("precious"));
}

}  // namespace
