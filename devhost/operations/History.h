#ifndef DEVHOST_OPERATIONS_HISTORY_H
#define DEVHOST_OPERATIONS_HISTORY_H

#include <string>
#include <vector>

#include "devhost/operations/Apply.h"

namespace devhost {

// A device as it is now.
struct DeviceLook {
  DeviceCopy now;                     // valid unless there is a problem; with secrets
  bool isReachable = true;            // false: the file is the one that was last known
  std::string problem;                // why the device has not answered, in one line, or ""; secrets are masked
  std::vector<std::string> messages;  // what its driver said about that, and what waits; secrets are masked
};

// Asks a device for its file and settings. No setter, CopyTo, action or command reaches it. Throws what PlanChange throws.
DeviceLook LookAtDevice(const Target& target);
// The same in a life of the device that goes on.
DeviceLook LookAtDevice(const Target& target, DeviceLife& life);

// A copy of a device, with what it is called in a difference: "snapshot 3".
struct NamedCopy {
  std::string name;
  DeviceCopy copy;
};

// How two copies of a device differ. Secrets are compared, then masked unless they are to be shown.
struct CopyDifference {
  std::string file;  // a unified diff; "" when nothing but the time stamp differs
  std::vector<SettingChange> settings;

  bool IsNone() const { return file.empty() && settings.empty(); }
};

// Throws XmlError when the settings of a copy are damaged, and ProgramError.
CopyDifference CompareCopies(const NamedCopy& before, const NamedCopy& after, bool showSecrets);

// The snapshot with that number; 0 stands for the youngest. Throws SnapshotError, naming what there is, when it is missing
// or damaged. An older one does not stand in for the youngest when that is damaged.
const Snapshot& FindSnapshot(const SnapshotList& list, unsigned long number);

// The snapshot that an undo puts back. With the number 0, that is the youngest one. But where the youngest one is of an undo
// that has not come to its end, or after which a restart is due, it is the snapshot of that undo: whoever says the same
// again wants what is left of it, and not the opposite. Throws what FindSnapshot throws.
const Snapshot& FindSnapshotToUndo(const SnapshotList& list, unsigned long number);

// The change that gives a device the settings that it had before the snapshot. It is planned and made like any other.
Change UndoOf(const Snapshot& snapshot, const Target& target);

// What of the snapshot's file that change would not put back, as a unified diff from what the file would be; "" when all is
// put back. The agent writes its section and keeps what stands below it: text above the section, a file without a section
// and foreign lines that somebody has changed since are not its business.
std::string NotPutBack(const Snapshot& snapshot, const Plan& plan, bool showSecrets);

}  // namespace devhost

#endif
