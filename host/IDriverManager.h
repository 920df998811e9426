#ifndef HOST_IDRIVER_MANAGER_H
#define HOST_IDRIVER_MANAGER_H

#include <cstddef>
#include <vector>

#include "host/HostApi.h"

// Lists the drivers of the project that implement an interface. Implemented by the host; valid as long as the driver that
// asks. The order of the operations is a binary contract.
class H7_HOST_API IDriverManager {
 public:
  // Replaces the content of `instances` with what the drivers have published under `iid`, ordered by driver id. Each is a
  // pointer to the interface that `iid` names. The pointers are borrowed and valid until the current call into drivers
  // returns. `scope` is 0: the whole project.
  /* 1 */ virtual void FindDrivers(unsigned long scope, const char* iid, std::vector<void*>& instances) = 0;

  // The same, as a vector of that interface.
  template <class Interface>
  std::vector<Interface*> ListDrivers(unsigned long scope, const char* iid) {
    std::vector<void*> instances;
    FindDrivers(scope, iid, instances);
    std::vector<Interface*> drivers;
    drivers.reserve(instances.size());
    for (std::size_t i = 0; i != instances.size(); ++i) {
      drivers.push_back(static_cast<Interface*>(instances[i]));
    }
    return drivers;
  }

 protected:
  ~IDriverManager() = default;
};

#endif
