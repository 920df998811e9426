#ifndef DEVHOST_ENGINE_HOST_VARIABLES_H
#define DEVHOST_ENGINE_HOST_VARIABLES_H

#include <cstddef>
#include <list>
#include <string>
#include <vector>

#include "devhost/driver/VariableManager.h"
#include "devhost/engine/Host.h"

namespace devhost {

// Adds, finds and removes the variables of a host; Host sends the events. Throws HostError where a variable is missing or in
// the way.
//
// Drivers hold pointers to variables. So a variable that is removed is first taken out, and no look-up or list gives it any
// more; then the event is sent while the variable still stands; then it is freed.
class HostVariables {
 public:
  // Variables that were taken out, and still stand where they were.
  using Taken = std::list<std::vector<VariableManager::Taken>>::const_iterator;

  // Drivers see the list as XML, which holds at most twice as many elements.
  static constexpr std::size_t kMostVariables = 2000000;

  // `manager` outlives it.
  explicit HostVariables(VariableManager& manager, std::size_t most = kMostVariables) : m_manager(manager), m_most(most) {}

  // Throws when the pair of ids is taken, an id has more than 32 bits or there are too many variables.
  void Add(const VariableEntry& entry);
  // The variable stays with the host. `call` is what the error names when there is no such variable.
  Variable& Get(unsigned long deviceId, unsigned long variableId, const std::string& call = "") const;
  // In the order of their ids.
  std::vector<VariableEntry> List(Host::Flags flags) const;

  // Takes out a variable of that kind, or the ordinary variables of a device. They stand, unseen, until they are freed or
  // the host is gone.
  Taken Take(unsigned long deviceId, unsigned long variableId, bool user);
  Taken TakeDevice(unsigned long deviceId) { return m_taken.insert(m_taken.end(), m_manager.TakeDevice(deviceId)); }
  // Frees them. Every driver has dropped its pointers.
  void Free(Taken taken) { m_taken.erase(taken); }

 private:
  VariableManager& m_manager;
  const std::size_t m_most;
  std::list<std::vector<VariableManager::Taken>> m_taken;
};

}  // namespace devhost

#endif
