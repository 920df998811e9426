#ifndef TESTS_FAULTS_SWEEP_H
#define TESTS_FAULTS_SWEEP_H

#include <functional>
#include <string>
#include <vector>

#include "tests/faults/Attempt.h"

namespace faults {

// The result of a sweep.
struct SweepResult {
  unsigned int faults = 0;              // how many places failed, each in an attempt of its own
  std::vector<std::string> complaints;  // each with k; the sweep ends after the first attempt with complaints
};

// Makes attempts with k = 1, 2, ... until nothing is left to fail. `attempt(k, complaints)` returns whether anything failed.
// Adds a complaint when an attempt does not release every block of memory.
SweepResult Sweep(const std::function<bool(unsigned int k, std::vector<std::string>& complaints)>& attempt);

// Runs the operation again and again, each time in a new world, and lets its first, second, ... allocation or call fail.
// When a device calls back, counting starts there. After each attempt it checks that
//  - the fault came out as it was thrown, or was dropped where it must be;
//  - no more XML objects are held than before, and none was released too often;
//  - only the registry holds records, and registry and maps contain nothing unexpected;
//  - the repeated operation has the same result and leaves the same state as in a world without faults;
//  - the agent answers other calls, and its destruction leaves nothing in the host and no device managed;
//  - every block of memory was released once.
SweepResult Sweep(const Operation& operation, const FaultKind& kind, const CallBack* callBack = nullptr);

}  // namespace faults

#endif
