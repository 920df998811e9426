#ifndef TESTS_DEVHOST_CONFORM_BROKEN_FAULT_H
#define TESTS_DEVHOST_CONFORM_BROKEN_FAULT_H

// The check that this module breaks.
extern const char* const kFault;

// What of the fault cannot be chosen while the module runs.
void DoFault();

#endif
