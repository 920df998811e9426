#include "devhost/json/ChangeObject.h"

#include <nlohmann/json.hpp>

#include "devhost/json/FindingObject.h"
#include "devhost/json/SnapshotObject.h"

namespace devhost {

using nlohmann::ordered_json;

namespace {

const char* NameOf(ProbeItem::Verdict verdict) {
  return verdict == ProbeItem::Verdict::Good ? "good" : verdict == ProbeItem::Verdict::Differs ? "differs" : "not-asked";
}

const char* NameOf(Drift::Verdict verdict) {
  return verdict == Drift::Verdict::None ? "none" : verdict == Drift::Verdict::Some ? "drift" : "unknown";
}

}  // namespace

const char* VerdictOf(const Plan& plan) {
  switch (plan.verdict) {
    case Plan::Verdict::Nothing:
      return plan.isDueAgain ? "would-change" : "unchanged";
    case Plan::Verdict::Change:
      return "would-change";
    case Plan::Verdict::Stop:
      break;
  }
  return "stopped";
}

const char* VerdictOf(Applied::Verdict verdict) {
  switch (verdict) {
    case Applied::Verdict::Done:
      return "changed";
    case Applied::Verdict::Waits:
      return "waits";
    case Applied::Verdict::Stopped:
      return "stopped";
    case Applied::Verdict::Restarted:
      return "unchanged";
    case Applied::Verdict::NotRestarted:
    case Applied::Verdict::Failed:
      break;
  }
  return "failed";
}

ordered_json ChangeObject(const std::string& device, const Plan& plan, const Applied* applied, const ProbeReport* probe,
                          const std::vector<std::string>& messages) {
  const bool isKept = applied != nullptr && applied->snapshot != 0;
  ordered_json object = {{"device", device},
                         {"verdict", applied == nullptr ? VerdictOf(plan) : VerdictOf(applied->verdict)},
                         {"changed", isKept},
                         {"snapshot", isKept ? ordered_json(applied->snapshot) : ordered_json()},
                         {"difference", plan.difference},
                         {"settings", SettingObjects(plan.settings)},
                         {"findings", FindingObjects(plan.findings)},
                         {"messages", messages}};
  if (probe != nullptr && !probe->address.empty()) {
    object["probe"] = ProbeObject(*probe);
  }
  return object;
}

const char* NameOf(ProbeReport::Verdict verdict) {
  return verdict == ProbeReport::Verdict::AsConfigured ? "as-configured"
         : verdict == ProbeReport::Verdict::Differs    ? "differs"
         : verdict == ProbeReport::Verdict::Gone       ? "gone"
                                                       : "unknown";
}

ordered_json ProbeObject(const ProbeReport& report) {
  ordered_json items = ordered_json::array();
  for (const ProbeItem& item : report.items) {
    items.push_back({{"name", item.name},
                     {"verdict", NameOf(item.verdict)},
                     {"configured", item.configured},
                     {"served", item.served},
                     {"reason", item.reason}});
  }
  return {{"address", report.address}, {"verdict", NameOf(report.verdict)}, {"items", items}, {"messages", report.messages}};
}

ordered_json DriftObject(const Drift& drift, const std::string& device) {
  ordered_json overridden = ordered_json::array();
  for (const Finding& finding : drift.overridden) {
    overridden.push_back(FindingObject(finding));
  }
  ordered_json object = {{"device", device},
                         {"verdict", NameOf(drift.verdict)},
                         {"section", drift.section},
                         {"overridden", overridden},
                         {"snapshot", drift.snapshot == 0 ? ordered_json() : ordered_json(drift.snapshot)},
                         {"difference", drift.since.file},
                         {"settings", SettingObjects(drift.since.settings)},
                         {"messages", drift.messages}};
  return object;
}

}  // namespace devhost
