#include "tests/devhost/conform/broken/Fault.h"

const char* const kFault = FAULT;

#ifdef FAULT_NEEDS_MORE
// No host offers it.
void OfNoHost();

void DoFault() {
  OfNoHost();
}
#else
void DoFault() {}
#endif
