#ifndef DEVHOST_BASE_VARIABLE_MANAGER_H
#define DEVHOST_BASE_VARIABLE_MANAGER_H

#include "host/IVariableManager.h"

namespace devhost {

// The project's variables, as drivers see them. A project has none yet.
class VariableManager : public IVariableManager {
 public:
  virtual ~VariableManager() = default;
  IVariable* FindVariable(unsigned long deviceId, unsigned long variableId) override;
  void ListVariables(std::string& xml, bool userVariables) override;
};

}  // namespace devhost

#endif
