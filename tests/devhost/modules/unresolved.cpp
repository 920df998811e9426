#include "tests/devhost/modules/TestModule.h"

IDriver* NobodyOffersThis(IInstanceManager& instanceManager) __attribute__((visibility("default")));
TEST_EXPORT DriverCreationFunc GetCreationFunc() {
  return &NobodyOffersThis;
}
TEST_EXPORT const char* const versionString;
const char* const versionString = "1";
