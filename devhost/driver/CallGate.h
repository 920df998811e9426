#ifndef DEVHOST_DRIVER_CALL_GATE_H
#define DEVHOST_DRIVER_CALL_GATE_H

#include <atomic>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace devhost {

// Lets one thread at a time into the drivers; calls of that thread may nest.
class CallGate {
 public:
  // A call into a driver that is under way.
  struct Call {
    const void* driver = nullptr;  // the host's record of it; null: none in particular
    std::string operation;         // command "X"; empty: no call
    std::string title;             // driver 1 "agent"; empty when no driver is concerned

    // command "X" of driver 1 "agent"
    std::string Description() const { return title.empty() ? operation : operation + " of " + title; }
  };

  // Nothing when the call may go on, until Leave. Where another thread is inside: what that one is doing, and the call must
  // not go on.
  std::optional<Call> Enter(const Call& call);
  // The same for a call that a driver makes. While no call is under way, no driver has anything to do: then only the thread
  // of the last Enter, or else the one that made the gate, may go on. Another one is kept out by a call without an
  // operation.
  std::optional<Call> EnterFromDriver(const Call& call);
  void Leave() noexcept;

  // Whether EnterFromDriver would let this thread go on.
  bool IsOpen() const;

  // Whether a call is under way on this thread.
  bool IsInside() const { return m_owner.load() == std::this_thread::get_id(); }
  // The innermost call into a driver that is under way, on whatever thread; without an operation when there is none.
  Call Innermost() const;
  // The driver of that call; null when there is none, or it is into no driver.
  const void* InnermostDriver() const;
  // The description of the call around that one; "" when there is none.
  std::string Around() const;

 private:
  mutable std::mutex m_mutex;
  std::atomic<std::thread::id> m_home{std::this_thread::get_id()};  // of the host
  std::atomic<std::thread::id> m_owner{std::thread::id()};          // none when nobody is inside
  std::vector<Call> m_calls;
};

}  // namespace devhost

#endif
