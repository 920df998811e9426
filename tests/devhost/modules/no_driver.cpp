#include "tests/devhost/modules/TestModule.h"

static IDriver* CreateNone(IInstanceManager&) {
  return nullptr;
}
TEST_EXPORT DriverCreationFunc GetCreationFunc() {
  return &CreateNone;
}
TEST_EXPORT const char* const versionString;
const char* const versionString = "1";
