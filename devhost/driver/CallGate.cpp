#include "devhost/driver/CallGate.h"

#include <algorithm>

namespace devhost {

std::optional<CallGate::Call> CallGate::Enter(const Call& call) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (!m_calls.empty() && !IsInside()) {
    return m_calls.back();
  }
  m_calls.push_back(call);
  m_owner = std::this_thread::get_id();
  m_home = std::this_thread::get_id();
  return std::nullopt;
}

std::optional<CallGate::Call> CallGate::EnterFromDriver(const Call& call) {
  return !IsInside() && m_home.load() != std::this_thread::get_id() ? Innermost() : Enter(call);
}

bool CallGate::IsOpen() const {
  return IsInside() || (m_owner.load() == std::thread::id() && m_home.load() == std::this_thread::get_id());
}

void CallGate::Leave() noexcept {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_calls.pop_back();
  if (m_calls.empty()) {
    m_owner = std::thread::id();
  }
}

CallGate::Call CallGate::Innermost() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  const auto found = std::find_if(m_calls.rbegin(), m_calls.rend(), [](const Call& call) { return call.driver != nullptr; });
  return found != m_calls.rend() ? *found : m_calls.empty() ? Call() : m_calls.back();
}

const void* CallGate::InnermostDriver() const {
  return Innermost().driver;
}

std::string CallGate::Around() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_calls.size() < 2 ? "" : m_calls[m_calls.size() - 2].Description();
}

}  // namespace devhost
