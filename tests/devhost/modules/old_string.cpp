// Built with the old std::string. It takes no text from the host, so the loader finds nothing wrong with it.
#include <string>

#include "tests/devhost/modules/TestModule.h"

static std::string s_name;

static IDriver* CreateNone(IInstanceManager&) {
  s_name += "!";
  return nullptr;
}
TEST_EXPORT DriverCreationFunc GetCreationFunc() {
  return &CreateNone;
}
TEST_EXPORT const char* const versionString;
const char* const versionString = "1";
