#ifndef HOST_IINSTANCE_MANAGER_H
#define HOST_IINSTANCE_MANAGER_H

#include "host/HostApi.h"

// Where drivers publish interfaces and find those of others. Implemented by the host; every driver gets a manager of its own
// when it is created, valid until the driver is destroyed, and all of them share one directory.
//
// What travels as `void*` is always a pointer to exactly the interface that the identifier names: convert to that interface
// before you publish, convert back to it after `Query`. An object with several bases has several addresses.
//
// The order of the operations is a binary contract.
class H7_HOST_API IInstanceManager {
 public:
  // Publishes `instance` under the identifier text `iid` (copied). False, and nothing published, when either is null or this
  // driver has published that identifier already. The instance is not owned; withdraw it before it goes away.
  /* 1 */ virtual bool RegisterQuery(const char* iid, void* instance) = 0;
  // Withdraws what this driver published under `iid`; nothing happens when it published nothing.
  /* 2 */ virtual void UnregisterQuery(const char* iid) = 0;
  // What is published under `iid` by any driver, the earliest first; null when nothing is. The pointer is borrowed and holds
  // only until its publisher withdraws it, so ask again before each use.
  /* 3 */ virtual void* Query(const char* iid) = 0;

 protected:
  ~IInstanceManager() = default;
};

#endif
