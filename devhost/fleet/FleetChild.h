#ifndef DEVHOST_FLEET_FLEET_CHILD_H
#define DEVHOST_FLEET_FLEET_CHILD_H

#include <chrono>
#include <optional>

#include "devhost/fleet/FleetRun.h"
#include "devhost/system/FileDescriptor.h"
#include "devhost/system/KeptProcess.h"
#include "devhost/system/MemoryFile.h"

namespace devhost {

// One program of a fleet that runs. It has ended, with all that it started, when this is gone.
class FleetChild {
 public:
  using Clock = std::chrono::steady_clock;

  // Starts it. Throws std::system_error with the reason when it does not start.
  FleetChild(const FleetTask& task, Clock::time_point deadline);

  // To be waited for: there is something to read, or it has ended. -1 for the output once that is at its end.
  int Output() const { return m_isAtEnd ? -1 : m_from.Get(); }
  int EndEvent() const { return m_process->EndEvent(); }
  Clock::time_point Deadline() const { return m_deadline; }
  std::chrono::milliseconds Time() const {
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - m_start);
  }

  // Reads what there is, and ends the program where it is late or has written too much. Returns how it has ended, once it
  // has.
  std::optional<FleetEnd> Look();

 private:
  void Read();

  const Clock::time_point m_start = Clock::now();
  const Clock::time_point m_deadline;
  const MemoryFile m_input;
  FileDescriptor m_from;
  std::optional<KeptProcess> m_process;
  FleetEnd m_end;
  bool m_isAtEnd = false;  // of its output
};

}  // namespace devhost

#endif
