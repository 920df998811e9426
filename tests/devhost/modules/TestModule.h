#ifndef TESTS_DEVHOST_MODULES_TEST_MODULE_H
#define TESTS_DEVHOST_MODULES_TEST_MODULE_H

#include "host/IDriver.h"

#define TEST_EXPORT extern "C" __attribute__((visibility("default")))

// The two exports of a module whose driver is `Class`.
#define TEST_MODULE(Class)                                              \
  static IDriver* CreateTestDriver(IInstanceManager& instanceManager) { \
    return new Class(instanceManager);                                  \
  }                                                                     \
  TEST_EXPORT DriverCreationFunc GetCreationFunc() {                    \
    return &CreateTestDriver;                                           \
  }                                                                     \
  TEST_EXPORT const char* const versionString;                          \
  const char* const versionString = "1.2.3.4"

#endif
