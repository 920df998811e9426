#include "devhost/base/VariableManager.h"

namespace devhost {

IVariable* VariableManager::FindVariable(unsigned long, unsigned long) {
  return nullptr;
}

void VariableManager::ListVariables(std::string& xml, bool) {
  xml = "<variables/>";
}

}  // namespace devhost
