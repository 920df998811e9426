#ifndef TESTS_FAULTS_SWEEP_H
#define TESTS_FAULTS_SWEEP_H

#include <functional>
#include <string>
#include <vector>

#include "tests/faults/Attempt.h"

namespace faults {

// What a sweep saw.
struct SweepResult {
  unsigned int faults = 0;              // how many places failed, each in an attempt of its own
  std::vector<std::string> complaints;  // each with k; the sweep ends after the first attempt that has any
};

// Makes attempts with k = 1, 2, ... until nothing is left to fail. `attempt(k, complaints)` returns whether anything failed.
// Complains also when an attempt does not give back every block of memory.
SweepResult Sweep(const std::function<bool(unsigned int k, std::vector<std::string>& complaints)>& attempt);

// Lets the operation run in a new world again and again, with its first, second, ... allocation or call failing,
// counted from where the device calls back if one does.
// After each attempt it looks whether
//  - the fault came out as it was thrown, or was kept in where it has to be;
//  - no XML object is held that was not held before, and none was released too often;
//  - no record is held by anybody but the registry, and registry and maps hold nothing that nobody put there;
//  - the operation, done again, gives and leaves what it does in a world without faults;
//  - the agent answers other calls, and its destruction leaves nothing in the host and no device managed;
//  - every block of memory was given back, once.
SweepResult Sweep(const Operation& operation, const FaultKind& kind, const CallBack* callBack = nullptr);

}  // namespace faults

#endif
