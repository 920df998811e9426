#ifndef DRIVERS_HOSTPROBE_PROBED_DRIVER_H
#define DRIVERS_HOSTPROBE_PROBED_DRIVER_H

#include "host/H7BaseAgentDriver.h"

namespace drivers {

// A driver whose way to the host is open to the checks that work for it.
class ProbedDriver : public H7BaseAgentDriver {
 public:
  using H7BaseDriver::ConSendDataToUI;
  using H7BaseDriver::DmInvalidateState;
  using H7BaseDriver::GetDriverManager;
  using H7BaseDriver::GetInstanceManager;
  using H7BaseDriver::GetVariableManager;
  using H7BaseDriver::RegisterListener;
  using H7BaseDriver::UnregisterListener;

  // The host has begun to call the driver, or an object of it; `operation` is for messages.
  virtual void NoteCall(const char* operation) = 0;

 protected:
  using H7BaseAgentDriver::H7BaseAgentDriver;
};

}  // namespace drivers

#endif
