#include "devhost/operations/Drift.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "devhost/check/CheckFile.h"

namespace devhost {

namespace {

// The findings of a check that say that the daemon serves something else than the section has.
std::vector<Finding> Overridden(const std::string& text, const std::string& file, bool showSecrets) {
  constexpr std::string_view kRules[] = {"overrides-section", "first-community-wins", "old-community"};
  CheckMeans means;
  means.showSecrets = showSecrets;
  std::vector<Finding> overridden;
  for (Finding& finding : CheckText(text, file, means).findings) {
    if (std::find(std::begin(kRules), std::end(kRules), finding.rule) != std::end(kRules)) {
      overridden.push_back(std::move(finding));
    }
  }
  return overridden;
}

// What has changed since the last change that has finished.
void CompareWithLast(const Target& target, const std::string& file, const DeviceCopy& now, Drift& drift) {
  const std::vector<Snapshot> snapshots = ReadSnapshots(target.snapshotFolder, target.chosen.device.id);
  const auto last = std::find_if(snapshots.rbegin(), snapshots.rend(),
                                 [](const Snapshot& snapshot) { return snapshot.after.has_value(); });
  if (last != snapshots.rend()) {
    drift.snapshot = last->number;
    const std::string name = file + " after the change of snapshot " + std::to_string(last->number);
    drift.since = CompareCopies({name, *last->after}, {file + " now", now}, target.showSecrets);
  }
}

}  // namespace

Drift FindDrift(const Target& target) {
  Drift drift;
  const DeviceLook look = LookAtDevice(target);
  drift.messages = look.messages;
  if (!look.problem.empty() || !look.isReachable) {
    drift.messages.push_back(look.problem.empty() ? target.chosen.device.name + " cannot be reached now" : look.problem);
    return drift;
  }
  Change same;
  same.target = target;
  same.settings = {"settings of " + target.chosen.device.name, look.now.settings};
  const Plan plan = PlanChange(same);
  drift.section = plan.difference;
  drift.overridden = Overridden(look.now.file, plan.file, target.showSecrets);
  CompareWithLast(target, plan.file, look.now, drift);
  const bool isNone = drift.section.empty() && drift.overridden.empty() && drift.since.IsNone();
  drift.verdict = isNone ? Drift::Verdict::None : Drift::Verdict::Some;
  return drift;
}

}  // namespace devhost
