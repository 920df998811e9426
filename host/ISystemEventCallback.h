#ifndef HOST_ISYSTEM_EVENT_CALLBACK_H
#define HOST_ISYSTEM_EVENT_CALLBACK_H

#include "host/HostApi.h"
#include "host/INode.h"

// Receives system events. Implemented by drivers, called by the host for every event id that the listener was registered for
// (`H7BaseDriver::RegisterListener`), one event at a time. The slot is a binary contract.
class H7_HOST_API ISystemEventCallback {
 public:
  // `event` carries the event's name as named value "name". Each of its child elements is one parameter: the parameter's
  // name as named value "name", its value as the child's own text. The node is the host's and valid for the call.
  /* 1 */ virtual void OnSystemEvent(H7XML::INode& event) = 0;

 protected:
  ~ISystemEventCallback() = default;
};

#endif
