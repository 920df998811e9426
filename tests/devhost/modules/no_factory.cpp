#include "tests/devhost/modules/TestModule.h"

TEST_EXPORT const char* const versionString;
const char* const versionString = "1";
