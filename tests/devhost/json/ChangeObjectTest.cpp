#include "devhost/json/ChangeObject.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace devhost {
namespace {

Plan APlan(Plan::Verdict verdict) {
  Plan plan;
  plan.verdict = verdict;
  plan.difference = "a difference";
  plan.settings = {{"snmpSysNameSetting", "old", "new"}};
  return plan;
}

TEST(AChangeAsAnObject, HasAllOfAPlan) {
  EXPECT_EQ(
      ChangeObject("kitchen", APlan(Plan::Verdict::Change), nullptr, nullptr, {"a message"}).dump(),
      R"({"device":"kitchen","verdict":"would-change","changed":false,"snapshot":null,"difference":"a difference",)"
      R"("settings":[{"name":"snmpSysNameSetting","before":"old","after":"new"}],"findings":[],"messages":["a message"]})");
}

TEST(AChangeAsAnObject, HasTheSnapshotAndTheProbeOfOneThatWasMade) {
  Applied applied;
  applied.verdict = Applied::Verdict::Done;
  applied.snapshot = 7;
  ProbeReport probe;
  const auto object = [&] { return ChangeObject("kitchen", APlan(Plan::Verdict::Change), &applied, &probe, {}); };
  EXPECT_FALSE(object().contains("probe")) << "nobody was asked";
  probe.address = "127.0.0.1:161";
  EXPECT_EQ(object()["probe"]["address"], "127.0.0.1:161");
  EXPECT_EQ(object()["verdict"], "changed");
  EXPECT_EQ(object()["changed"], true);
  EXPECT_EQ(object()["snapshot"], 7);
}

TEST(AVerdict, IsAWord) {
  EXPECT_STREQ(VerdictOf(APlan(Plan::Verdict::Nothing)), "unchanged");
  EXPECT_STREQ(VerdictOf(APlan(Plan::Verdict::Change)), "would-change");
  EXPECT_STREQ(VerdictOf(APlan(Plan::Verdict::Stop)), "stopped");
  Plan again = APlan(Plan::Verdict::Nothing);
  again.isDueAgain = true;
  EXPECT_STREQ(VerdictOf(again), "would-change");
  using Verdict = Applied::Verdict;
  EXPECT_STREQ(VerdictOf(Verdict::Done), "changed");
  EXPECT_STREQ(VerdictOf(Verdict::Waits), "waits");
  EXPECT_STREQ(VerdictOf(Verdict::Stopped), "stopped");
  EXPECT_STREQ(VerdictOf(Verdict::Restarted), "unchanged");
  EXPECT_STREQ(VerdictOf(Verdict::NotRestarted), "failed");
  EXPECT_STREQ(VerdictOf(Verdict::Failed), "failed");
}

TEST(AProbeAsAnObject, HasEachThingThatWasAsked) {
  ProbeReport report;
  report.address = "127.0.0.1:161";
  report.verdict = ProbeReport::Verdict::Differs;
  report.messages = {"a message"};
  for (const auto verdict : {ProbeItem::Verdict::Good, ProbeItem::Verdict::Differs, ProbeItem::Verdict::NotAsked}) {
    ProbeItem item;
    item.name = "contact";
    item.verdict = verdict;
    report.items.push_back(item);
  }
  const nlohmann::ordered_json object = ProbeObject(report);
  EXPECT_EQ(object["verdict"], "differs");
  EXPECT_EQ(object["messages"].dump(), R"(["a message"])");
  EXPECT_EQ(object["items"][0]["verdict"], "good");
  EXPECT_EQ(object["items"][1]["verdict"], "differs");
  EXPECT_EQ(object["items"][2].dump(),
            R"({"name":"contact","verdict":"not-asked","configured":"","served":"","reason":""})");
}

TEST(ADriftAsAnObject, HasNoSnapshotWhereThereIsNone) {
  Drift drift;
  drift.verdict = Drift::Verdict::Some;
  drift.overridden = {{"a.conf", 7, Severity::Warning, "some-rule", "a reason", "a remedy"}};
  nlohmann::ordered_json object = DriftObject(drift, "kitchen");
  EXPECT_EQ(object["verdict"], "drift");
  EXPECT_TRUE(object["snapshot"].is_null());
  EXPECT_EQ(object["overridden"][0]["line"], 7);
  drift.snapshot = 3;
  drift.verdict = Drift::Verdict::None;
  object = DriftObject(drift, "kitchen");
  EXPECT_EQ(object["snapshot"], 3);
  EXPECT_EQ(object["verdict"], "none");
}

}  // namespace
}  // namespace devhost
