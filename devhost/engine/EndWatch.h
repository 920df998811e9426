#ifndef DEVHOST_ENGINE_END_WATCH_H
#define DEVHOST_ENGINE_END_WATCH_H

#include <exception>

namespace devhost {

// Says on standard error, for as long as it lives, who has ended the process and which call into a driver was under way then
// (EndNote): when the process crashes, runs out of stack in a call into a driver, is terminated by an exception that nobody
// catches, or is ended by `exit`, `_exit` and the like. A driver that ends the process takes the rest of a script with it,
// so a status of 0 becomes 1, or what was set instead. A crash ends the process as it would have without the watch: with the
// same signal, the same core, the same handlers of others. What a forked child does is its own business.
//
// A driver that makes the system call itself, or replaces the program by another one, escapes.
class EndWatch {
 public:
  // One at a time lives in a process. The thread that makes it gets a stack on which running out of stack can be reported.
  EndWatch();
  ~EndWatch();
  EndWatch(const EndWatch&) = delete;
  EndWatch& operator=(const EndWatch&) = delete;

  // Replaces the status 1, for a program where that means something else.
  static void SetExitStatus(int status);

  // `caller`, an address in some code, ends the process with `status`: says so, once, when a driver does. Returns the status
  // to end it with.
  static int OnEnd(const void* caller, int status) noexcept;
  // `caller` is about to call abort: it is named when the signal comes.
  static void OnAbort(const void* caller) noexcept;

 private:
  const std::terminate_handler m_terminate;  // of before
};

}  // namespace devhost

#endif
