#ifndef DEVHOST_CONSOLE_EVENT_RING_H
#define DEVHOST_CONSOLE_EVENT_RING_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>

namespace devhost {

// The last events, each as the bytes that clients get. Clients hold no events of their own: each knows only how far it has
// come, so that one that reads slowly costs nothing.
class EventRing {
 public:
  static constexpr std::size_t kMostEvents = 1024;
  static constexpr std::size_t kMostBytes = std::size_t{1024} * 1024;

  // What a client gets that has come to an event.
  struct Batch {
    std::string bytes;       // whole events, "" when there is nothing new
    std::uint64_t last = 0;  // how far the client is then
    bool hasMissed = false;  // the ring no longer has the next one that the client needs
  };

  // Adds an event with the next number; `json` is on one line. Older events give way to it.
  void Add(const std::string& json);
  // The number of the event that comes next, from 1 on.
  std::uint64_t NextNumber() const { return m_first + m_events.size(); }
  // Events behind number `after`, some 64 KiB of them at most. A number that no event has had yet is one of another console:
  // that client has missed events as well.
  Batch After(std::uint64_t after) const;

 private:
  static constexpr std::size_t kBatch = std::size_t{64} * 1024;

  std::deque<std::string> m_events;
  std::uint64_t m_first = 1;  // the number of the first in m_events
  std::size_t m_bytes = 0;
};

}  // namespace devhost

#endif
