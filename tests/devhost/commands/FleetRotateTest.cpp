// The built program with real drivers, because each device gets a process of it.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "tests/devhost/commands/FleetFixture.h"
#include "tests/devhost/support/SnmpDaemon.h"

namespace devhost {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

// The devices have their settings before the community is rotated.
class ARotationOfAFleet : public AFleetOfDevices {
 protected:
  ARotationOfAFleet() {
    Fleet({"apply", "fleet.xml", "--yes"});
    folder.Write("new", "hidden2\n");
  }

  ProgramResult Rotate(std::vector<std::string> words) const {
    words.insert(words.begin(), {"rotate", "fleet.xml"});
    return Fleet(words);
  }
  // How many devices are let in by the old community, and by the new one.
  std::pair<int, int> Valid() const {
    std::pair<int, int> count;
    for (int id = 11; id != 11 + kDevices; ++id) {
      count.first += Conf(id).find("\nrocommunity  hidden1\n") != std::string::npos ? 1 : 0;
      count.second += Conf(id).find("\nrocommunity  hidden2\n") != std::string::npos ? 1 : 0;
    }
    return count;
  }
};

TEST_F(ARotationOfAFleet, IsStartedLookedAtAndFinished) {
  const ProgramResult dry = Rotate({"--read", "new", "--dry-run"});
  EXPECT_THAT(dry.output, HasSubstr("5 devices: 5 would-change\n"));
  EXPECT_EQ(dry.exitStatus, 1);
  const ProgramResult start = Rotate({"--read", "new", "--yes", "--wave", "1,100%"});
  EXPECT_THAT(start.output, HasSubstr("5 devices: 5 changed\n"));
  EXPECT_EQ(start.exitStatus, 0);
  EXPECT_EQ(Valid(), std::pair(5, 5));
  const ProgramResult status = Rotate({"--status"});
  EXPECT_THAT(status.output, HasSubstr("house.xml d11  unknown      a rotation is open; nothing to ask: "));
  EXPECT_EQ(status.exitStatus, 2);
  EXPECT_THAT(Rotate({"--finish", "--yes"}).output, HasSubstr("nobody knows whether the new community works"));
  EXPECT_EQ(Valid(), std::pair(5, 5));
  EXPECT_THAT(Rotate({"--finish", "--yes", "--no-probe"}).output, HasSubstr("5 devices: 5 changed\n"));
  EXPECT_EQ(Valid(), std::pair(0, 5));
  EXPECT_THAT(Rotate({"--status"}).output, HasSubstr("no rotation is open"));
}

TEST_F(ARotationOfAFleet, IsAborted) {
  Rotate({"--read", "new", "--yes"});
  EXPECT_THAT(Rotate({"--abort", "--yes"}).output, HasSubstr("5 devices: 5 changed\n"));
  EXPECT_EQ(Valid(), std::pair(5, 0));
}

TEST_F(ARotationOfAFleet, StopsAtADeviceOnWhichAnotherOneIsOpen) {
  folder.Write("other", "hidden3\n");
  folder.Write("one.xml", "<fleet><project file='house.xml'><device name='d12'/></project></fleet>");
  ASSERT_EQ(Fleet({"rotate", "one.xml", "--read", "other", "--yes"}).exitStatus, 0);
  const ProgramResult result = Rotate({"--read", "new", "--yes", "--wave", "1,2,100%"});
  EXPECT_THAT(result.output, AllOf(HasSubstr("house.xml d12  stopped      a rotation is open already; allowed: "),
                                   HasSubstr("5 devices: 1 changed, 3 not-started, 1 stopped\n")));
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_THAT(Conf(12), HasSubstr("hidden3"));
}

// A device may be done while nobody has noted that: its step is then said again.
TEST_F(ARotationOfAFleet, IsResumedWithWhateverStepItWasInterrupted) {
  folder.Write("one.xml", "<fleet><project file='house.xml'><device name='d11'/></project></fleet>");
  const auto interrupt = [this](const std::vector<std::string>& step) {
    std::vector<std::string> words = {"rotate", "one.xml", "--yes"};
    words.insert(words.end(), step.begin(), step.end());
    ASSERT_EQ(Fleet(words).exitStatus, 0);
    folder.Write("record", "devhost fleet record 1\n");
    ::chmod(folder.Path("record").c_str(), 0600);
    words = {"--yes", "--record", "record", "--resume"};
    words.insert(words.end(), step.begin(), step.end());
    const ProgramResult result = Rotate(words);
    EXPECT_THAT(result.output,
                AllOf(HasSubstr("house.xml d11  unchanged"), HasSubstr("5 devices: 4 changed, 1 unchanged\n")));
    EXPECT_EQ(result.exitStatus, 0);
  };
  interrupt({"--read", "new"});
  interrupt({"--abort"});
  EXPECT_EQ(Valid(), std::pair(5, 0));
  interrupt({"--read", "new"});
  interrupt({"--finish", "--no-probe"});
  EXPECT_EQ(Valid(), std::pair(0, 5));
}

TEST_F(ARotationOfAFleet, IsRecordedByItsSteps) {
  const auto resume = [this](const std::vector<std::string>& step) {
    std::vector<std::string> words = {"--yes", "--record", "record", "--wave", "1,100%"};
    words.insert(words.end(), step.begin(), step.end());
    if (std::filesystem::exists(folder.Path("record"))) {
      words.emplace_back("--resume");
    }
    return Rotate(words).output;
  };
  std::filesystem::rename(folder.Path("d15"), folder.Path("away"));
  EXPECT_THAT(resume({"--read", "new"}), HasSubstr("5 devices: 4 changed, 1 stopped\n"));
  EXPECT_THAT(folder.Read("record"), Not(HasSubstr("hidden2")));
  EXPECT_THAT(resume({"--abort"}), HasSubstr("4 changed, 1 stopped\n"));
  EXPECT_THAT(resume({"--finish", "--no-probe"}), HasSubstr("house.xml d11  stopped      no rotation is open; "));
  std::filesystem::rename(folder.Path("away"), folder.Path("d15"));
  EXPECT_THAT(resume({"--read", "new"}), HasSubstr("5 devices: 1 changed, 4 done-before\n"));
}

TEST_F(ARotationOfAFleet, TakesCommunitiesFromStandardInputOnceForAllDevices) {
  ProgramRun run;
  run.deadline = kPatience;
  run.words = {"sh", "-c", "echo hidden2 | \"$0\" fleet rotate fleet.xml --read - --yes", DEVHOST_PROGRAM};
  run.folder = folder.Path();
  EXPECT_THAT(RunProgram(run).output, HasSubstr("5 devices: 5 changed\n"));
  EXPECT_EQ(Valid(), std::pair(5, 5));
}

TEST_F(ARotationOfAFleet, ShowsNoCommunityToOthersOrInItsReport) {
  const ProgramResult result = Rotate({"--read", "new", "--yes", "--json"});
  EXPECT_THAT(result.output, AllOf(HasSubstr("\"verdict\":\"changed\""), Not(HasSubstr("hidden"))));
}

TEST_F(ARotationOfAFleet, IsNotBegunWhenSomethingIsWrong) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> wrong = {
      {{"rotate", "fleet.xml", "--yes"}, "nothing to do; allowed: --read FILE, --write FILE, --status, --finish, --abort"},
      {{"rotate", "fleet.xml", "--read", "new"}, "allowed with rotate: either --yes or --dry-run"},
      {{"rotate", "fleet.xml", "--read", "nowhere", "--yes"}, "cannot read \"nowhere\""},
      {{"rotate", "fleet.xml", "--read", "/dev/zero", "--yes"}, "larger than the 65536 bytes that are allowed"},
      {{"rotate", "fleet.xml", "--read", "new", "--finish", "--yes"}, "--read and --finish cannot stand together"},
      {{"rotate", "fleet.xml", "--status", "--record", "r"}, "--record is for a run that changes something"},
      {{"apply", "fleet.xml", "--yes", "--read", "new"}, "--read is for rotate; allowed with apply: leave it out"},
      {{"apply", "fleet.xml", "--yes", "--probe"}, "--probe is for drift"},
      {{"preview", "fleet.xml", "--no-probe"}, "--no-probe is for apply and rotate"}};
  for (const auto& [words, problem] : wrong) {
    const ProgramResult result = Fleet(words);
    EXPECT_THAT(result.output, HasSubstr(problem));
    EXPECT_EQ(result.exitStatus, 2) << problem;
  }
  EXPECT_EQ(Valid(), std::pair(5, 0));
}

// Each device has a daemon, and the project knows its port.
class ARotationOfDaemons : public ARotationOfAFleet {
 protected:
  std::string DriverOf(int id, const SnmpDaemon& daemon) const {
    const std::string name = "d" + std::to_string(id);
    return Driver(id, name, "local_snmpd.so", "<config folder='{project}/" + name + "' port='" + daemon.Port() + "'/>");
  }
  void SetDaemons(const SnmpDaemon& first, const SnmpDaemon& second) const {
    folder.Write("house.xml", "<project>" + Driver(1, "agent", "snmp_configuration_agent.so") + DriverOf(11, first) +
                                  DriverOf(12, second) + "</project>");
    folder.Write("fleet.xml", "<fleet><project file='house.xml'/></fleet>");
  }
};

TEST_F(ARotationOfDaemons, IsFinishedOnlyWhereTheDaemonAnswersToTheNewCommunity) {
  Rotate({"--read", "new", "--yes"});
  const std::string both = "rocommunity hidden1\nrocommunity hidden2\nsysName first\n";
  const SnmpDaemon first(both);
  const SnmpDaemon untold("rocommunity hidden1\nsysName first\n");
  SetDaemons(first, untold);
  const ProgramResult status = Rotate({"--status"});
  EXPECT_THAT(status.output, AllOf(HasSubstr("house.xml d11  as-configured  a rotation is open\n"),
                                   HasSubstr("house.xml d12  differs        a rotation is open\n")));
  EXPECT_EQ(status.exitStatus, 1);
  const ProgramResult drift = Fleet({"drift", "fleet.xml", "--probe"});
  EXPECT_THAT(drift.output, AllOf(HasSubstr("house.xml d11  no-drift"),
                                  HasSubstr("house.xml d12  drift        the daemon differs: name, read community\n")));
  const std::string before = Conf(12);
  const ProgramResult finish = Rotate({"--finish", "--yes", "--keep-going"});
  EXPECT_THAT(finish.output,
              HasSubstr("house.xml d12  stopped      the daemon at " + untold.Address() + " does not answer to the new "));
  EXPECT_EQ(Conf(12), before);
  // This one had the new community, but it has not read the file since.
  EXPECT_THAT(finish.output, HasSubstr("house.xml d11  changed"));
  EXPECT_EQ(finish.exitStatus, 1);
}

TEST_F(ARotationOfDaemons, HasFailedWhereTheOldCommunityStillWorks) {
  Rotate({"--read", "new", "--yes"});
  const SnmpDaemon first("rocommunity hidden2\nsysName first\n");  // it has read the file as it will be
  const SnmpDaemon untold("rocommunity hidden1\nrocommunity hidden2\nsysName first\n");
  SetDaemons(first, untold);
  const ProgramResult finish = Rotate({"--finish", "--yes"});
  EXPECT_THAT(finish.output, AllOf(HasSubstr("house.xml d11  changed\n"),
                                   HasSubstr("house.xml d12  changed      the daemon differs: old read community\n")));
  EXPECT_EQ(finish.exitStatus, 1);
}

}  // namespace
}  // namespace devhost
