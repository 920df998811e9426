#ifndef DEVHOST_ENGINE_HOST_CORE_H
#define DEVHOST_ENGINE_HOST_CORE_H

#include <atomic>
#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "devhost/driver/CallGate.h"
#include "devhost/driver/EventListeners.h"
#include "devhost/driver/InstanceDirectory.h"
#include "devhost/driver/VariableManager.h"
#include "devhost/engine/CallWatch.h"
#include "devhost/engine/Host.h"

namespace devhost {

class LoadedDriver;

// What all drivers of one host share, and the way from them to the observer.
class HostCore {
 public:
  using Drivers = std::vector<std::shared_ptr<LoadedDriver>>;

  explicit HostCore(HostObserver& observer) : calls(*this), m_observer(observer) {}

  InstanceDirectory directory;
  EventListeners listeners;
  VariableManager variables;
  CallGate gate;
  CallWatch calls;

  // Tells the observer. `driver` may be null: nobody is known, and all `candidates` are named.
  void Emit(const LoadedDriver* driver, Occurrence occurrence, const Drivers& candidates = {});
  void Emit(Occurrence::Kind kind, const LoadedDriver* driver, const std::string& name, const std::string& text) {
    Emit(driver, {kind, 0, "", name, text});
  }
  // Reports a driver that broke the rules, with the call that is under way.
  void Report(const LoadedDriver* driver, const std::string& what, const Drivers& candidates = {});
  std::size_t MannersCount() const { return m_mannersCount; }

  // The driver whose code that is, on the thread of the call that is under way; null when nobody is known. Where several
  // share the module, it is the one that is being called. Code of no driver's module counts for the driver that is being
  // called, because a driver's last act may have been a jump.
  std::shared_ptr<LoadedDriver> DriverOf(const void* code) const;
  // All drivers whose module holds that code, in the order of loading.
  Drivers OwnersOf(const void* code) const;

  // The drivers, in the order of loading: a copy that stays good while drivers come and go.
  Drivers Snapshot() const;
  // The driver of that record, which may have gone, or null.
  std::shared_ptr<LoadedDriver> Share(const void* record) const;
  // The driver with that id, or null.
  std::shared_ptr<LoadedDriver> Find(unsigned long driverId) const;
  // The same; throws HostError, naming what there is, when there is none. `call` is for the error.
  std::shared_ptr<LoadedDriver> Get(unsigned long driverId, const std::string& call) const;
  // The one driver that has registered the command. Throws HostError, naming the candidates, when none or several have.
  std::shared_ptr<LoadedDriver> FindByCommand(const std::string& name) const;
  void Add(const std::shared_ptr<LoadedDriver>& driver);
  void Remove(const LoadedDriver& driver);

  // Whose persisted state is out of date, in the order of loading. A project may have many drivers, and few of them have
  // something to keep at a time.
  Drivers WithInvalidStates() const;
  void NoteStateInvalid(const LoadedDriver& driver) { NoteState(driver, true); }
  void NoteStateTaken(const LoadedDriver& driver) { NoteState(driver, false); }

 private:
  void NoteState(const LoadedDriver& driver, bool invalid);

  HostObserver& m_observer;
  std::recursive_mutex m_emitting;  // the observer may call the host
  mutable std::mutex m_driversMutex;
  std::map<std::size_t, std::shared_ptr<LoadedDriver>> m_drivers;  // by numbers in the order of loading
  std::unordered_map<unsigned long, std::size_t> m_numbers;        // by id
  std::set<std::size_t> m_invalidStates;                           // of these
  std::size_t m_loaded = 0;
  std::atomic<std::size_t> m_mannersCount{0};
};

// How messages name a command: command "X".
std::string CommandTitle(const std::string& name);

// A call that is under way, for as long as the scope lives.
class CallScope {
 public:
  // `driver` may be null. When another thread is inside, the call is reported and HostError is thrown.
  CallScope(HostCore& core, const LoadedDriver* driver, const std::string& operation);
  ~CallScope();
  CallScope(const CallScope&) = delete;
  CallScope& operator=(const CallScope&) = delete;

 private:
  HostCore& m_core;
};

}  // namespace devhost

#endif
