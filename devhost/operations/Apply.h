#ifndef DEVHOST_OPERATIONS_APPLY_H
#define DEVHOST_OPERATIONS_APPLY_H

#include <cstdint>
#include <string>
#include <vector>

#include "devhost/operations/Plan.h"

namespace devhost {

// What has become of a change.
struct Applied {
  enum class Verdict {
    Done,
    Waits,         // the device cannot be reached; its driver has accepted the change for later
    Stopped,       // nothing was changed
    Restarted,     // nothing was changed; the restart command of an earlier change was run
    NotRestarted,  // done, or nothing to change, but the restart command has failed, or an earlier one and there is none now
    Failed         // something may have been changed; the snapshot has what was there
  };

  Verdict verdict = Verdict::Stopped;
  unsigned long snapshot = 0;         // its number; 0 when none was kept
  std::vector<std::string> messages;  // what drivers said and what went wrong, a line each; secrets are masked
  DeviceCopy now;                     // with Done and Restarted: the device after it, with secrets
};

// Makes a change that was planned: keeps a snapshot (or goes on with that of a change that is due again), has the agent of
// the project do "SetDeviceState" with the device's own driver, keeps the device's state, and looks at the device again.
// Stops before anything is changed when device or file are not as the plan has found them: the settings are asked for and
// judged again when the folders are locked, and the file is compared when the agent reads it, before it sets anything. The
// restart command runs at the end, unless the change waits; until it has succeeded, the snapshot has a mark. Where nothing
// is to be changed and the plan says that a restart is due, only that is done. `time` is now, in seconds since 1970.
//
// Throws what PlanChange throws, SnapshotError and StateError, all before anything is changed.
Applied ApplyChange(const Change& change, const Plan& plan, std::int64_t time);
// The same in the life in which the change was planned. For the last look the driver is loaded anew, to see what it keeps,
// but its file is read by the one that has written it, unless the driver learns its settings from there.
Applied ApplyChange(const Change& change, const Plan& plan, std::int64_t time, DeviceLife& life);

}  // namespace devhost

#endif
