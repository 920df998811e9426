#ifndef DEVHOST_ENGINE_HOST_VARIABLES_H
#define DEVHOST_ENGINE_HOST_VARIABLES_H

#include <cstddef>
#include <string>
#include <vector>

#include "devhost/driver/VariableManager.h"
#include "devhost/engine/Host.h"

namespace devhost {

// What happens to the variables of a host, apart from the events. Throws HostError where a variable is missing or in the
// way.
//
// Drivers hold pointers to variables. So a variable that is removed is first taken out, where no look-up and no list gives
// it any more; then the event is sent, while the variable still stands; then it is released.
class HostVariables {
 public:
  using Taken = std::vector<VariableManager::Taken>;

  // Drivers get to see the list as XML, which holds no more than twice as many elements.
  static constexpr std::size_t kMostVariables = 2000000;

  // `manager` outlives it.
  explicit HostVariables(VariableManager& manager, std::size_t most = kMostVariables) : m_manager(manager), m_most(most) {}

  void Add(const VariableEntry& entry);
  // `call` is what the error names when there is no such variable.
  Variable& Get(unsigned long deviceId, unsigned long variableId, const std::string& call = "") const;
  std::vector<VariableEntry> List(Host::Flags flags) const;

  Taken Take(unsigned long deviceId, unsigned long variableId, bool user);
  Taken TakeDevice(unsigned long deviceId) { return m_manager.TakeDevice(deviceId); }
  // Frees what was taken out. With `heard` false some driver may not have dropped its pointer, and the variables stay,
  // unseen, until the host is gone.
  void Release(Taken taken, bool heard);

 private:
  VariableManager& m_manager;
  const std::size_t m_most;
  Taken m_retired;
};

}  // namespace devhost

#endif
