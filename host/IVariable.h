#ifndef HOST_IVARIABLE_H
#define HOST_IVARIABLE_H

#include "host/DualKey.h"
#include "host/HostApi.h"

// One variable of the project. The host implements and owns it. A driver that keeps the pointer must not use it after
// "OnVariableRemoved", "OnItemRemoved" (all variables of that device) or "OnProjectLoaded". The order of the operations is a
// binary contract.
class H7_HOST_API IVariable {
 public:
  // The pair (device id, variable id).
  /* 1 */ virtual DualKey<unsigned long, unsigned long> GetIds() const = 0;
  // UTF-8, ended by NUL. The variable owns the storage: copy the text before the next call into the host.
  /* 2 */ virtual const char* GetName() const = 0;
  // The trap-enabled flag itself, for reading and writing.
  /* 3 */ virtual bool& TrapEnabled() = 0;

 protected:
  ~IVariable() = default;
};

#endif
