#include "devhost/engine/Host.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <utility>

#include "devhost/engine/EndWatch.h"
#include "devhost/engine/EventDelivery.h"
#include "devhost/engine/HostCore.h"
#include "devhost/engine/HostVariables.h"
#include "devhost/engine/LoadedDriver.h"
#include "devhost/engine/ModuleWatch.h"
#include "devhost/engine/StateKeeper.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {
namespace {

constexpr char kLoading[] = "loading";

h7::auto_com<H7XML::INode> ConfigNode(const DriverEntry& entry) {
  try {
    return ReadXmlNode(entry.configXml.empty() ? "<config/>" : entry.configXml);
  } catch (const XmlError& error) {
    const std::string problem =
        "line " + std::to_string(error.Line()) + " of its configuration element is not XML: " + error.what();
    throw HostError(TitleOf(entry) + ": " + problem, &entry, kLoading, problem);
  }
}

[[noreturn]] void Refuse(const DriverEntry& entry, const std::string& problem) {
  throw HostError("driver \"" + entry.name + "\" " + problem, &entry, kLoading, problem);
}

// A call of the host's user. When no other one is around it, states that became out of date meanwhile are kept at its end.
class HostCall {
 public:
  // Throws HostError as CallScope does.
  HostCall(HostCore& core, StateKeeper& states, const std::string& description)
      : m_states(states), m_outermost(!core.gate.IsInside()), m_scope(std::in_place, core, nullptr, description) {}
  ~HostCall() {
    m_scope.reset();
    if (m_outermost) {
      m_states.SaveInvalid();
    }
  }

 private:
  StateKeeper& m_states;
  const bool m_outermost;
  std::optional<CallScope> m_scope;
};

}  // namespace

// The parts of a host, and what its operations share.
class Host::Impl {
 public:
  Impl(HostObserver& observer, StateStore* store)
      : core(observer), states(core, store), variables(core.variables), watch(core), endWatch(std::in_place) {}
  // The end of the process is watched by the host around this one already.
  Impl(HostObserver& observer, Impl& outer)
      : core(observer), states(core, nullptr), variables(core.variables), watch(core, &outer.watch), around(&outer) {
    around->rests = true;
  }
  ~Impl() {
    StopAll();
    if (around != nullptr) {
      around->rests = false;
    }
  }

  HostCall Begin(const std::string& call) {
    RefuseRest(call);
    return HostCall(core, states, call);
  }
  void RefuseRest(const std::string& call) const;
  void CheckEntry(const DriverEntry& entry) const;
  void Start(LoadedDriver& driver, H7XML::INode& config);
  void StopAll() noexcept;
  void Unload(std::shared_ptr<LoadedDriver> driver, bool wasLoaded);

  HostCore core;
  StateKeeper states;
  HostVariables variables;
  ModuleWatch watch;
  std::optional<EndWatch> endWatch;
  Impl* around = nullptr;
  bool rests = false;  // while a host lives inside this one
  bool stopping = false;
};

void Host::Impl::RefuseRest(const std::string& call) const {
  if (rests) {
    throw HostError("the host rests while another one lives inside it", call);
  }
}

void Host::Impl::CheckEntry(const DriverEntry& entry) const {
  if (stopping) {
    Refuse(entry, "cannot be loaded while the host stops");
  }
  if (entry.id > std::numeric_limits<std::uint32_t>::max()) {
    Refuse(entry, "has the id " + std::to_string(entry.id) + "; ids go up to 4294967295");
  }
  const std::shared_ptr<LoadedDriver> other = core.Find(entry.id);
  if (other != nullptr) {
    Refuse(entry, "has the id of " + other->Title());
  }
}

void Host::Impl::Start(LoadedDriver& driver, H7XML::INode& config) {
  driver.Create();
  const h7::auto_com<H7XML::INode> persisted = states.Load(driver);
  driver.Initialize(config, persisted.Get());
  driver.MakeRegisterCommands();
}

void Host::Impl::StopAll() noexcept {
  stopping = true;
  HostCore::Drivers drivers = core.Snapshot();
  for (auto driver = drivers.rbegin(); driver != drivers.rend(); ++driver) {
    (*driver)->Destroy();
  }
  if (!drivers.empty()) {
    watch.ReportLiveXml();
  }
  while (!drivers.empty()) {
    std::shared_ptr<LoadedDriver> driver = std::move(drivers.back());
    drivers.pop_back();
    Unload(std::move(driver), true);
  }
  stopping = false;
}

void Host::Impl::Unload(std::shared_ptr<LoadedDriver> driver, bool wasLoaded) {
  const std::shared_ptr<LoadedDriver> record = std::move(driver);
  core.Remove(*record);
  if (wasLoaded) {
    core.Emit(Occurrence::Kind::Unload, record.get(), "", record->Entry().module);
  }
}

Host::Host(HostObserver& observer, StateStore* states) : m_impl(std::make_unique<Impl>(observer, states)) {}

Host::Host(HostObserver& observer, Host& around) {
  around.m_impl->RefuseRest("a host inside");
  if (around.m_impl->core.gate.IsInside()) {
    throw HostError("no host can live inside " + around.m_impl->core.gate.Innermost().Description(), "a host inside");
  }
  m_impl = std::make_unique<Impl>(observer, *around.m_impl);
}

Host::~Host() = default;

void Host::Load(const DriverEntry& entry, const DriverFactory& create, Devices devices) {
  const HostCall call = m_impl->Begin("loading of driver \"" + entry.name + "\"");
  m_impl->CheckEntry(entry);
  const h7::auto_com<H7XML::INode> config = ConfigNode(entry);
  const std::uint64_t mark = XmlMark();
  std::shared_ptr<LoadedDriver> driver;
  try {
    driver = std::make_shared<LoadedDriver>(m_impl->core, entry, create, devices == Devices::Watched);
  } catch (const ModuleError& error) {
    throw HostError(TitleOf(entry) + ": " + error.what(), &entry, kLoading, error.what());
  }
  m_impl->core.Add(driver);
  try {
    m_impl->Start(*driver, *config);
  } catch (...) {
    driver->Destroy();
    m_impl->watch.ReportLiveXml(mark);
    m_impl->Unload(std::move(driver), false);
    throw;
  }
  m_impl->core.Emit(Occurrence::Kind::Load, driver.get(), "", entry.module);
}

void Host::Stop() {
  if (m_impl->core.gate.IsInside()) {
    throw HostError("the host cannot be stopped from inside " + m_impl->core.gate.Innermost().Description(), "stop");
  }
  m_impl->RefuseRest("stop");
  const CallScope scope(m_impl->core, nullptr, "stop");
  m_impl->states.SaveAll();
  m_impl->StopAll();
}

void Host::Unload(unsigned long driverId) {
  constexpr char kUnloading[] = "unloading";
  if (m_impl->core.gate.IsInside()) {
    throw HostError("no driver can be unloaded from inside " + m_impl->core.gate.Innermost().Description(), kUnloading);
  }
  m_impl->RefuseRest(kUnloading);
  const CallScope scope(m_impl->core, nullptr, kUnloading);
  std::shared_ptr<LoadedDriver> driver = m_impl->core.Get(driverId, kUnloading);
  m_impl->states.SaveOf(*driver);
  driver->Destroy();
  m_impl->watch.ReportLiveXmlOf(*driver);
  m_impl->Unload(std::move(driver), true);
}

std::string Host::Command(unsigned long driverId, const std::string& name, const Parameters& parameters) {
  const HostCall call = m_impl->Begin(CommandTitle(name));
  return m_impl->core.Get(driverId, CommandTitle(name))->Command(name, parameters);
}

std::string Host::Command(const std::string& name, const Parameters& parameters) {
  const HostCall call = m_impl->Begin(CommandTitle(name));
  return m_impl->core.FindByCommand(name)->Command(name, parameters);
}

void Host::EditCopies(std::function<int(unsigned long driverId, int status, std::string& text)> edit) {
  m_impl->core.calls.editCopies = std::move(edit);
}

void Host::SendEvent(const std::string& name, const Parameters& parameters) {
  const HostCall call = m_impl->Begin(SystemEventTitle(name));
  const unsigned int eventId = SystemEventIdOf(name);
  if (eventId == 0) {
    throw HostError("there is no system event \"" + name + "\"; known are: " + SystemEventNames(), SystemEventTitle(name));
  }
  Occurrence occurrence{Occurrence::Kind::Event, 0, "", name, ""};
  occurrence.parameters = parameters;
  m_impl->core.Emit(nullptr, std::move(occurrence));
  DeliverEvent(m_impl->core, eventId, name, parameters);
}

std::string Host::GetPersistState(unsigned long driverId, XmlStyle style) {
  const HostCall call = m_impl->Begin("GetPersistState");
  return m_impl->core.Get(driverId, "GetPersistState")->GetPersistState(style);
}

void Host::DefineVariable(const VariableEntry& entry) {
  m_impl->variables.Add(entry);
}

void Host::AddVariable(const VariableEntry& entry) {
  const HostCall call = m_impl->Begin("adding of a variable");
  m_impl->variables.Add(entry);
  SendEvent(entry.user ? "OnUserVariableAdded" : "OnVariableAdded",
            {{"iddevice", std::to_string(entry.deviceId)}, {"idvariable", std::to_string(entry.variableId)}});
}

void Host::RemoveVariable(unsigned long deviceId, unsigned long variableId, bool user) {
  const HostCall call = m_impl->Begin("removal of a variable");
  const HostVariables::Taken taken = m_impl->variables.Take(deviceId, variableId, user);
  SendEvent("OnVariableRemoved", {{"iddevice", std::to_string(deviceId)}, {"idvariable", std::to_string(variableId)}});
  if (deviceId != 0 && variableId != 0) {
    m_impl->variables.Free(taken);
  }
}

void Host::RemoveItem(unsigned long itemId, unsigned long roomId) {
  const HostCall call = m_impl->Begin("removal of an item");
  const HostVariables::Taken taken = m_impl->variables.TakeDevice(itemId);
  SendEvent("OnItemRemoved", {{"iditem", std::to_string(itemId)}, {"idroom", std::to_string(roomId)}});
  if (itemId != 0) {
    m_impl->variables.Free(taken);
  }
}

void Host::LoadProject() {
  SendEvent("OnProjectLoaded", {});
}

bool Host::TrapEnabled(unsigned long deviceId, unsigned long variableId) const {
  return m_impl->variables.Get(deviceId, variableId).Entry().trapEnabled;
}

void Host::SetTrapEnabled(unsigned long deviceId, unsigned long variableId, bool enabled) {
  m_impl->variables.Get(deviceId, variableId).TrapEnabled() = enabled;
}

std::vector<VariableEntry> Host::Variables(Flags flags) const {
  return m_impl->variables.List(flags);
}

std::map<std::string, std::vector<std::string>> Host::Commands() const {
  std::map<std::string, std::vector<std::string>> commands;
  for (const std::shared_ptr<LoadedDriver>& driver : m_impl->core.Snapshot()) {
    commands[driver->Entry().name] = driver->Commands().Names();
  }
  return commands;
}

std::vector<DriverEntry> Host::Drivers() const {
  std::vector<DriverEntry> entries;
  for (const std::shared_ptr<LoadedDriver>& driver : m_impl->core.Snapshot()) {
    entries.push_back(driver->Entry());
  }
  return entries;
}

std::vector<std::string> Host::Commands(unsigned long driverId) const {
  return m_impl->core.Get(driverId, "")->Commands().Names();
}

std::vector<unsigned long> Host::Publishers(const std::string& iid) const {
  return m_impl->core.directory.Publishers(iid);
}

std::size_t Host::MannersCount() const {
  return m_impl->core.MannersCount();
}

}  // namespace devhost
