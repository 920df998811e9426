#include "bench/LoadedAgent.h"

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>

namespace {

[[noreturn]] void Fail(const char* what) {
  std::fprintf(stderr, "the agent's module: %s failed\n", what);
  std::exit(1);
}

}  // namespace

LoadedAgent::LoadedAgent(const char* module, IInstanceManager& host, H7XML::INode& config)
    : m_handle(::dlopen(module, RTLD_NOW | RTLD_LOCAL)) {
  if (m_handle == nullptr) {
    Fail("dlopen");
  }
  const auto factory = reinterpret_cast<DriverCreationFunc (*)()>(::dlsym(m_handle, "GetCreationFunc"));
  m_driver = factory()(host);
  if (m_driver->Initialize(1, config, nullptr) != 0) {
    Fail("Initialize");
  }
  m_driver->RegisterCommands();
}

LoadedAgent::~LoadedAgent() {
  delete m_driver;
  ::dlclose(m_handle);
}
