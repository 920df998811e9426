#include <gmock/gmock.h>

#include <filesystem>

#include "tests/devhost/commands/DeviceFixture.h"

namespace devhost {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

using HistoryCommand = DeviceFixture;

constexpr char kTime[] = "[0-9-]+ [0-9:]+";

TEST_F(HistoryCommand, ListsTheChangesWithTheSettingsThatTheyChanged) {
  fs::remove(folder.Path("project.xml.snapshots/driver-12/2/after.xml"));
  const Outcome outcome = Do("history");
  EXPECT_EQ(outcome.status, ExitStatus::Good);
  EXPECT_THAT(outcome.out, testing::MatchesRegex("1  " + std::string(kTime) +
                                                 "  apply  snmpCommunityReadSetting, snmpSysNameSetting\n2  " + kTime +
                                                 "  apply  \\(did not finish\\)\n"));
}

TEST_F(HistoryCommand, ListsThemAsJson) {
  EXPECT_THAT(
      Do("history", {"--json"}).out,
      testing::MatchesRegex("\\{\"snapshot\":1,\"time\":\"[0-9-]+T[0-9:]+Z\",\"operation\":\"apply\",\"finished\":true,"
                            "\"settings\":\\[\"snmpCommunityReadSetting\",\"snmpSysNameSetting\"\\]\\}\n[^\n]+\n"));
}

TEST_F(HistoryCommand, ListsADamagedSnapshotAndUsesTheOthers) {
  File("project.xml.snapshots/driver-12/1/before.xml", "<managedDevice></manag");
  const Outcome outcome = Do("history");
  EXPECT_EQ(outcome.status, ExitStatus::Good);
  EXPECT_THAT(outcome.out, AllOf(StartsWith("1  the snapshot in \""), HasSubstr("its file before.xml is not well-formed"),
                                 HasSubstr("\n2  ")));
  EXPECT_THAT(Do("history", {"--json"}).out, StartsWith("{\"snapshot\":1,\"damaged\":\"the snapshot in "));
  EXPECT_EQ(Do("drift").status, ExitStatus::Good);
  EXPECT_EQ(Do("history", {"--from", "2"}).status, ExitStatus::Failed);
  EXPECT_EQ(Do("undo", {"--yes"}).status, ExitStatus::Good);
  const Outcome damaged = Do("undo", {"1", "--yes", "--json"});
  EXPECT_EQ(damaged.status, ExitStatus::Wrong);
  EXPECT_THAT(damaged.out, AllOf(HasSubstr("\"stage\":\"input\""), HasSubstr("before.xml")));
}

TEST_F(HistoryCommand, PrintsAJsonObjectWhereItStops) {
  EXPECT_EQ(Do("history", {"--json", "--from", "7"}).out,
            "{\"device\":\"kitchen\",\"verdict\":\"stopped\",\"stage\":\"plan\",\"reason\":\"there is no snapshot 7 of this "
            "device; allowed: 1 to 2\"}\n");
}

TEST_F(HistoryCommand, HidesNamesInSnapshotsThatSomebodyHasEdited) {
  const std::string snapshot = "project.xml.snapshots/driver-12/2/";
  folder.Write(snapshot + "about.xml", "<snapshot format='1' time='1' operation='apply geheim' device='kitchen'/>");
  folder.Write(snapshot + "after.xml", "<managedDevice><geheim>x</geheim></managedDevice>");
  const std::string listed = Do("history").out + Do("history", {"--json"}).out;
  EXPECT_THAT(listed, AllOf(HasSubstr("  *****  "), HasSubstr("\"operation\":\"*****\""), Not(HasSubstr("geheim"))));
  EXPECT_THAT(Do("history", {"--show-secrets"}).out, HasSubstr("  apply geheim  geheim\n"));
}

TEST_F(HistoryCommand, SaysThatThereIsNothing) {
  EXPECT_EQ(Do("history", {"--snapshots", folder.Path("nowhere")}).out, "no snapshots of kitchen\n");
}

TEST_F(HistoryCommand, ComparesASnapshotWithNow) {
  const Outcome outcome = Do("history", {"--from", "2"});
  EXPECT_EQ(outcome.status, ExitStatus::Failed);
  EXPECT_THAT(outcome.out, AllOf(StartsWith("--- snmpd.conf of kitchen before snapshot 2\n+++ snmpd.conf of kitchen now\n"),
                                 HasSubstr("\n-sysName  kitchen\n+sysName  attic\n"),
                                 HasSubstr("\nsnmpSysNameSetting: \"kitchen\" -> \"attic\"\n")));
}

TEST_F(HistoryCommand, ComparesTwoSnapshots) {
  const Outcome outcome = Do("history", {"--from", "1", "--to", "2", "--json"});
  EXPECT_EQ(outcome.status, ExitStatus::Failed);
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("\\n+sysName  kitchen\\n"),
                                 HasSubstr("{\"name\":\"snmpSysNameSetting\",\"before\":\"\",\"after\":\"kitchen\"}"),
                                 Not(HasSubstr("hidden"))));
  const Outcome same = Do("history", {"--from", "2", "--to", "2"});
  EXPECT_EQ(same.status, ExitStatus::Good);
  EXPECT_EQ(same.out, "no difference\n");
}

TEST_F(HistoryCommand, SaysWhatIsWrongWithWhatItIsGiven) {
  EXPECT_THAT(Do("history", {"--from", "x"}).errors, HasSubstr("--from: \"x\" is not a snapshot; allowed: a number from 1"));
  EXPECT_THAT(Do("history", {"--from", "7"}).errors, HasSubstr("there is no snapshot 7 of this device; allowed: 1 to 2"));
  const Outcome alone = Do("history", {"--to", "1"});
  EXPECT_EQ(alone.status, ExitStatus::Wrong);
  EXPECT_THAT(alone.errors, HasSubstr("allowed: --from NUMBER --to NUMBER"));
}

}  // namespace
}  // namespace devhost
