#ifndef DEVHOST_DRIVER_VARIABLE_MANAGER_H
#define DEVHOST_DRIVER_VARIABLE_MANAGER_H

#include <map>
#include <string>
#include <vector>

#include "devhost/driver/VariableEntry.h"
#include "host/IVariable.h"
#include "host/IVariableManager.h"

namespace devhost {

// A variable as drivers see it.
class Variable final : public IVariable {
 public:
  explicit Variable(const VariableEntry& entry) : m_entry(entry), m_initialFlag(entry.trapEnabled) {}
  Variable(const Variable&) = delete;
  Variable& operator=(const Variable&) = delete;

  DualKey<unsigned long, unsigned long> GetIds() const override { return {m_entry.deviceId, m_entry.variableId}; }
  const char* GetName() const override { return m_entry.name.c_str(); }
  bool& TrapEnabled() override { return m_entry.trapEnabled; }

  // With the flag as it is now.
  const VariableEntry& Entry() const { return m_entry; }
  // The flag that it was made with.
  bool InitialFlag() const { return m_initialFlag; }

 private:
  VariableEntry m_entry;
  const bool m_initialFlag;
};

// The project's variables, as drivers see them, in the order of their ids. A pair of ids stands for one variable at most,
// ordinary or user variable, because a look-up by the pair can give only one.
class VariableManager : public IVariableManager {
 public:
  using Key = DualKey<unsigned long, unsigned long>;
  using Table = std::map<Key, Variable>;
  // A variable that was taken out: nobody finds it any more, and it goes with this handle.
  using Taken = Table::node_type;

  virtual ~VariableManager() = default;
  IVariable* FindVariable(unsigned long deviceId, unsigned long variableId) override;
  void ListVariables(std::string& xml, bool userVariables) override;

  // The variable with all that the host knows; null when there is none. It stays with the manager.
  Variable* Find(unsigned long deviceId, unsigned long variableId);
  const Table& All() const { return m_variables; }

  // False, and nothing added, when there is a variable of that pair.
  bool Add(const VariableEntry& entry);
  // Takes a variable out; an empty handle when there is none.
  Taken Take(unsigned long deviceId, unsigned long variableId);
  // Takes out a device's ordinary variables.
  std::vector<Taken> TakeDevice(unsigned long deviceId);

 private:
  Table m_variables;
};

}  // namespace devhost

#endif
