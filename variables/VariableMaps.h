#ifndef VARIABLES_VARIABLE_MAPS_H
#define VARIABLES_VARIABLE_MAPS_H

#include <map>

#include "host/DualKey.h"

class IVariable;

// (device id, variable id). Every map is ordered by device, and by variable within a device.
typedef DualKey<unsigned long, unsigned long> VariableKey;

// The host's variables. The pointers are not owned. A null pointer means that the host did not know the variable when it was
// added.
typedef std::map<VariableKey, IVariable*> VariableMap;

// Saved trap-enabled flags.
typedef std::map<VariableKey, bool> TrapEnabledMap;

#endif
