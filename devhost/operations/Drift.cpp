#include "devhost/operations/Drift.h"

#include <algorithm>
#include <utility>

#include "devhost/check/ConfigText.h"
#include "devhost/operations/IncludedParts.h"
#include "devhost/operations/Overridden.h"

namespace devhost {

namespace {

// Whether the daemon may not have read the file, because a restart is due.
bool IsRestartDue(const Plan& plan, Drift& drift) {
  if (plan.restartDue != 0) {
    drift.messages.push_back("the daemon has not been told of the change of snapshot " + std::to_string(plan.restartDue) +
                             ": its restart command has not succeeded");
  } else if (plan.isDueAgain) {
    drift.messages.push_back(plan.messages.back());
  }
  return plan.restartDue != 0 || plan.isDueAgain;
}

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
    // A change that had to wait leaves the mark, which goes when the change has reached the controller.
    std::vector<SettingChange>& settings = drift.since.settings;
    const auto isMark = [](const SettingChange& setting) {
      return setting.name == "snmpIsConfigDirty" && setting.after == "false";
    };
    settings.erase(std::remove_if(settings.begin(), settings.end(), isMark), settings.end());
  }
}

}  // namespace

Drift FindDrift(const Target& target) {
  DeviceLife life(target.chosen.agent, target.chosen.device);
  return FindDrift(target, life);
}

Drift FindDrift(const Target& target, DeviceLife& life) {
  Drift drift;
  const DeviceLook look = LookAtDevice(target, life);
  drift.messages = look.messages;
  if (!look.problem.empty() || !look.isReachable) {
    drift.messages.push_back(look.problem.empty() ? target.chosen.device.name + " cannot be reached now" : look.problem);
    return drift;
  }
  Change same;
  same.target = target;
  same.settings = {"settings of " + target.chosen.device.name, look.now.settings};
  const Plan plan = PlanChange(same, life);
  drift.section = plan.difference;
  if (!LayOut(look.now.file).IsReplaced()) {
    drift.hasSection = false;
    drift.messages.push_back("the " + plan.file +
                             " has no section of the agent: nothing was applied yet, or somebody has removed it");
  }
  drift.overridden = OverridingLines(look.now.file, PathOf(target, look.now.file), plan.file, target.showSecrets);
  if (std::string unread = UnreadParts(look.now.file, PathOf(target, look.now.file)); !unread.empty()) {
    drift.messages.push_back(std::move(unread));
  }
  CompareWithLast(target, plan.file, look.now, drift);
  const bool isRestartDue = IsRestartDue(plan, drift);
  const bool isNone = drift.section.empty() && drift.overridden.empty() && drift.since.IsNone() && !isRestartDue;
  drift.verdict = isNone && drift.hasSection ? Drift::Verdict::None : Drift::Verdict::Some;
  return drift;
}

}  // namespace devhost
