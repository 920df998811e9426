#ifndef DEVHOST_ENGINE_DRIVER_CODE_H
#define DEVHOST_ENGINE_DRIVER_CODE_H

#include <atomic>
#include <cstdint>
#include <string>

#include "devhost/driver/DriverModule.h"

namespace devhost {

// Says, for as long as it lives, whose code lies in a module, so that a signal handler can find that out. Made and destroyed
// on one thread at a time.
class DriverCode {
 public:
  // `title`: driver 12 "kitchen". A driver of the program has no code of its own.
  DriverCode(const DriverModule& module, const std::string& title);
  ~DriverCode();
  DriverCode(const DriverCode&) = delete;
  DriverCode& operator=(const DriverCode&) = delete;

  // Whose code that is: driver 12 "kitchen", or one of the drivers of module "PATH" where several share it; "" when it is no
  // driver's. `name` is where the text goes, cut to its size. Safe in a signal handler.
  static void Name(const void* code, char* name, std::size_t size) noexcept;
  // Whether any driver is loaded that has code of its own. Safe in a signal handler.
  static bool IsLoaded() noexcept;

 private:
  const CodeRange m_range;
  const std::string m_title;
  const std::string m_shared;  // how all drivers of the module are named together
  std::atomic<DriverCode*> m_next{nullptr};
};

}  // namespace devhost

#endif
