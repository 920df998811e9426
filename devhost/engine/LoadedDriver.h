#ifndef DEVHOST_ENGINE_LOADED_DRIVER_H
#define DEVHOST_ENGINE_LOADED_DRIVER_H

#include <memory>
#include <optional>
#include <string>

#include "devhost/driver/CommandTable.h"
#include "devhost/driver/DriverModule.h"
#include "devhost/driver/DriverServices.h"
#include "devhost/driver/InstanceDirectory.h"
#include "devhost/driver/ServiceCheck.h"
#include "devhost/engine/DriverCode.h"
#include "devhost/engine/EndNote.h"
#include "devhost/engine/Host.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

class HostCore;

// One driver from the loading of its module to the unloading: the host's record of it, and the services behind its base.
//
// All calls into the driver go through here. An exception of the driver comes out as HostError, and so does a call from a
// second thread.
class LoadedDriver : public DriverServices, private ServiceCheck {
 public:
  // Loads the module, unless `create` makes the driver. Throws ModuleError. `core` outlives the driver.
  LoadedDriver(HostCore& core, const DriverEntry& entry, const DriverFactory& create = nullptr, bool getsFronts = false);
  // The driver has been destroyed; unloads the module.
  ~LoadedDriver() override;
  LoadedDriver(const LoadedDriver&) = delete;
  LoadedDriver& operator=(const LoadedDriver&) = delete;

  const DriverEntry& Entry() const { return m_entry; }
  std::string Title() const { return TitleOf(m_entry); }
  // Whether it gets fronts of devices, like an agent.
  bool GetsFronts() const { return m_getsFronts; }
  bool OwnsCode(const CodePlace& code) const { return m_module.Contains(code); }
  const CommandTable& Commands() const { return m_commands; }

  // The start of its life, in this order. Both nodes are borrowed; `persisted` is null when nothing was kept.
  void Create();
  void Initialize(H7XML::INode& config, H7XML::INode* persisted);
  void MakeRegisterCommands();

  // The reply as compact XML, "" for none. Throws HostError when the driver has not registered the command.
  std::string Command(const std::string& name, const Parameters& parameters);
  // `listener` is the driver's. It gets a node of its own.
  void DeliverEvent(ISystemEventCallback& listener, const std::string& name, const XmlElement& event);
  // As XML, "" for none.
  std::string GetPersistState(XmlStyle style);
  // Whether what the driver gives may be kept: see StateKeeper.
  bool MayGiveState() const;
  // A failed project load can corrupt the state from now on.
  void NoteStateKept() { m_hasState = true; }
  // `heard`: no listener of its threw at the last "OnProjectLoaded".
  void NoteProjectLoaded(bool heard) {
    m_stateIsWhole = heard || !m_hasState;
    m_hasState = m_hasState || heard;
  }
  // Drops the handlers, destroys the driver when there is one, and reports and drops what it left behind. The end of its
  // life.
  void Destroy() noexcept;

  // The services behind the driver's base.
  void BaseConstructed(H7BaseDriver& driver, DriverMultiplicity multiplicity) override;
  void BaseInitialized(unsigned long driverId) override;
  void BaseDestroyed() noexcept override;
  IInstanceManager& GetInstanceManager() override { return m_instances; }
  IDriverManager& GetDriverManager() override { return m_instances; }
  IVariableManager* GetVariableManager() override;
  UICmdDispatcher& GetUICmdDispatcher() override { return m_commands; }
  void RegisterListener(ISystemEventCallback& listener, unsigned int eventId, unsigned long reserved) override;
  void UnregisterListener(ISystemEventCallback& listener, unsigned int eventId, unsigned long reserved) override;
  void SendDataToUI(const H7XML::INode& data) override;
  void InvalidateState() override;

 private:
  enum class BaseState { None, Constructed, Initialized, Destroyed };

  void NotePublished(const std::string& iid, void* instance) override;
  void NoteWithdrawn(const std::string& iid, void* instance) override;
  void* Shown(const std::string& iid, void* instance) override;
  void Report(const std::string& what) override;
  bool Enter(const char* operation, From from) override;
  void Leave() noexcept override;
  bool IsBaseInitialized(const char* operation);
  void ReportLeftovers();
  template <class Action>
  auto Call(const std::string& description, Action action);

  HostCore& m_core;
  const DriverEntry m_entry;
  // These stay while the module is unloaded: its static objects may end the process then.
  std::optional<EndNote> m_moduleNote;
  std::optional<DriverCode> m_code;
  const DriverModule m_module;
  const bool m_getsFronts;
  CommandTable m_commands;
  InstanceManager m_instances;
  IDriver* m_driver = nullptr;
  bool m_initializing = false;  // its Initialize has been called
  BaseState m_base = BaseState::None;
  bool m_hasState = false;     // it was handed a state, or has made one worth keeping
  bool m_stateIsWhole = true;  // it knows all of that state
};

}  // namespace devhost

#endif
