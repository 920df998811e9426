#include "devhost/commands/ProbeOutput.h"

#include <gtest/gtest.h>

namespace devhost {
namespace {

using Verdict = ProbeItem::Verdict;

ProbeReport Report() {
  ProbeReport report;
  report.verdict = ProbeReport::Verdict::Differs;
  report.address = "192.0.2.5:161";
  report.items = {{"contact", Verdict::Good, "Ada", "Ada", ""},
                  {"name", Verdict::Differs, "kitchen", "att\nic", "shadowed by line 63 of the foreign text"},
                  {"location", Verdict::NotAsked, "", "Unknown", ""},
                  {"read community", Verdict::Good, "*****", "works", ""},
                  {"AgentX socket", Verdict::Good, "tcp:127.0.0.1:705", "listens", ""}};
  report.messages = {"a message"};
  return report;
}

TEST(AProbeAsText, HasALineForEachThingAndASum) {
  EXPECT_EQ(ProbeText(Report(), "kitchen"),
            "ok      contact         \"Ada\"\n"
            "DIFFERS name            configured \"kitchen\", served \"att\\nic\"; shadowed by line 63 of the foreign text\n"
            "-       location        not set, served \"Unknown\"\n"
            "ok      read community  works\n"
            "ok      AgentX socket   tcp:127.0.0.1:705: listens\n"
            "kitchen at 192.0.2.5:161 differs: name\n");
}

TEST(AProbeAsText, SaysThatAllIsAsConfigured) {
  ProbeReport report = Report();
  report.items.resize(1);
  report.verdict = ProbeReport::Verdict::AsConfigured;
  EXPECT_EQ(ProbeText(report, "kitchen"), "ok      contact  \"Ada\"\nkitchen at 192.0.2.5:161 is as configured\n");
}

TEST(AProbeAsText, IsEmptyWhenNobodyKnows) {
  EXPECT_EQ(ProbeText(ProbeReport(), "kitchen"), "");
}

TEST(AProbe, EndsWithAStatusForItsVerdict) {
  EXPECT_EQ(StatusOf(ProbeReport::Verdict::AsConfigured), ExitStatus::Good);
  EXPECT_EQ(StatusOf(ProbeReport::Verdict::Differs), ExitStatus::Failed);
  EXPECT_EQ(StatusOf(ProbeReport::Verdict::Unknown), ExitStatus::Wrong);
}

}  // namespace
}  // namespace devhost
