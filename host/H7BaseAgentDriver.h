#ifndef HOST_H7_BASE_AGENT_DRIVER_H
#define HOST_H7_BASE_AGENT_DRIVER_H

#include "host/H7BaseDriver.h"
#include "host/HostApi.h"
#include "host/IDriver.h"

// The base of drivers of the agent kind, which belong to the project and not to one of its devices. The host defines the
// bodies. `H7BaseDriver` stands first, so a driver's first address is not the `IDriver` that its factory returns.
class H7_HOST_API H7BaseAgentDriver : public H7BaseDriver, public IDriver {
 public:
  ~H7BaseAgentDriver() override;
  int Initialize(unsigned long driverId, H7XML::INode& config, H7XML::INode* persisted) override;
  h7::auto_com<H7XML::INode> GetPersistState(unsigned long reserved) override;
  void RegisterCommands() override;

 protected:
  H7BaseAgentDriver(IInstanceManager& instanceManager, DriverMultiplicity multiplicity);
};

#endif
