#ifndef HOST_IDRIVER_H
#define HOST_IDRIVER_H

#include "host/HostApi.h"
#include "host/INode.h"
#include "host/auto_com.h"

class IInstanceManager;

// The factory contract: how the host sees a driver that a module has made. Implemented by every driver, called by the host.
//
// A module exports, unmangled, `GetCreationFunc` and `versionString`. The life of a driver, all on one thread:
//   1. the host loads the module, binding all its symbols, and calls `GetCreationFunc()`;
//   2. it calls the function that it got, and owns the driver from then on. A driver registers its listeners and gets its
//      managers while it is constructed; it publishes, notifies and registers commands from `Initialize` on;
//   3. it calls `Initialize`, once or several times;
//   4. it calls `RegisterCommands`;
//   5. commands, events and calls from other drivers come in, nested but never overlapping; the host calls `GetPersistState`
//      some time after the driver has called `DmInvalidateState`, and before a stop;
//   6. it deletes the driver through this interface, in the reverse order of creation, and then unloads the module.
//
// The pointer need not be the driver's first address. The order of the operations is a binary contract.
class H7_HOST_API IDriver {
 public:
  virtual ~IDriver();
  // `driverId`: the driver's id in the project. `config`: its configuration element in the project, borrowed for the call.
  // `persisted`: the state that `GetPersistState` returned in an earlier life, borrowed for the call, or null. Returns 0 for
  // success; the host reports anything else and goes on.
  virtual int Initialize(unsigned long driverId, H7XML::INode& config, H7XML::INode* persisted) = 0;
  // Returns the state for the next life, or an empty handle when there is nothing to keep. The host owns the result. The
  // argument is reserved and 0.
  virtual h7::auto_com<H7XML::INode> GetPersistState(unsigned long reserved) = 0;
  // The driver binds its commands on its `UICmdDispatcher`. Called once, after `Initialize`.
  virtual void RegisterCommands() = 0;
};

// Makes a driver. `instanceManager` belongs to this driver alone and outlives it. When an exception comes out, no driver was
// made.
typedef IDriver* (*DriverCreationFunc)(IInstanceManager& instanceManager);

// What a module exports under the name "GetCreationFunc".
typedef DriverCreationFunc (*GetCreationFuncFunc)();

#endif
