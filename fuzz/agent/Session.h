#ifndef FUZZ_AGENT_SESSION_H
#define FUZZ_AGENT_SESSION_H

#include <vector>

#include "fuzz/agent/World.h"
#include "fuzz/support/Input.h"

namespace fuzz {

// One operation, with plans for the calls that it makes.
struct Step {
  Operation operation;
  std::vector<Plan> plans;
};

// Reads an operation: a letter and its arguments; README.md lists them.
Operation ReadOperation(Input& input);

// Reads an operation, the number of its plans (up to 3) and the plans. A plan is the number of the call, then 0 for a fault,
// or 1 and an operation.
Step ReadStep(Input& input);

}  // namespace fuzz

#endif
