// Built with the checked standard library, in which a list is another type than in the host.
#include <vector>

#include "tests/devhost/modules/TestModule.h"

static std::vector<int> s_list;

static IDriver* CreateNone(IInstanceManager&) {
  s_list.push_back(1);
  return s_list.begin() == s_list.end() ? nullptr : nullptr;
}
TEST_EXPORT DriverCreationFunc GetCreationFunc() {
  return &CreateNone;
}
TEST_EXPORT const char* const versionString;
const char* const versionString = "1";
