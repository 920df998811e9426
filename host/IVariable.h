#ifndef HOST_IVARIABLE_H
#define HOST_IVARIABLE_H

#include "host/DualKey.h"
#include "host/HostApi.h"

// One variable of the project. Implemented and owned by the host; a driver that keeps the pointer does not
// follow it any more after "OnVariableRemoved", "OnItemRemoved" (all variables of that device) or "OnProjectLoaded". The
// order of the operations is a binary contract.
class H7_HOST_API IVariable {
 public:
  // (device id, variable id).
  /* 1 */ virtual DualKey<unsigned long, unsigned long> GetIds() const = 0;
  // UTF-8, ended by NUL, the variable's own storage: copy it before the next call into the host.
  /* 2 */ virtual const char* GetName() const = 0;
  // The trap-enabled flag itself, to read and to write.
  /* 3 */ virtual bool& TrapEnabled() = 0;

 protected:
  ~IVariable() = default;
};

#endif
