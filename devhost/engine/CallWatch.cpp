#include "devhost/engine/CallWatch.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <iterator>
#include <memory>
#include <utility>

#include "agent/ISNMPConfigurationAgent.h"
#include "devhost/engine/CallFronts.h"
#include "devhost/engine/HostCore.h"
#include "devhost/engine/LoadedDriver.h"
#include "host/ISupportSNMP.h"

namespace devhost {
namespace {

// What stays the same while an exception passes through several calls; null for one that is not of C++. The exception
// itself is not kept, because the module that it is of may go.
const void* CurrentException() noexcept {
  const std::exception_ptr exception = std::current_exception();
  const void* address = nullptr;
  static_assert(sizeof exception == sizeof address, "a handle of an exception is a pointer here");
  std::memcpy(&address, static_cast<const void*>(&exception), sizeof address);
  return address;
}

bool IsWatched(const std::string& iid) {
  return iid == ISNMPConfigurationAgent_IID || iid == ISupportSNMP_IID;
}

}  // namespace

void CallWatch::NotePublished(const LoadedDriver& driver, const std::string& iid, void* instance) {
  if (!IsWatched(iid)) {
    return;
  }
  const bool isAgent = iid == ISNMPConfigurationAgent_IID;
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (isAgent) {
    Agent& agent = m_agents[instance];
    agent.driver = &driver;
    if (agent.front == nullptr) {
      agent.front = MakeAgentFront(*this, *static_cast<ISNMPConfigurationAgent*>(instance));
    }
  }
  Claim(instance, driver);
}

void CallWatch::NoteUnpublished(const LoadedDriver& driver, const std::string& iid, void* instance) {
  if (IsWatched(iid)) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    GiveUp(instance, &driver);
  }
}

void CallWatch::Claim(const void* instance, const LoadedDriver& driver) {
  Owner& owner = m_owners.try_emplace(instance, Owner{&driver, 0}).first->second;
  owner.claims += owner.driver == &driver ? 1 : 0;
}

void CallWatch::GiveUp(const void* instance, const LoadedDriver* driver) noexcept {
  const auto owner = m_owners.find(instance);
  if (owner != m_owners.end() && owner->second.driver == driver && --owner->second.claims == 0) {
    m_owners.erase(owner);
  }
}

void* CallWatch::Shown(const LoadedDriver& driver, const std::string& iid, void* instance) {
  if (OwnerOf(instance) == nullptr || OwnerOf(instance) == &driver) {
    return instance;
  }
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (iid == ISNMPConfigurationAgent_IID) {
    return m_agents.at(instance).front.get();
  }
  const bool isAgents = std::any_of(m_agents.begin(), m_agents.end(), [&](const auto& agent) {
    const auto owner = m_owners.find(agent.first);
    return owner != m_owners.end() && owner->second.driver == &driver;
  });
  const bool calls = isAgents || driver.GetsFronts();
  return calls && iid == ISupportSNMP_IID ? FrontOf(*static_cast<ISupportSNMP*>(instance)) : instance;
}

ISupportSNMP* CallWatch::FrontOf(ISupportSNMP& device) {
  std::shared_ptr<ISupportSNMP>& front = m_devices[&device];
  if (front == nullptr) {
    front = MakeDeviceFront(*this, device);
  }
  return front.get();
}

ISupportSNMP* CallWatch::NoteAnnounced(ISNMPConfigurationAgent& agent, unsigned long deviceId, ISupportSNMP* device,
                                       const void* caller) noexcept {
  if (device == nullptr) {
    return nullptr;
  }
  try {
    const Announced announced(&agent, deviceId);
    const LoadedDriver* const driver = FindOwner(announced, device, caller);
    const std::lock_guard<std::mutex> lock(m_mutex);
    Device& known = m_announced[announced];
    known.driver = known.driver == nullptr ? driver : known.driver;
    if (driver == nullptr) {
      return device;
    }
    if (known.instance != device) {
      Claim(device, *driver);
      GiveUp(std::exchange(known.instance, device), known.driver);
    }
    return FrontOf(*device);
  } catch (...) {
    // A device for which there is no memory is not watched.
    return device;
  }
}

void CallWatch::NoteWithdrawn(ISNMPConfigurationAgent& agent, unsigned long deviceId) noexcept {
  const std::lock_guard<std::mutex> lock(m_mutex);
  const auto found = m_announced.find({&agent, deviceId});
  if (found != m_announced.end()) {
    GiveUp(found->second.instance, found->second.driver);
    m_announced.erase(found);
  }
}

void CallWatch::NoteDestroyed(const LoadedDriver& driver) {
  const std::vector<void*> agents = m_core.directory.List(ISNMPConfigurationAgent_IID);
  for (const Announced& announced : Forget(driver)) {
    // An agent that has withdrawn itself is about to go, and calls no device any more.
    if (std::find(agents.begin(), agents.end(), announced.first) == agents.end()) {
      continue;
    }
    m_core.Report(&driver, "left its device " + std::to_string(announced.second) +
                               " with the agent behind: it did not call DeleteSNMPDevice; the device was withdrawn for it");
    const WatchedCall call(*this, announced.first, "DeleteSNMPDevice");
    try {
      announced.first->DeleteSNMPDevice(announced.second);
    } catch (...) {
      // The agent has forgotten the device before it tells anybody.
    }
  }
}

std::vector<CallWatch::Announced> CallWatch::Forget(const LoadedDriver& driver) {
  std::vector<Announced> left;
  const std::lock_guard<std::mutex> lock(m_mutex);
  for (auto each = m_announced.begin(); each != m_announced.end();) {
    const auto agent = m_owners.find(each->first.first);
    const bool isAgentGone = agent != m_owners.end() && agent->second.driver == &driver;
    const bool isOwn = each->second.driver == &driver;
    if (!isAgentGone && isOwn) {
      left.push_back(each->first);
    }
    if (isAgentGone && !isOwn) {
      GiveUp(each->second.instance, each->second.driver);
    }
    each = isAgentGone || isOwn ? m_announced.erase(each) : std::next(each);
  }
  for (auto& [instance, agent] : m_agents) {
    agent.driver = agent.driver == &driver ? nullptr : agent.driver;
  }
  for (auto each = m_owners.begin(); each != m_owners.end();) {
    each = each->second.driver == &driver ? m_owners.erase(each) : std::next(each);
  }
  return left;
}

bool CallWatch::Allows(ISNMPConfigurationAgent& agent, const char* operation, unsigned long deviceId,
                       const void* caller) noexcept {
  const bool isGone = IsGone(agent);
  if (m_core.gate.IsOpen() && !isGone) {
    return true;
  }
  try {
    const std::shared_ptr<LoadedDriver> called = m_core.Share(OwnerOf(&agent));
    const HostCore::Drivers culprits = m_core.OwnersOf(caller);
    const std::shared_ptr<LoadedDriver> driver = culprits.size() == 1 ? culprits.front()
                                                 : isGone             ? m_core.DriverOf(caller)
                                                                      : m_core.Share(DriverOf({&agent, deviceId}));
    m_core.Report(driver.get(),
                  std::string(operation) + (called != nullptr ? " of " + called->Title() : "") + " was called " +
                      (isGone ? "after the agent was gone" : "from a second thread") + "; it was refused",
                  culprits);
  } catch (...) {
    // A report for which there is no memory is lost.
  }
  return false;
}

bool CallWatch::IsGone(const ISNMPConfigurationAgent& agent) const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  const auto front = m_agents.find(&agent);
  return front != m_agents.end() && front->second.driver == nullptr;
}

std::optional<CallWatch::Origin> CallWatch::OriginOfException() const {
  const void* const exception = CurrentException();
  return exception != nullptr && m_origin && m_origin->exception == exception ? m_origin : std::nullopt;
}

const LoadedDriver* CallWatch::OwnerOf(const void* instance) const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  const auto found = m_owners.find(instance);
  return found == m_owners.end() ? nullptr : found->second.driver;
}

unsigned long CallWatch::OwnersId(const void* instance) const {
  const LoadedDriver* const owner = OwnerOf(instance);
  return owner == nullptr ? 0 : owner->Entry().id;
}

const LoadedDriver* CallWatch::DriverOf(const Announced& announced) const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  const auto found = m_announced.find(announced);
  return found == m_announced.end() ? nullptr : found->second.driver;
}

// A device is that of the driver that has published it. One that is not published goes by the code of its class, or else by
// the code that announces it. Where several drivers share that module, it is the driver that is being called, or has the id
// of the device. The class may be of a library, and a driver's last act a jump: then it is the driver that is being called.
const LoadedDriver* CallWatch::FindOwner(const Announced& announced, const void* device, const void* caller) const {
  const LoadedDriver* const publisher = OwnerOf(device);
  if (publisher != nullptr) {
    return publisher;
  }
  const void* table = nullptr;
  std::memcpy(&table, device, sizeof table);
  const void* const called = m_core.gate.InnermostDriver();
  for (const void* const code : {table, caller}) {
    const LoadedDriver* namesake = nullptr;
    const HostCore::Drivers owners = m_core.OwnersOf(code);
    for (const std::shared_ptr<LoadedDriver>& owner : owners) {
      if (owners.size() == 1 || owner.get() == called) {
        return owner.get();
      }
      namesake = owner->Entry().id == announced.second ? owner.get() : namesake;
    }
    if (namesake != nullptr) {
      return namesake;
    }
  }
  return called == OwnerOf(announced.first) ? nullptr : m_core.Share(called).get();
}

WatchedCall::WatchedCall(CallWatch& watch, const void* instance, const char* operation) noexcept : m_operation(operation) {
  if (!watch.m_core.gate.IsOpen()) {
    return;
  }
  m_driver = watch.OwnerOf(instance);
  if (m_driver == nullptr || m_driver == watch.m_core.gate.InnermostDriver()) {
    return;
  }
  try {
    const std::string title = m_driver->Title();
    if (!watch.m_core.gate.EnterFromDriver({m_driver, operation, title})) {
      m_note.emplace(operation, title);
      m_watch = &watch;
    }
  } catch (...) {
    // A call for which there is no memory is made, and not noted.
  }
}

WatchedCall::~WatchedCall() {
  if (m_watch != nullptr) {
    m_note.reset();
    m_watch->m_core.gate.Leave();
  }
}

void WatchedCall::NoteException() noexcept {
  const void* const exception = CurrentException();
  const bool isNoted = m_watch != nullptr && m_watch->m_origin && m_watch->m_origin->exception == exception;
  if (m_watch == nullptr || exception == nullptr || isNoted) {
    return;
  }
  try {
    m_watch->m_origin = CallWatch::Origin{m_driver->Entry(), m_operation, exception};
  } catch (...) {
    m_watch->m_origin.reset();
  }
}

void WatchedCall::NoteStatus(int status) noexcept {
  if (m_watch == nullptr || status == 0) {
    return;
  }
  try {
    Occurrence occurrence{Occurrence::Kind::Status, 0, "", m_operation,
                          std::string(m_operation) + " returned " + std::to_string(status)};
    occurrence.call = m_watch->m_core.gate.Around();
    m_watch->m_core.Emit(m_driver, std::move(occurrence));
  } catch (...) {
    // A status for which there is no memory is not shown.
  }
}

}  // namespace devhost
