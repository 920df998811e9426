#ifndef HOST_IVARIABLE_MANAGER_H
#define HOST_IVARIABLE_MANAGER_H

#include <string>

#include "host/HostApi.h"
#include "host/IVariable.h"

// The project's variables. No variable has an id of 0. Implemented by the host; valid as long as the driver that asks. The
// order of the operations is a binary contract.
class H7_HOST_API IVariableManager {
 public:
  // Returns the variable with that pair of ids, ordinary or user variable, or null. The caller does not own it.
  /* 1 */ virtual IVariable* FindVariable(unsigned long deviceId, unsigned long variableId) = 0;
  // Replaces `xml` with a document whose root has one child element for each ordinary variable, or, with `userVariables`,
  // for each user variable. Hidden variables are included. Each child has the named values "deviceid", "variableid" and
  // "hidden" (0 or 1), all numbers.
  /* 2 */ virtual void ListVariables(std::string& xml, bool userVariables) = 0;

 protected:
  ~IVariableManager() = default;
};

#endif
