#ifndef DEVHOST_ENGINE_WATCHED_PROCESS_H
#define DEVHOST_ENGINE_WATCHED_PROCESS_H

#include <signal.h>

namespace devhost {

// A process whose end another one sees, so that a driver cannot end it without a word, or with success: however it does
// that, also by a system call of its own, by an `exec` or after the host has gone.
class WatchedProcess {
 public:
  // Goes on in a child process, and returns only there. This process waits for the child, and ends as the child does: with
  // the same status, or by the same signal. Where the child ends before TellEnd, it says on standard error during which call
  // into a driver that was, and a status of 0 becomes that of EndWatch::SetExitStatus.
  //
  // Signals that are sent to this process reach the child, except kAsk. When the child is stopped, this process stops; when
  // this process is killed, so is the child. While a debugger watches this process, or when the system starts no child, it
  // returns in this process, which then is watched by nobody. Called first in a program, on its only thread.
  static void Begin() noexcept;

  // Has the waiting process write a line to standard error when a call into a driver is under way: the call, then
  // kHasNotReturned. It is for those who wait for a child that may hang. A process without this class ignores it.
  static constexpr int kAsk = SIGURG;
  static constexpr char kHasNotReturned[] = " has not returned";

  // The host has done its work: from now on the process ends with `status`, whatever the code does that still runs.
  static void TellEnd(int status) noexcept;
};

}  // namespace devhost

#endif
