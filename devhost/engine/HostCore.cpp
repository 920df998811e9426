#include "devhost/engine/HostCore.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "devhost/engine/LoadedDriver.h"

namespace devhost {

namespace {

void Erase(std::string& text, const std::string& part) {
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at)) {
    text.erase(at, part.size());
  }
}

}  // namespace

void HostCore::Emit(const LoadedDriver* driver, Occurrence occurrence, const Drivers& candidates) {
  if (driver != nullptr) {
    occurrence.driverId = driver->Entry().id;
    occurrence.driverName = driver->Entry().name;
  } else {
    for (const std::shared_ptr<LoadedDriver>& candidate : candidates) {
      occurrence.candidates.push_back(candidate->Entry().name);
    }
  }
  const std::lock_guard<std::recursive_mutex> lock(m_emitting);
  m_observer.OnOccurrence(occurrence);
}

void HostCore::Report(const LoadedDriver* driver, const std::string& what, const Drivers& candidates) {
  ++m_mannersCount;
  const CallGate::Call call = gate.Innermost();
  Occurrence occurrence{Occurrence::Kind::Manners, 0, "", "", what};
  occurrence.call = call.Description();
  if (driver != nullptr) {
    // The report carries its driver: only others are named in its text.
    Erase(occurrence.text, " of " + driver->Title());
    Erase(occurrence.call, " of " + driver->Title());
  } else if (!candidates.empty()) {
    occurrence.text.insert(0, "one of them: ");
  }
  Emit(driver, std::move(occurrence), candidates);
}

HostCore::Drivers HostCore::OwnersOf(const void* code) const {
  Drivers owners;
  const CodePlace place(code);
  const std::lock_guard<std::mutex> lock(m_driversMutex);
  std::copy_if(m_drivers.begin(), m_drivers.end(), std::back_inserter(owners),
               [&](const std::shared_ptr<LoadedDriver>& driver) { return driver->OwnsCode(place); });
  return owners;
}

std::shared_ptr<LoadedDriver> HostCore::CalledOf(const Drivers& drivers) const {
  const void* const called = gate.Innermost().driver;
  const auto found = std::find_if(drivers.begin(), drivers.end(),
                                  [&](const std::shared_ptr<LoadedDriver>& driver) { return driver.get() == called; });
  return found != drivers.end() ? *found : nullptr;
}

std::shared_ptr<LoadedDriver> HostCore::DriverOf(const void* code) const {
  const Drivers owners = OwnersOf(code);
  if (owners.size() == 1) {
    return owners.front();
  }
  const std::lock_guard<std::mutex> lock(m_driversMutex);
  return CalledOf(owners.empty() ? m_drivers : owners);
}

HostCore::Drivers HostCore::Snapshot() const {
  const std::lock_guard<std::mutex> lock(m_driversMutex);
  return m_drivers;
}

void HostCore::Add(const std::shared_ptr<LoadedDriver>& driver) {
  const std::lock_guard<std::mutex> lock(m_driversMutex);
  m_drivers.push_back(driver);
  m_byId[driver->Entry().id] = {driver, m_loaded++};
}

void HostCore::Remove(const LoadedDriver& driver) {
  const std::lock_guard<std::mutex> lock(m_driversMutex);
  // The latest goes first, as a rule.
  const auto found = std::find_if(m_drivers.rbegin(), m_drivers.rend(),
                                  [&](const std::shared_ptr<LoadedDriver>& each) { return each.get() == &driver; });
  if (found != m_drivers.rend()) {
    m_drivers.erase(std::next(found).base());
  }
  const auto known = m_byId.find(driver.Entry().id);
  if (known != m_byId.end() && known->second.driver.get() == &driver) {
    m_invalidStates.erase(known->second.number);
    m_byId.erase(known);
  }
}

std::shared_ptr<LoadedDriver> HostCore::Find(unsigned long driverId) const {
  const std::lock_guard<std::mutex> lock(m_driversMutex);
  const auto found = m_byId.find(driverId);
  return found == m_byId.end() ? nullptr : found->second.driver;
}

HostCore::Drivers HostCore::WithInvalidStates() const {
  const std::lock_guard<std::mutex> lock(m_driversMutex);
  Drivers drivers;
  for (const auto& [number, driver] : m_invalidStates) {
    drivers.push_back(driver);
  }
  return drivers;
}

void HostCore::NoteStateInvalid(const LoadedDriver& driver) {
  const std::lock_guard<std::mutex> lock(m_driversMutex);
  const auto found = m_byId.find(driver.Entry().id);
  if (found != m_byId.end()) {
    m_invalidStates[found->second.number] = found->second.driver;
  }
}

void HostCore::NoteStateTaken(const LoadedDriver& driver) {
  const std::lock_guard<std::mutex> lock(m_driversMutex);
  const auto found = m_byId.find(driver.Entry().id);
  if (found != m_byId.end()) {
    m_invalidStates.erase(found->second.number);
  }
}

CallScope::CallScope(HostCore& core, const LoadedDriver* driver, const std::string& operation) : m_core(core) {
  const CallGate::Call call{driver, operation, driver != nullptr ? driver->Title() : ""};
  CallGate::Call innermost;
  if (m_core.gate.Enter(call, innermost)) {
    return;
  }
  const std::string problem = "came from a second thread while " + innermost.Description() + " is under way; it was refused";
  const std::string what = call.Description() + " " + problem;
  m_core.Report(driver, what);
  throw HostError(what, driver != nullptr ? &driver->Entry() : nullptr, operation, problem);
}

CallScope::~CallScope() {
  m_core.gate.Leave();
}

}  // namespace devhost
