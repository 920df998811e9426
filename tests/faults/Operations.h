#ifndef TESTS_FAULTS_OPERATIONS_H
#define TESTS_FAULTS_OPERATIONS_H

#include <ostream>
#include <string>
#include <vector>

#include "tests/faults/World.h"

namespace faults {

// What becomes of a fault that strikes inside an operation.
enum class Passes {
  Through,  // it comes out of the operation, unchanged
  Never     // it is kept in: what is called must not throw, or has nothing to say in the end
};

// One operation of the agent, as its host or a device calls it.
struct Operation {
  const char* name;
  Stage stage;  // where it begins
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
