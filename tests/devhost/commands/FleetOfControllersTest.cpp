// Real controllers: the distribution's SSH server, and a real daemon behind each file.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "devhost/system/RunProgram.h"
#include "tests/drivers/support/ServerWithDaemon.h"
#include "tests/e2e/TrapReceiver.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using testing::AllOf;
using testing::HasSubstr;

// Two controllers, lift and pump. The restart command of each notes the call, and then starts its daemon anew, unless a
// file named "broken" lies beside its file.
class ARotationOfControllers : public testing::Test {
 protected:
  static constexpr char kControl[] =
      "echo restart >>calls\n"
      "[ ! -e broken ] || exit 1\n"
      "[ ! -e pid ] || { kill \"$(cat pid)\"; while [ -e pid ]; do sleep 0.01; done; }\n"
      "SNMP_PERSISTENT_DIR=$PWD/p SNMPCONFPATH=$PWD/p snmpd -LF w snmpd.log -C -c snmpd.conf -m '' -M '' -I -smux -r "
      "-p \"$PWD/pid\" && wait_for_pid\n";

  ARotationOfControllers() : server(WithPrograms()) {
    std::filesystem::permissions(programs.Path(), std::filesystem::perms::all);
    programs.Write("folder", server.Files().Path());
    programs.Write("control", "#!/bin/sh\ncd \"$(cat \"${0%/*}/folder\")/$1\" || exit 1\n" +
                                  std::string(ServerWithDaemon::kWaitForPid) + kControl);
    ::chmod(programs.Path("control").c_str(), 0755);
    folder.Write("project.xml", "<project><driver id='1' name='agent' module='snmp_configuration_agent.so'/>" +
                                    Controller(12, "lift") + Controller(13, "pump") + "</project>");
    server.GiveFiles();
    folder.Write("settings.xml",
                 "<managedDevice><snmpCommunityReadSetting>hidden1</snmpCommunityReadSetting>"
                 "<snmpSysContactSetting>Ada</snmpSysContactSetting><deviceId>{deviceId}</deviceId></managedDevice>");
    folder.Write("fleet.xml", "<fleet settings='settings.xml'><project file='project.xml'/></fleet>");
    folder.Write("new", "hidden2\n");
  }

  SshServer::Options WithPrograms() const {
    SshServer::Options options;
    options.path = programs.Path() + ":";
    return options;
  }
  std::string Controller(int id, const std::string& name) const {
    const std::string inside = server.Files().Path(name);
    std::filesystem::create_directory(inside);
    server.Files().Write(name + "/snmpd.conf", "agentaddress 127.0.0.1:" + e2e::FreePort() + "\nagentXSocket unix:agentx\n");
    return "<driver id='" + std::to_string(id) + "' name='" + name +
           "' module='ssh_snmpd.so'><config host='127.0.0.1' port='" + std::to_string(server.Port()) +
           "' user='controller' key=\"" + server.Key() + "\" knownHosts=\"" + server.KnownHosts(server.Port()) +
           "\" file=\"" + inside + "/snmpd.conf\" restart='control " + name + "'/></driver>";
  }

  ProgramResult Fleet(std::vector<std::string> words) const {
    words.insert(words.begin(), {DEVHOST_PROGRAM, "fleet"});
    ProgramRun run;
    run.deadline = std::chrono::minutes(10);  // on a busy machine, too
    run.words = words;
    run.folder = folder.Path();
    return RunProgram(run);
  }
  std::string Conf(const std::string& name) const { return server.Files().Read(name + "/snmpd.conf"); }
  std::size_t Restarts(const std::string& name) const {
    return server.Files().Read(name + "/calls").size() / std::string("restart\n").size();
  }

  const testsupport::ScratchFolder folder;
  const TemporaryFolder programs;
  SshServer server;
};

TEST_F(ARotationOfControllers, IsResumedAfterARestartThatHasFailed) {
  ASSERT_THAT(Fleet({"apply", "fleet.xml", "--yes"}).output, HasSubstr("2 devices: 2 changed\n"));
  ASSERT_EQ(Restarts("pump"), 1U);
  server.Files().Write("pump/broken", "");
  std::vector<std::string> start = {"rotate", "fleet.xml", "--read", "new", "--yes", "--record", "record", "--jobs", "1"};
  const ProgramResult failed = Fleet(start);
  EXPECT_THAT(failed.output, AllOf(HasSubstr("project.xml lift  changed\n"), HasSubstr("project.xml pump  failed "),
                                   HasSubstr("cannot restart the daemon")));
  EXPECT_EQ(failed.exitStatus, 1);
  EXPECT_THAT(Conf("pump"), AllOf(HasSubstr("\nrocommunity  hidden1\n"), HasSubstr("\nrocommunity  hidden2\n")));

  std::filesystem::remove(server.Files().Path("pump/broken"));
  start.emplace_back("--resume");
  const ProgramResult resumed = Fleet(start);
  EXPECT_THAT(resumed.output, HasSubstr("2 devices: 1 changed, 1 done-before\n"));
  EXPECT_EQ(resumed.exitStatus, 0);
  EXPECT_EQ(Restarts("lift"), 2U);
  EXPECT_EQ(Restarts("pump"), 3U);
  const ProgramResult status = Fleet({"rotate", "fleet.xml", "--status"});
  EXPECT_THAT(status.output, AllOf(HasSubstr("project.xml lift  as-configured  a rotation is open\n"),
                                   HasSubstr("project.xml pump  as-configured  a rotation is open\n")));
  EXPECT_EQ(status.exitStatus, 0);
  // Each daemon is asked for the new community before, and for the old one afterwards.
  const ProgramResult finish = Fleet({"rotate", "fleet.xml", "--finish", "--yes"});
  EXPECT_THAT(finish.output, HasSubstr("2 devices: 2 changed\n"));
  EXPECT_EQ(finish.exitStatus, 0);
  EXPECT_EQ(Conf("lift").find("hidden1"), std::string::npos);
}

TEST_F(ARotationOfControllers, StopsAtAControllerThatIsAway) {
  ASSERT_THAT(Fleet({"apply", "fleet.xml", "--yes"}).output, HasSubstr("2 devices: 2 changed\n"));
  server.Stop();
  const std::string before = Conf("lift");
  const ProgramResult result = Fleet({"rotate", "fleet.xml", "--read", "new", "--yes", "--wave", "1,100%"});
  EXPECT_THAT(result.output, AllOf(HasSubstr("project.xml lift  stopped "), HasSubstr("project.xml pump  not-started\n")));
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(Conf("lift"), before);
}

}  // namespace
}  // namespace devhost
