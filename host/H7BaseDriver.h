#ifndef HOST_H7_BASE_DRIVER_H
#define HOST_H7_BASE_DRIVER_H

#include "host/DriverMultiplicity.h"
#include "host/HostApi.h"
#include "host/INode.h"
#include "host/auto_com.h"

class IDriverManager;
class IInstanceManager;
class ISystemEventCallback;
class IVariableManager;
class UICmdDispatcher;

// The base of all drivers. The host defines the bodies. The order of the virtual operations is a binary contract.
//
// A driver derives from this class and from `IDriver` (`H7BaseAgentDriver` already does both) and overrides what it needs.
// Its `Initialize` calls the base's first. Through the protected operations, the driver calls its host. Calling one that is
// marked "from Initialize on" earlier is bad manners: the host reports it and does nothing else.
class H7_HOST_API H7BaseDriver {
 public:
  virtual ~H7BaseDriver();
  // As in `IDriver`. The base remembers the id and returns 0.
  virtual int Initialize(unsigned long driverId, H7XML::INode& config, H7XML::INode* persisted);
  // The base keeps nothing and returns an empty handle.
  virtual h7::auto_com<H7XML::INode> GetPersistState(unsigned long reserved);
  // The base has no commands.
  virtual void RegisterCommands();

 protected:
  H7BaseDriver(IInstanceManager& instanceManager, DriverMultiplicity multiplicity);
  H7BaseDriver(const H7BaseDriver&) = delete;
  H7BaseDriver& operator=(const H7BaseDriver&) = delete;

  // The managers belong to the host and outlive the driver.
  IInstanceManager& GetInstanceManager() const;
  IDriverManager& GetDriverManager() const;
  IVariableManager* GetVariableManager() const;
  UICmdDispatcher& GetUICmdDispatcher() const;

  // Delivers every event with the id `eventId` (see host/SystemEventId.h) to `listener`, until it is unregistered with the
  // same arguments. The host does not own the listener. The last argument is reserved and 0.
  void RegisterListener(ISystemEventCallback& listener, unsigned int eventId, unsigned long reserved);
  void UnregisterListener(ISystemEventCallback& listener, unsigned int eventId, unsigned long reserved);

  // From Initialize on: sends a notification to the configuration tool. The node is borrowed for the call.
  void ConSendDataToUI(const H7XML::INode& data);

  // From Initialize on: tells the host that the result of `GetPersistState` has changed. The host asks for it later, when
  // the current call into drivers has returned.
  void DmInvalidateState();

 private:
  // The host's record of this driver.
  void* m_host;
};

#endif
