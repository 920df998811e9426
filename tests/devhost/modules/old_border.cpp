// Built with the old std::string. It passes one to a function of the host, which offers that function for the new one only.
#include "host/H7XML.h"
#include "tests/devhost/modules/TestModule.h"

static IDriver* CreateNone(IInstanceManager&) {
  H7XML::CreateXmlNode("Old", "");
  return nullptr;
}
TEST_EXPORT DriverCreationFunc GetCreationFunc() {
  return &CreateNone;
}
TEST_EXPORT const char* const versionString;
const char* const versionString = "1";
