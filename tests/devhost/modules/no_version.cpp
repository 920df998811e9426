#include "tests/devhost/modules/TestModule.h"

TEST_EXPORT DriverCreationFunc GetCreationFunc() {
  return nullptr;
}
