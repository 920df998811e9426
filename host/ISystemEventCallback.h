#ifndef HOST_ISYSTEM_EVENT_CALLBACK_H
#define HOST_ISYSTEM_EVENT_CALLBACK_H

#include "host/HostApi.h"
#include "host/INode.h"

// Receives system events. Drivers implement it. The host calls it for every event id that the listener was registered for
// (`H7BaseDriver::RegisterListener`), one event at a time. The slot is a binary contract.
class H7_HOST_API ISystemEventCallback {
 public:
  // The named value "name" of `event` is the event's name. Each of its child elements is one parameter: the child's named
  // value "name" is the parameter's name, the child's text is the value. The host owns the node; it is valid for the call.
  /* 1 */ virtual void OnSystemEvent(H7XML::INode& event) = 0;

 protected:
  ~ISystemEventCallback() = default;
};

#endif
