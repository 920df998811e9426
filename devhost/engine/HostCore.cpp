#include "devhost/engine/HostCore.h"

#include <algorithm>
#include <boost/algorithm/string.hpp>
#include <optional>
#include <set>
#include <utility>

#include "devhost/engine/LoadedDriver.h"
#include "devhost/text/Words.h"

namespace devhost {

namespace {

// Devices of one kind have the same commands: they are listed once, for the first of them.
std::string KnownCommands(const HostCore::Drivers& drivers) {
  std::set<std::vector<std::string>> listed;
  std::vector<std::string> texts;
  for (const std::shared_ptr<LoadedDriver>& driver : drivers) {
    const std::vector<std::string> commands = driver->Commands().Names();
    if (!commands.empty() && listed.insert(commands).second) {
      texts.push_back(driver->Entry().name + ": " + boost::join(commands, ", "));
    }
  }
  return texts.empty() ? "none" : boost::join(texts, "; ");
}

}  // namespace

std::string CommandTitle(const std::string& name) {
  return "command \"" + name + "\"";
}

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
    boost::erase_all(occurrence.text, " of " + driver->Title());
    boost::erase_all(occurrence.call, " of " + driver->Title());
  } else if (!candidates.empty()) {
    occurrence.text.insert(0, "one of them: ");
  }
  Emit(driver, std::move(occurrence), candidates);
}

HostCore::Drivers HostCore::OwnersOf(const void* code) const {
  const CodePlace place(code);
  Drivers owners;
  const std::lock_guard<std::mutex> lock(m_driversMutex);
  for (const auto& [number, driver] : m_drivers) {
    if (driver->OwnsCode(place)) {
      owners.push_back(driver);
    }
  }
  return owners;
}

std::shared_ptr<LoadedDriver> HostCore::DriverOf(const void* code) const {
  const Drivers owners = OwnersOf(code);
  if (owners.size() == 1) {
    return owners.front();
  }
  const void* const called = gate.Innermost().driver;
  for (const std::shared_ptr<LoadedDriver>& driver : owners.empty() ? Snapshot() : owners) {
    if (driver.get() == called) {
      return driver;
    }
  }
  return nullptr;
}

HostCore::Drivers HostCore::Snapshot() const {
  const std::lock_guard<std::mutex> lock(m_driversMutex);
  Drivers drivers;
  drivers.reserve(m_drivers.size());
  for (const auto& [number, driver] : m_drivers) {
    drivers.push_back(driver);
  }
  return drivers;
}

void HostCore::Add(const std::shared_ptr<LoadedDriver>& driver) {
  const std::lock_guard<std::mutex> lock(m_driversMutex);
  m_numbers[driver->Entry().id] = m_loaded;
  m_drivers[m_loaded++] = driver;
}

void HostCore::Remove(const LoadedDriver& driver) {
  const std::lock_guard<std::mutex> lock(m_driversMutex);
  const auto found = m_numbers.find(driver.Entry().id);
  if (found != m_numbers.end()) {
    m_invalidStates.erase(found->second);
    m_drivers.erase(found->second);
    m_numbers.erase(found);
  }
}

std::shared_ptr<LoadedDriver> HostCore::Share(const void* record) const {
  const std::lock_guard<std::mutex> lock(m_driversMutex);
  const auto found =
      std::find_if(m_drivers.begin(), m_drivers.end(), [&](const auto& each) { return each.second.get() == record; });
  return found == m_drivers.end() ? nullptr : found->second;
}

std::shared_ptr<LoadedDriver> HostCore::Find(unsigned long driverId) const {
  const std::lock_guard<std::mutex> lock(m_driversMutex);
  const auto found = m_numbers.find(driverId);
  return found == m_numbers.end() ? nullptr : m_drivers.at(found->second);
}

std::shared_ptr<LoadedDriver> HostCore::Get(unsigned long driverId, const std::string& call) const {
  std::shared_ptr<LoadedDriver> found = Find(driverId);
  if (found != nullptr) {
    return found;
  }
  constexpr std::size_t kMostListed = 20;
  std::vector<std::string> known;
  for (const std::shared_ptr<LoadedDriver>& driver : Snapshot()) {
    known.push_back(known.size() == kMostListed ? "..." : driver->Title());
    if (known.size() > kMostListed) {
      break;
    }
  }
  throw HostError("there is no driver " + std::to_string(driverId) +
                      (known.empty() ? "; none is loaded" : "; loaded are: " + boost::join(known, ", ")),
                  call);
}

std::shared_ptr<LoadedDriver> HostCore::FindByCommand(const std::string& name) const {
  const Drivers drivers = Snapshot();
  Drivers owners;
  std::vector<std::string> titles;
  for (const std::shared_ptr<LoadedDriver>& driver : drivers) {
    if (driver->Commands().Find(name) != nullptr) {
      owners.push_back(driver);
      titles.push_back(driver->Title());
    }
  }
  if (owners.empty()) {
    throw HostError("no driver has registered the command " + Quoted(name) + "; the commands are: " + KnownCommands(drivers),
                    CommandTitle(name));
  }
  if (owners.size() != 1) {
    throw HostError("several drivers have registered the command " + Quoted(name) + ": " + boost::join(titles, ", ") +
                        "; name one of them",
                    CommandTitle(name));
  }
  return owners.front();
}

HostCore::Drivers HostCore::WithInvalidStates() const {
  const std::lock_guard<std::mutex> lock(m_driversMutex);
  Drivers drivers;
  for (const std::size_t number : m_invalidStates) {
    drivers.push_back(m_drivers.at(number));
  }
  return drivers;
}

void HostCore::NoteState(const LoadedDriver& driver, bool invalid) {
  const std::lock_guard<std::mutex> lock(m_driversMutex);
  const auto found = m_numbers.find(driver.Entry().id);
  if (found != m_numbers.end() && invalid) {
    m_invalidStates.insert(found->second);
  } else if (found != m_numbers.end()) {
    m_invalidStates.erase(found->second);
  }
}

CallScope::CallScope(HostCore& core, const LoadedDriver* driver, const std::string& operation) : m_core(core) {
  const CallGate::Call call{driver, operation, driver != nullptr ? driver->Title() : ""};
  const std::optional<CallGate::Call> other = m_core.gate.Enter(call);
  if (!other) {
    return;
  }
  const std::string problem = "came from a second thread while " + other->Description() + " is under way; it was refused";
  const std::string what = call.Description() + " " + problem;
  m_core.Report(driver, what);
  throw HostError(what, driver != nullptr ? &driver->Entry() : nullptr, operation, problem);
}

CallScope::~CallScope() {
  m_core.gate.Leave();
}

}  // namespace devhost
