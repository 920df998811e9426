#include "devhost/console/EventRing.h"

namespace devhost {

void EventRing::Add(const std::string& json) {
  m_events.push_back("id: " + std::to_string(NextNumber()) + "\ndata: " + json + "\n\n");
  m_bytes += m_events.back().size();
  while (m_events.size() > kMostEvents || (m_bytes > kMostBytes && m_events.size() > 1)) {
    m_bytes -= m_events.front().size();
    m_events.pop_front();
    ++m_first;
  }
}

EventRing::Batch EventRing::After(std::uint64_t after) const {
  Batch batch;
  batch.hasMissed = after + 1 < m_first || after >= NextNumber();
  batch.last = batch.hasMissed ? m_first - 1 : after;
  for (auto i = static_cast<std::size_t>(batch.last + 1 - m_first); i < m_events.size() && batch.bytes.size() < kBatch;
       ++i) {
    batch.bytes += m_events[i];
    ++batch.last;
  }
  return batch;
}

}  // namespace devhost
