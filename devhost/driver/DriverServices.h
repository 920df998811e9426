#ifndef DEVHOST_DRIVER_DRIVER_SERVICES_H
#define DEVHOST_DRIVER_DRIVER_SERVICES_H

#include "host/DriverMultiplicity.h"
#include "host/HostApi.h"
#include "host/INode.h"

class H7BaseDriver;
class IDriverManager;
class IInstanceManager;
class ISystemEventCallback;
class IVariableManager;
class UICmdDispatcher;

namespace devhost {

// What stands behind the protected operations of one driver's `H7BaseDriver`. The base's bodies find it by asking the
// driver's instance manager for `DriverServices_IID` once, while the driver is constructed; they do nothing but pass each
// call on. So the base of a driver can be tested, and a driver can be tested, against any implementation of this class.
//
// Implementations may throw from every operation except BaseDestroyed; the exception goes through the driver's call.
class H7_HOST_API DriverServices {
 public:
  virtual ~DriverServices();

  // The base of the driver was constructed / its Initialize was called / it is being destroyed.
  virtual void BaseConstructed(H7BaseDriver& driver, DriverMultiplicity multiplicity) = 0;
  virtual void BaseInitialized(unsigned long driverId) = 0;
  virtual void BaseDestroyed() noexcept = 0;

  virtual IInstanceManager& GetInstanceManager() = 0;
  virtual IDriverManager& GetDriverManager() = 0;
  virtual IVariableManager* GetVariableManager() = 0;
  virtual UICmdDispatcher& GetUICmdDispatcher() = 0;

  virtual void RegisterListener(ISystemEventCallback& listener, unsigned int eventId, unsigned long reserved) = 0;
  virtual void UnregisterListener(ISystemEventCallback& listener, unsigned int eventId, unsigned long reserved) = 0;
  virtual void SendDataToUI(const H7XML::INode& data) = 0;
  virtual void InvalidateState() = 0;
};

// Under this identifier a driver's instance manager answers with its `DriverServices*`.
inline constexpr char DriverServices_IID[] = "devhost.DriverServices";

}  // namespace devhost

#endif
