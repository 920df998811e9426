#ifndef HOST_IVARIABLE_MANAGER_H
#define HOST_IVARIABLE_MANAGER_H

#include <string>

#include "host/HostApi.h"
#include "host/IVariable.h"

// The project's variables. No variable has 0 as one of its ids. Implemented by the host, valid as long as the driver that
// asks. The order of the operations is a binary contract.
class H7_HOST_API IVariableManager {
 public:
  // The variable of that pair of ids, ordinary or user variable; null when the project has none. Not owned.
  /* 1 */ virtual IVariable* FindVariable(unsigned long deviceId, unsigned long variableId) = 0;
  // Replaces `xml` with a document whose root has one child element for each variable: the ordinary ones, or with
  // `userVariables` the user variables, hidden ones included. Each child has the named values "deviceid", "variableid" and
  // "hidden" (0 or 1), all numbers.
  /* 2 */ virtual void ListVariables(std::string& xml, bool userVariables) = 0;

 protected:
  ~IVariableManager() = default;
};

#endif
