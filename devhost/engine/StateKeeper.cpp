#include "devhost/engine/StateKeeper.h"

#include <exception>
#include <memory>

#include "devhost/engine/HostCore.h"
#include "devhost/engine/LoadedDriver.h"
#include "devhost/state/StateStore.h"

namespace devhost {

h7::auto_com<H7XML::INode> StateKeeper::Load(const LoadedDriver& driver) {
  if (m_store != nullptr) {
    try {
      return m_store->Load(driver.Entry().id);
    } catch (const StateError& error) {
      Report(driver, error.what());
    }
  }
  return h7::auto_com<H7XML::INode>();
}

void StateKeeper::SaveInvalid() noexcept {
  if (!Asks() || m_saving) {
    return;
  }
  m_saving = true;
  HostCore::Drivers invalid;
  for (const std::shared_ptr<LoadedDriver>& driver : m_core.WithInvalidStates()) {
    if (driver->MayGiveState()) {
      m_core.NoteStateTaken(*driver);
      invalid.push_back(driver);
    }
  }
  for (const std::shared_ptr<LoadedDriver>& driver : invalid) {
    if (!Save(*driver)) {
      m_core.NoteStateInvalid(*driver);
    }
  }
  m_saving = false;
}

void StateKeeper::SaveAll() noexcept {
  for (const std::shared_ptr<LoadedDriver>& driver : m_core.Snapshot()) {
    SaveOf(*driver);
  }
}

void StateKeeper::SaveOf(LoadedDriver& driver) noexcept {
  if (Asks() && driver.MayGiveState()) {
    Save(driver);
  }
}

bool StateKeeper::Asks() const {
  return m_store != nullptr && m_store->TakesStates();
}

bool StateKeeper::Save(LoadedDriver& driver) noexcept {
  try {
    const std::string state = driver.GetPersistState(XmlStyle::Indented);
    m_store->Save(driver.Entry().id, state);
    if (!state.empty()) {
      driver.NoteStateKept();
    }
    return true;
  } catch (const HostError& error) {
    Report(driver, std::string(error.what()) + "; the state is not kept");
  } catch (const std::exception& error) {
    Report(driver, error.what());
  }
  return false;
}

void StateKeeper::Report(const LoadedDriver& driver, const std::string& problem) noexcept {
  try {
    m_core.Emit(Occurrence::Kind::StateProblem, &driver, "", problem);
  } catch (...) {
    // There is no memory to say so.
  }
}

}  // namespace devhost
