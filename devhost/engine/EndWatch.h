#ifndef DEVHOST_ENGINE_END_WATCH_H
#define DEVHOST_ENGINE_END_WATCH_H

#include <signal.h>

#include <exception>

namespace devhost {

// Says on standard error, for as long as it lives, who has ended the process and which call into a driver was under way then
// (EndNote): when the process crashes, runs out of stack in a call into a driver, is terminated by an exception that nobody
// catches, or is ended by `exit`, `_exit` and the like. A driver that ends the process takes the rest of a script with it,
// so a status of 0 becomes 1, or what was set instead. A crash ends the process as it would have without the watch: with the
// same signal, the same core, the same handlers of others; nobody can ignore it. What a forked child does is its own
// business, unless it returns from the call.
//
// What escapes, because it runs no code of this process, is left to WatchedProcess.
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
  // The thread that made a call into a driver is ended during it, by pthread_exit or pthread_cancel: says so and ends the
  // process.
  [[noreturn]] static void OnEndOfThread() noexcept;
  // `caller` is about to call abort: it is named when the signal comes.
  static void OnAbort(const void* caller) noexcept;
  // `caller` sets an action for a signal. Returns the one to set: that of the watch where a driver would leave a crash to
  // the system or ignore it, else `action`.
  static const struct sigaction* ActionOf(const void* caller, int signal, const struct sigaction* action) noexcept;
  // A call into a driver returns in another process than it began in. Says so and ends this process, when there is a watch.
  static void OnReturnOfCopy() noexcept;

 private:
  const std::terminate_handler m_terminate;  // of before
};

}  // namespace devhost

#endif
