#ifndef DEVHOST_ENGINE_STATE_KEEPER_H
#define DEVHOST_ENGINE_STATE_KEEPER_H

#include <string>

#include "host/INode.h"
#include "host/auto_com.h"

namespace devhost {

class HostCore;
class LoadedDriver;
class StateStore;

// Carries the drivers' states between the drivers of a host and a store. What goes wrong is reported to the observer.
//
// A driver that listens to "OnProjectLoaded" has not read its whole state until that event; saving earlier would lose data.
// So it is not asked before. When a later "OnProjectLoaded" fails half-way, it knows a part only, and is not asked until one
// has succeeded. A driver that does not listen is asked at any time.
class StateKeeper {
 public:
  // Both outlive the keeper. Without a store (null) no driver is asked or handed anything.
  // With one that takes no states, none is asked.
  StateKeeper(HostCore& core, StateStore* store) : m_core(core), m_store(store) {}

  // The state to hand to a driver; an empty handle when none is kept, or it cannot be read, which is reported.
  h7::auto_com<H7XML::INode> Load(const LoadedDriver& driver);

  // Asks the drivers that have called `DmInvalidateState`, each once, however often it did. A state that is invalidated
  // while its driver is asked waits for the next time, and so does one that could not be kept.
  void SaveInvalid() noexcept;
  // Asks all drivers.
  void SaveAll() noexcept;
  // Asks one driver.
  void SaveOf(LoadedDriver& driver) noexcept;

 private:
  bool Asks() const;
  // False, with a report, when the state is not kept.
  bool Save(LoadedDriver& driver) noexcept;
  void Report(const LoadedDriver& driver, const std::string& problem) noexcept;

  HostCore& m_core;
  StateStore* const m_store;
  bool m_saving = false;
};

}  // namespace devhost

#endif
