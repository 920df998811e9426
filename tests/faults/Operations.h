#ifndef TESTS_FAULTS_OPERATIONS_H
#define TESTS_FAULTS_OPERATIONS_H

#include <ostream>
#include <string>
#include <vector>

#include "tests/faults/World.h"

namespace faults {

// What happens to a fault that strikes inside an operation.
enum class Passes {
  Through,  // it comes out of the operation, unchanged
  Never     // the operation drops it, because it must not throw or its result does not matter
};

// One operation of the agent, as its host or a device calls it.
struct Operation {
  const char* name;
  Stage stage;  // the stage of the agent's life before the operation
  Passes passes;
  void (*run)(World&);  // leaves its result in the world's `reply` and `answer`
};

// For GoogleTest.
inline void PrintTo(const Operation& operation, std::ostream* out) {
  *out << operation.name;
}

const std::vector<Operation>& Operations();
// Throws std::out_of_range for a name that no operation has.
const Operation& OperationOf(const std::string& name);

}  // namespace faults

#endif
