#ifndef DRIVERS_HOSTPROBE_IPROBE_H
#define DRIVERS_HOSTPROBE_IPROBE_H

#include <string>

namespace drivers {

// What a probe offers to the other drivers of its module, published under `IProbe_IID`.
class IProbe {
 public:
  virtual unsigned long GetDriverId() const = 0;
  // Uses every service of its host while `caller` is being called by the host, and calls `caller` back. Returns what is
  // wrong.
  virtual std::string UseServices(IProbe& caller) = 0;
  // The same, called back: the end of the nesting.
  virtual std::string UseServicesAgain() = 0;
  // Tries to withdraw what another driver has published under `iid`, then returns what its own manager finds there.
  virtual void* TryToWithdraw(const char* iid) = 0;

 protected:
  ~IProbe() = default;
};

constexpr char IProbe_IID[] = "host-probe.IProbe";

}  // namespace drivers

#endif
