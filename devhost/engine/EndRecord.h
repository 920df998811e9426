#ifndef DEVHOST_ENGINE_END_RECORD_H
#define DEVHOST_ENGINE_END_RECORD_H

#include <atomic>
#include <cstddef>

namespace devhost {

// What is known about the end of the process. It holds no pointers, because another process reads it: WatchedProcess.
struct EndRecord {
  static constexpr std::size_t kMostNotes = 64;
  static constexpr std::size_t kLongestNote = 256;

  char notes[kMostNotes][kLongestNote] = {};  // calls into drivers that are under way, the innermost last
  std::atomic<std::size_t> count{0};          // of these calls; those that nest deeper are counted and not noted
  std::atomic<int> endStatus{1};              // of the process, in the place of 0, when a driver ends it
  std::atomic<bool> isSaid{false};            // somebody has said who ended it
  std::atomic<bool> isTold{false};            // the host has come to its own end
  std::atomic<int> toldStatus{0};             // and the process ends with this status

  // The innermost call that is under way, or the deepest that is noted; "" when none is. Safe in a signal handler.
  const char* UnderWay() const noexcept;

  // The record of this process. Safe in a signal handler.
  static EndRecord& OfProcess() noexcept;
  // From now on the record is in memory that this process shares with its children. Does nothing when there is no memory
  // for that. Called while the process has one thread.
  static void Share() noexcept;
  // From now on, children that are forked begin with a copy of their own, so they do not write into the shared record.
  static void KeepFromChildren() noexcept;
};

}  // namespace devhost

#endif
