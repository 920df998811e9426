#ifndef DEVHOST_DRIVER_LOG_CALLER_H
#define DEVHOST_DRIVER_LOG_CALLER_H

namespace devhost {

// An address in the code that logs the line which the log sink is being given on this thread; null outside of that.
const void* LogCaller() noexcept;

}  // namespace devhost

#endif
