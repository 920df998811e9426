#ifndef FUZZ_AGENT_SESSION_H
#define FUZZ_AGENT_SESSION_H

#include <vector>

#include "fuzz/agent/World.h"
#include "fuzz/support/Input.h"

namespace fuzz {

// One operation with what is planned for the calls that it makes.
struct Step {
  Operation operation;
  std::vector<Plan> plans;
};

// An operation is a letter and what it needs; README.md has the list.
Operation ReadOperation(Input& input);

// An operation, how many plans there are (up to 3), and for each the number of the call and 0 or 1: a fault, or 1 and an
// operation.
Step ReadStep(Input& input);

}  // namespace fuzz

#endif
