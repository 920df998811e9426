#ifndef TESTS_DEVHOST_SUPPORT_TEST_MODULES_H
#define TESTS_DEVHOST_SUPPORT_TEST_MODULES_H

#include <dlfcn.h>

#include <string>

#include "devhost/driver/DriverEntry.h"

// The path of a module of tests/devhost/modules/.
inline std::string TestModule(const std::string& name) {
  return std::string(TEST_MODULE_FOLDER) + "/" + name + ".so";
}

// A driver of such a module, named after it: well_behaved7.
inline devhost::DriverEntry TestDriver(unsigned long id, const std::string& module,
                                       const std::string& config = "<config/>") {
  return {id, module + std::to_string(id), TestModule(module), config};
}

// Whether such a module is loaded.
inline bool IsInProcess(const std::string& module) {
  void* const handle = dlopen(TestModule(module).c_str(), RTLD_NOW | RTLD_NOLOAD);
  if (handle != nullptr) {
    dlclose(handle);
  }
  return handle != nullptr;
}

#endif
