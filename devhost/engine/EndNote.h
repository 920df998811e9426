#ifndef DEVHOST_ENGINE_END_NOTE_H
#define DEVHOST_ENGINE_END_NOTE_H

#include <sys/types.h>

#include <string_view>

namespace devhost {

// Names a call into a driver that is under way, for as long as it lives, in case the process ends during it: see EndWatch.
// Notes are made on one thread at a time and nest. They are kept in the EndRecord, so that a signal handler and the process
// that watches can read them; of calls that nest deeper than that memory reaches, the last that it holds is named.
class EndNote {
 public:
  // `operation`: command "X"; `title`: driver 12 "kitchen". Both are copied, cut where they are very long, with control
  // characters replaced.
  EndNote(std::string_view operation, std::string_view title) noexcept;
  // Ends the process when it is a child that a driver has forked during the call.
  ~EndNote();
  EndNote(const EndNote&) = delete;
  EndNote& operator=(const EndNote&) = delete;

  // The innermost call that is under way, as command "X" of driver 12 "kitchen"; "" when none is. Safe in a signal handler.
  static const char* UnderWay() noexcept;
  // Whether that call is under way on this thread. Safe in a signal handler.
  static bool IsOnThisThread() noexcept;

 private:
  const pid_t m_process;
};

}  // namespace devhost

#endif
