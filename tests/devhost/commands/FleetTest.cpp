// The built program with real drivers, because each device gets a process of it.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "tests/devhost/commands/FleetFixture.h"
#include "tests/devhost/support/TestModules.h"

namespace devhost {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

TEST_F(AFleetOfDevices, GetsItsSettingsWithAReport) {
  const ProgramResult result = Fleet({"apply", "fleet.xml", "--yes"});
  EXPECT_EQ(result.output,
            "house.xml d11  changed\nhouse.xml d12  changed\nhouse.xml d13  changed\nhouse.xml d14  changed\n"
            "barn.xml d15   changed\n5 devices: 5 changed\n");
  EXPECT_EQ(result.exitStatus, 0);
  for (int id = 11; id != 11 + kDevices; ++id) {
    EXPECT_THAT(Conf(id), HasSubstr("sysName  first\n"));
  }
  const ProgramResult again = Fleet({"apply", "fleet.xml", "--yes"});
  EXPECT_THAT(again.output, HasSubstr("5 devices: 5 unchanged\n"));
  EXPECT_EQ(again.exitStatus, 0);
}

TEST_F(AFleetOfDevices, IsLookedAtWithoutAChange) {
  for (const std::vector<std::string>& words :
       {std::vector<std::string>{"preview", "fleet.xml"}, {"apply", "fleet.xml", "--dry-run"}}) {
    const ProgramResult result = Fleet(words);
    EXPECT_THAT(result.output, HasSubstr("5 devices: 5 would-change\n"));
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(Conf(11), "# by hand\n");
  }
}

TEST_F(AFleetOfDevices, ShowsDrift) {
  Fleet({"apply", "fleet.xml", "--yes"});
  EXPECT_EQ(Fleet({"drift", "fleet.xml"}).exitStatus, 0);
  folder.Write("d13/snmpd.conf", "sysName other\n" + Conf(13));
  const ProgramResult result = Fleet({"drift", "fleet.xml"});
  EXPECT_THAT(result.output, AllOf(HasSubstr("house.xml d13  drift\n"), HasSubstr("5 devices: 1 drift, 4 no-drift\n")));
  EXPECT_EQ(result.exitStatus, 1);
}

TEST_F(AFleetOfDevices, CannotBeProbedWhereNobodyKnowsTheDaemons) {
  const ProgramResult result = Fleet({"probe", "fleet.xml"});
  EXPECT_THAT(result.output, AllOf(HasSubstr("house.xml d11  unknown "), HasSubstr("5 devices: 5 unknown\n")));
  EXPECT_EQ(result.exitStatus, 2);
}

TEST_F(AFleetOfDevices, HasItsFilesChecked) {
  folder.Write("fleet.xml", "<fleet><project file='barn.xml'><device name='d15' file='d15/snmpd.conf'/></project></fleet>");
  folder.Write("d15/snmpd.conf", "rocommunity public\n");
  const ProgramResult result = Fleet({"check", "fleet.xml"});
  EXPECT_THAT(result.output, HasSubstr("barn.xml d15  findings     1 finding\n"));
  EXPECT_EQ(result.exitStatus, 1);
  folder.Write("d15/snmpd.conf", "rocommunity long-and-secret\n");
  EXPECT_EQ(Fleet({"check", "fleet.xml"}).output, "barn.xml d15  clean\n1 device: 1 clean\n");
}

TEST_F(AFleetOfDevices, IsToldToProgramsALineForEachDevice) {
  const ProgramResult result = Fleet({"apply", "fleet.xml", "--yes", "--json"});
  std::istringstream stream(result.output);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  ASSERT_EQ(lines.size(), 6U);
  EXPECT_EQ(lines.back(), R"({"devices":5,"verdicts":{"changed":5},"signal":null})");
  std::sort(lines.begin(), lines.end() - 1);
  EXPECT_THAT(lines[0], AllOf(HasSubstr(R"({"project":"barn.xml","device":"d15","id":15,"wave":1,"verdict":"changed",)"),
                              HasSubstr(R"("answer":{"device":"d15","verdict":"changed","changed":true,"snapshot":1,)")));
  EXPECT_THAT(lines[4], HasSubstr(R"({"project":"house.xml","device":"d14","id":14,)"));
  EXPECT_THAT(result.output, Not(HasSubstr("hidden1")));
}

TEST_F(AFleetOfDevices, LosesNoSettingThatIsMissingUnlessTheRuleIsAccepted) {
  ASSERT_EQ(Fleet({"apply", "fleet.xml", "--yes"}).exitStatus, 0);
  folder.Write("settings.xml",
               "<managedDevice><snmpCommunityReadSetting>hidden1</snmpCommunityReadSetting>"
               "<deviceId>{deviceId}</deviceId></managedDevice>");
  const ProgramResult stopped = Fleet({"apply", "fleet.xml", "--yes"});
  EXPECT_THAT(stopped.output,
              AllOf(HasSubstr("barn.xml d15   stopped      the change is not made because of setting-missing"),
                    HasSubstr("5 devices: 5 stopped\n")));
  EXPECT_EQ(stopped.exitStatus, 1);
  EXPECT_THAT(Conf(15), HasSubstr("sysName  first\n"));
  EXPECT_EQ(Fleet({"apply", "fleet.xml", "--yes", "--accept", "setting-missing"}).exitStatus, 0);
  EXPECT_THAT(Conf(15), Not(HasSubstr("sysName")));
}

TEST_F(AFleetOfDevices, ReportsWhatTheDriverSays) {
  std::filesystem::remove(folder.Path("d12/snmpd.conf"));
  std::filesystem::create_directory(folder.Path("d12/snmpd.conf"));
  for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{
           {"apply", "fleet.xml", "--yes"}, {"apply", "fleet.xml", "--dry-run"}, {"preview", "fleet.xml"}}) {
    EXPECT_THAT(Fleet(words).output,
                AllOf(HasSubstr("snmpd.conf: it is not a regular file"), HasSubstr("would answer <ReadFail/>")));
  }
}

TEST_F(AFleetOfDevices, KeepsTheResultsOfOthersWhenADriverEndsItsProcess) {
  Break(12, TestModule("deadly"));
  ::setenv("DEADLY_IN_INITIALIZE", "1", 1);
  const ProgramResult result = Fleet({"apply", "fleet.xml", "--yes"});
  ::unsetenv("DEADLY_IN_INITIALIZE");
  EXPECT_THAT(result.output, AllOf(HasSubstr("house.xml d12  failed       the process was ended behind the host's back"),
                                   HasSubstr("during Initialize of driver 12"), HasSubstr("4 changed, 1 failed\n")));
  EXPECT_EQ(result.exitStatus, 1);
}

TEST_F(AFleetOfDevices, StopsAtAWaveThatFailsAndIsResumed) {
  const std::string good = folder.Read("house.xml");
  std::filesystem::remove_all(folder.Path("d13"));
  const std::vector<std::string> words = {"apply", "fleet.xml", "--yes", "--wave", "1,3,100%", "--record", "record"};
  const ProgramResult first = Fleet(words);
  EXPECT_THAT(first.output, AllOf(HasSubstr("house.xml d13  stopped "), HasSubstr("house.xml d14  not-started\n"),
                                  HasSubstr("5 devices: 2 changed, 2 not-started, 1 stopped\n")));
  EXPECT_EQ(first.exitStatus, 1);
  EXPECT_EQ(Conf(14), "# by hand\n");
  EXPECT_THAT(folder.Read("record"), Not(HasSubstr("hidden1")));

  folder.Write("d13/snmpd.conf", "# by hand\n");
  const ProgramResult refused = Fleet(words);
  EXPECT_THAT(refused.output, HasSubstr("an earlier run has not come to its end"));
  EXPECT_EQ(refused.exitStatus, 2);
  std::vector<std::string> more = words;
  more.emplace_back("--resume");
  const ProgramResult second = Fleet(more);
  EXPECT_THAT(second.output, HasSubstr("5 devices: 3 changed, 2 done-before\n"));
  EXPECT_EQ(second.exitStatus, 0);
  EXPECT_FALSE(std::filesystem::exists(folder.Path("record")));
}

TEST_F(AFleetOfDevices, WithAStateFolderIsServedOneAfterTheOther) {
  folder.Write("fleet.xml", "<fleet settings='settings.xml'><project file='house.xml' state='states'/></fleet>");
  const ProgramResult result = Fleet({"apply", "fleet.xml", "--yes"});
  EXPECT_THAT(result.output, HasSubstr("4 devices: 4 changed\n"));
  EXPECT_TRUE(std::filesystem::exists(folder.Path("states/lock")));
}

TEST_F(AFleetOfDevices, IsNotTouchedWhenSomethingIsWrong) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> wrong = {
      {{"apply", "fleet.xml"}, "either --yes or --dry-run"},
      {{"apply", "fleet.xml", "--yes", "--dry-run"}, "either --yes or --dry-run"},
      {{"drift", "fleet.xml", "--yes"}, "--yes is for apply"},
      {{"apply", "fleet.xml", "--yes", "--resume"}, "--resume needs to know the record"},
      {{"apply", "fleet.xml", "--dry-run", "--record", "r"}, "--record is for a run that changes something"},
      {{"apply", "fleet.xml", "--yes", "--jobs", "0"}, "--jobs is \"0\"; allowed: a whole number from 1 to 1000"},
      {{"apply", "fleet.xml", "--yes", "--wave", "2"}, "the last wave leaves out 3 devices"},
      {{"apply", "nowhere.xml", "--yes"}, "nowhere.xml"},
      {{"check", "fleet.xml"}, "fleet.xml:1: d11 of house.xml has no file that could be checked; write file=\"FILE\""},
      {{"restart", "fleet.xml"}, "\"restart\" is unknown; allowed: apply, preview, drift, probe, check, rotate"}};
  for (const auto& [words, problem] : wrong) {
    const ProgramResult result = Fleet(words);
    EXPECT_THAT(result.output, HasSubstr(problem));
    EXPECT_EQ(result.exitStatus, 2) << problem;
  }
  std::filesystem::remove(folder.Path("settings.xml"));
  EXPECT_EQ(Fleet({"apply", "fleet.xml", "--yes"}).exitStatus, 2);
  EXPECT_EQ(Conf(11), "# by hand\n");
}

TEST_F(AFleetOfDevices, SaysWhatWasNotDoneWhenItIsInterrupted) {
  folder.Write("house.xml", "<project>" + Driver(1, "agent", "snmp_configuration_agent.so") +
                                Driver(11, "d11", TestModule("deadly")) + "</project>");
  folder.Write("fleet.xml", "<fleet><project file='house.xml'/><project file='barn.xml'/></fleet>");
  const std::string output = folder.Path("output");
  const pid_t child = ::fork();
  if (child == 0) {
    const int file = ::open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    ::dup2(file, 1);
    ::dup2(file, 2);
    static_cast<void>(::chdir(folder.Path().c_str()) == 0);
    ::setenv("DEADLY_WAITS_IN_INITIALIZE", folder.Path("waits").c_str(), 1);
    ::execl(DEVHOST_PROGRAM, "devhost", "fleet", "drift", "fleet.xml", "--jobs", "1", "--wave", "1,2", nullptr);
    ::_exit(127);
  }
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (!std::filesystem::exists(folder.Path("waits")) && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  ::kill(child, SIGINT);
  int status = 0;
  ::waitpid(child, &status, 0);
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT) << status;
  EXPECT_EQ(testsupport::ScratchFolder::ReadFile(output),
            "house.xml d11  interrupted  ended in the middle\nbarn.xml d15   not-started\n"
            "2 devices: 1 interrupted, 1 not-started\n"
            "devhost: ended by SIGINT before all devices had their turn\n");
}

}  // namespace
}  // namespace devhost
