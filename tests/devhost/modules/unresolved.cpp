#include "tests/devhost/modules/TestModule.h"

// Called, not merely named, and linked to be bound at the first call: only a host that binds everything at once notices.
IDriver* NobodyOffersThis(IInstanceManager& instanceManager) __attribute__((visibility("default")));
static IDriver* CreateLater(IInstanceManager& instanceManager) {
  return NobodyOffersThis(instanceManager);
}
TEST_EXPORT DriverCreationFunc GetCreationFunc() {
  return &CreateLater;
}
TEST_EXPORT const char* const versionString;
const char* const versionString = "1";
