#ifndef DEVHOST_OPERATIONS_DRIFT_H
#define DEVHOST_OPERATIONS_DRIFT_H

#include <string>
#include <vector>

#include "devhost/check/Finding.h"
#include "devhost/operations/History.h"

namespace devhost {

// How a device has moved away from what it should be. All texts are masked unless secrets are to be shown.
struct Drift {
  enum class Verdict {
    None,
    Some,
    Unknown  // the device cannot be reached now, or does not answer
  };

  Verdict verdict = Verdict::Unknown;
  bool hasSection = true;             // the file has a section of the agent
  std::string section;                // from the file to what the agent would write for the device's settings; "" when equal
  std::vector<Finding> overridden;    // lines that keep the daemon from serving what the section says
  unsigned long snapshot = 0;         // of the last change that has finished; 0 when there is none
  CopyDifference since;               // what has changed since then
  std::vector<std::string> messages;  // why nobody knows; what waits; a section that is missing; snapshots that are damaged
};

// Compares device, file and what the daemon makes of the file with each other, and with what the last change has left. The
// time stamp of the section is not drift. The device is only asked. Throws what PlanChange and ReadSnapshots throw.
Drift FindDrift(const Target& target);
// The same in a life of the device that goes on.
Drift FindDrift(const Target& target, DeviceLife& life);

}  // namespace devhost

#endif
