#include "devhost/operations/History.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <utility>

#include "devhost/preview/FileDifference.h"
#include "devhost/preview/Preview.h"
#include "devhost/secrets/Masker.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

// Learns what may be quoted of both copies, so that a secret of one is hidden in the other.
void Learn(const DeviceCopy& copy, Masker& masker) {
  masker.Xml(copy.settings);
  masker.Config(copy.file);
}

constexpr std::string_view kUndo = "undo ";

// The number of the snapshot that an undo has put back; 0 for the snapshot of another operation.
unsigned long UndoneBy(const Snapshot& snapshot) {
  const std::string& operation = snapshot.operation;
  unsigned long number = 0;
  if (StartsWith(operation, kUndo)) {
    std::from_chars(operation.data() + kUndo.size(), operation.data() + operation.size(), number);
  }
  return number;
}

}  // namespace

DeviceLook LookAtDevice(const Target& target) {
  DeviceLife life(target.chosen.agent, target.chosen.device);
  return LookAtDevice(target, life);
}

DeviceLook LookAtDevice(const Target& target, DeviceLife& life) {
  // A preview asks the device for everything, whatever the settings are.
  Change change;
  change.target = target;
  const std::string id = std::to_string(target.chosen.device.id);
  change.wantsDifference = false;
  change.settings = {"no settings", "<managedDevice><deviceId>" + id + "</deviceId></managedDevice>"};
  Plan plan = PlanChange(change, life);
  DeviceLook look;
  look.isReachable = plan.isReachable;
  look.now = std::move(plan.before);
  if (look.now.settings.empty()) {
    look.messages = std::move(plan.messages);
    look.problem = std::move(look.messages.back());
    look.messages.pop_back();
  } else if (std::string waiting = WaitingChange(target.chosen.device.name, StateOf(target)); !waiting.empty()) {
    look.messages.push_back(std::move(waiting));
  }
  return look;
}

CopyDifference CompareCopies(const NamedCopy& before, const NamedCopy& after, bool showSecrets) {
  Masker masker(showSecrets);
  Learn(before.copy, masker);
  Learn(after.copy, masker);
  CopyDifference difference;
  difference.file = FileDifference({before.name, before.copy.file}, {after.name, after.copy.file}, masker);
  difference.settings = CompareSettings(before.copy.settings, after.copy.settings, masker);
  return difference;
}

const Snapshot& FindSnapshot(const SnapshotList& list, unsigned long number) {
  const std::vector<Snapshot>& snapshots = list.snapshots;
  unsigned long youngest = snapshots.empty() ? 0 : snapshots.back().number;
  for (const DamagedSnapshot& damaged : list.damaged) {
    youngest = std::max(youngest, damaged.number);
  }
  const unsigned long wanted = number == 0 ? youngest : number;
  for (const DamagedSnapshot& damaged : list.damaged) {
    if (damaged.number == wanted) {
      throw SnapshotError(damaged.problem);
    }
  }
  const auto found = std::find_if(snapshots.begin(), snapshots.end(),
                                  [wanted](const Snapshot& snapshot) { return snapshot.number == wanted; });
  if (found == snapshots.end()) {
    throw SnapshotError(snapshots.empty() ? "there is no snapshot of this device"
                                          : "there is no snapshot " + std::to_string(wanted) +
                                                " of this device; allowed: " + std::to_string(snapshots.front().number) +
                                                " to " + std::to_string(snapshots.back().number));
  }
  return *found;
}

const Snapshot& FindSnapshotToUndo(const SnapshotList& list, unsigned long number) {
  const Snapshot& snapshot = FindSnapshot(list, number);
  const bool isWhole = snapshot.after.has_value() && !snapshot.isRestartDue;
  const unsigned long undone = number == 0 && !isWhole ? UndoneBy(snapshot) : 0;
  return undone == 0 ? snapshot : FindSnapshot(list, undone);
}

Change UndoOf(const Snapshot& snapshot, const Target& target) {
  Change change;
  change.target = target;
  change.settings = {"settings of snapshot " + std::to_string(snapshot.number), snapshot.before.settings};
  change.operation = std::string(kUndo) + std::to_string(snapshot.number);
  return change;
}

std::string NotPutBack(const Snapshot& snapshot, const Plan& plan, bool showSecrets) {
  Masker masker(showSecrets);
  Learn(plan.after, masker);
  Learn(snapshot.before, masker);
  return FileDifference({plan.file + " after the undo", plan.after.file},
                        {plan.file + " in snapshot " + std::to_string(snapshot.number), snapshot.before.file}, masker);
}

}  // namespace devhost
