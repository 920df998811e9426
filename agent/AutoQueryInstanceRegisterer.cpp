#include "agent/AutoQueryInstanceRegisterer.h"

#include <utility>

#include "agent/Quietly.h"
#include "host/IInstanceManager.h"

AutoQueryInstanceRegisterer::AutoQueryInstanceRegisterer(IInstanceManager& manager) : m_manager(manager) {}

AutoQueryInstanceRegisterer::~AutoQueryInstanceRegisterer() {
  for (const std::string& name : m_names) {
    Quietly([this, &name] { m_manager.UnregisterQuery(name.c_str()); });
  }
}

bool AutoQueryInstanceRegisterer::RegisterQuery(const char* iid, void* instance) {
  // The name is stored first: without memory for it, a published instance would never be withdrawn.
  std::string name(iid == nullptr ? "" : iid);
  m_names.reserve(m_names.size() + 1);
  const bool registered = m_manager.RegisterQuery(iid, instance);
  if (registered) {
    m_names.push_back(std::move(name));
  }
  return registered;
}
