#ifndef HOST_IINSTANCE_MANAGER_H
#define HOST_IINSTANCE_MANAGER_H

#include "host/HostApi.h"

// Where drivers publish interfaces and find those of others. Implemented by the host. Every driver gets a manager of its own
// when it is created, valid until the driver is destroyed. All managers share one directory.
//
// A `void*` always points to exactly the interface that the identifier names: convert to that interface before you publish,
// and convert back to it after `Query`. An object with several bases has several addresses.
//
// The order of the operations is a binary contract.
class H7_HOST_API IInstanceManager {
 public:
  // Publishes `instance` under the identifier text `iid` (copied). Returns false and publishes nothing when either is null,
  // or when this driver has already published that identifier. Withdraw the instance before you destroy it.
  /* 1 */ virtual bool RegisterQuery(const char* iid, void* instance) = 0;
  // Withdraws what this driver published under `iid`; does nothing when it published nothing.
  /* 2 */ virtual void UnregisterQuery(const char* iid) = 0;
  // Returns what any driver has published under `iid`, the earliest when there are several, or null. The pointer is borrowed
  // and valid only until its publisher withdraws it, so ask again before each use.
  /* 3 */ virtual void* Query(const char* iid) = 0;

 protected:
  ~IInstanceManager() = default;
};

#endif
