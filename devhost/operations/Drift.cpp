#include "devhost/operations/Drift.h"

#include <algorithm>

#include "devhost/check/ConfigText.h"
#include "devhost/operations/Overridden.h"

namespace devhost {

namespace {

// What has changed since the last change that has finished.
void CompareWithLast(const Target& target, const std::string& file, const DeviceCopy& now, Drift& drift) {
  const SnapshotList list = ReadSnapshots(target.snapshotFolder, target.chosen.device.id);
  const std::vector<Snapshot>& snapshots = list.snapshots;
  for (const DamagedSnapshot& damaged : list.damaged) {
    drift.messages.push_back(damaged.problem);
  }
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
  if (!LayOut(look.now.file).IsReplaced()) {
    drift.hasSection = false;
    drift.messages.push_back("the " + plan.file +
                             " has no section of the agent: nothing was applied yet, or somebody has removed it");
  }
  drift.overridden = OverridingLines(look.now.file, plan.file, target.showSecrets);
  CompareWithLast(target, plan.file, look.now, drift);
  const bool isNone = drift.section.empty() && drift.overridden.empty() && drift.since.IsNone();
  drift.verdict = isNone && drift.hasSection ? Drift::Verdict::None : Drift::Verdict::Some;
  return drift;
}

}  // namespace devhost
