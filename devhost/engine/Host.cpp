#include "devhost/engine/Host.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include "devhost/driver/DriverServices.h"
#include "devhost/driver/LogCaller.h"
#include "devhost/engine/HostCore.h"
#include "devhost/engine/HostVariables.h"
#include "devhost/engine/LoadedDriver.h"
#include "devhost/engine/StateKeeper.h"
#include "devhost/text/Words.h"
#include "devhost/xml/XmlMisuse.h"
#include "devhost/xml/XmlReader.h"
#include "host/SystemEventId.h"

namespace devhost {
namespace {

constexpr char kLoading[] = "loading";

std::atomic<bool> s_hostExists{false};

// The claim to be the process's only host.
class OnlyHost {
 public:
  OnlyHost() {
    if (s_hostExists.exchange(true)) {
      throw HostError("there is a host in this process already; only one at a time is possible");
    }
  }
  ~OnlyHost() { s_hostExists = false; }
  OnlyHost(const OnlyHost&) = delete;
  OnlyHost& operator=(const OnlyHost&) = delete;
};

h7::auto_com<H7XML::INode> ConfigNode(const DriverEntry& entry) {
  try {
    return ReadXmlNode(entry.configXml.empty() ? "<config/>" : entry.configXml);
  } catch (const XmlError& error) {
    const std::string problem =
        "line " + std::to_string(error.Line()) + " of its configuration element is no XML: " + error.what();
    throw HostError(TitleOf(entry) + ": " + problem, &entry, kLoading, problem);
  }
}

[[noreturn]] void Refuse(const DriverEntry& entry, const std::string& problem) {
  throw HostError("driver \"" + entry.name + "\" " + problem, &entry, kLoading, problem);
}

std::string Join(const std::vector<std::string>& texts, const std::string& separator) {
  std::string joined;
  for (const std::string& text : texts) {
    joined += (joined.empty() ? "" : separator) + text;
  }
  return joined;
}

XmlElement EventElement(const std::string& name, const Parameters& parameters) {
  XmlElement event;
  event.name = "event";
  event.attributes.push_back({"name", name});
  for (const auto& [parameter, value] : parameters) {
    XmlElement item;
    item.name = "item";
    item.attributes.push_back({"name", parameter});
    item.text = value;
    event.children.push_back(std::move(item));
  }
  return event;
}

// A call of the host's user. When no other one is around it, states that became out of date meanwhile are kept at its end.
class HostCall {
 public:
  // Throws HostError as CallScope does.
  HostCall(HostCore& core, StateKeeper& states, const std::string& description, const void* code)
      : m_states(states), m_outermost(!core.gate.IsInside()), m_scope(std::in_place, core, nullptr, description, code) {}
  ~HostCall() {
    m_scope.reset();
    if (m_outermost) {
      m_states.SaveInvalid();
    }
  }
  HostCall(const HostCall&) = delete;
  HostCall& operator=(const HostCall&) = delete;

 private:
  StateKeeper& m_states;
  const bool m_outermost;
  std::optional<CallScope> m_scope;
};

// What is left alive, for a message: how many, and the first few by name.
std::string Summary(const std::vector<std::string>& descriptions) {
  constexpr std::size_t kShown = 3;
  const std::vector<std::string> shown(
      descriptions.begin(), descriptions.begin() + static_cast<std::ptrdiff_t>(std::min(kShown, descriptions.size())));
  return "left " + std::to_string(descriptions.size()) + " XML object" + (descriptions.size() == 1 ? "" : "s") +
         " alive: " + Join(shown, ", ") + (descriptions.size() > kShown ? ", ..." : "");
}

}  // namespace

class Host::Impl : private LogSink, private XmlMisuseSink {
 public:
  Impl(HostObserver& observer, StateStore* states)
      : m_core(observer),
        m_states(m_core, states),
        m_variables(m_core.variables),
        m_outerLog(SetLogSink(this)),
        m_outerMisuse(SetXmlMisuseSink(this)),
        m_xmlMark(XmlMark()) {}
  ~Impl() override {
    StopAll();
    SetXmlMisuseSink(m_outerMisuse);
    SetLogSink(m_outerLog);
  }

  void Load(const DriverEntry& entry, const void* code);
  void Stop(const void* code);
  std::string Command(unsigned long driverId, const std::string& name, const Parameters& parameters, const void* code);
  std::string Command(const std::string& name, const Parameters& parameters, const void* code);
  void SendEvent(const std::string& name, const Parameters& parameters, const void* code);
  std::string GetPersistState(unsigned long driverId, const void* code);
  void AddVariable(const VariableEntry& entry, const void* code);
  void RemoveVariable(unsigned long deviceId, unsigned long variableId, bool user, const void* code);
  void RemoveItem(unsigned long itemId, unsigned long roomId, const void* code);
  std::shared_ptr<LoadedDriver> Find(unsigned long driverId, const std::string& call) const;
  const HostCore& Core() const { return m_core; }
  HostVariables& Variables() { return m_variables; }

 private:
  void Log(unsigned int level, const char* line) noexcept override;
  void OnXmlMisuse(const std::string& what, const void* code) override;

  void SendRemoval(HostVariables::Taken taken, bool idsAreGood, const std::string& name, const Parameters& parameters,
                   const void* code);
  void CheckEntry(const DriverEntry& entry) const;
  std::string KnownCommands() const;
  void Start(LoadedDriver& driver, H7XML::INode& config);
  void StopAll() noexcept;
  void Unload(std::shared_ptr<LoadedDriver> driver, bool wasLoaded);
  void ReportLiveXml(std::uint64_t mark);

  const OnlyHost m_only;
  HostCore m_core;
  StateKeeper m_states;
  HostVariables m_variables;
  LogSink* const m_outerLog;
  XmlMisuseSink* const m_outerMisuse;
  const std::uint64_t m_xmlMark;
  bool m_stopping = false;
};

void Host::Impl::CheckEntry(const DriverEntry& entry) const {
  if (m_stopping) {
    Refuse(entry, "cannot be loaded while the host stops");
  }
  if (entry.id > std::numeric_limits<std::uint32_t>::max()) {
    Refuse(entry, "has the id " + std::to_string(entry.id) + "; ids go up to 4294967295");
  }
  const std::shared_ptr<LoadedDriver> other = m_core.Find(entry.id);
  if (other != nullptr) {
    Refuse(entry, "has the id of " + other->Title());
  }
}

void Host::Impl::Load(const DriverEntry& entry, const void* code) {
  const HostCall call(m_core, m_states, "loading of driver \"" + entry.name + "\"", code);
  CheckEntry(entry);
  const h7::auto_com<H7XML::INode> config = ConfigNode(entry);
  const std::uint64_t mark = XmlMark();
  std::shared_ptr<LoadedDriver> driver;
  try {
    driver = std::make_shared<LoadedDriver>(m_core, entry);
  } catch (const ModuleError& error) {
    throw HostError(TitleOf(entry) + ": " + error.what(), &entry, kLoading, error.what());
  }
  m_core.Add(driver);
  try {
    Start(*driver, *config);
  } catch (...) {
    driver->Destroy();
    ReportLiveXml(mark);
    Unload(std::move(driver), false);
    throw;
  }
  m_core.Emit(Occurrence::Kind::Load, driver.get(), "", entry.module);
}

void Host::Impl::Start(LoadedDriver& driver, H7XML::INode& config) {
  driver.Create();
  const h7::auto_com<H7XML::INode> persisted = m_states.Load(driver);
  driver.Initialize(config, persisted.Get());
  driver.MakeRegisterCommands();
}

void Host::Impl::Stop(const void* code) {
  if (m_core.gate.IsInside()) {
    throw HostError("the host cannot be stopped from inside " + m_core.gate.Innermost().Description(), "stop");
  }
  const CallScope scope(m_core, nullptr, "stop", code);
  m_states.SaveAll();
  StopAll();
}

void Host::Impl::StopAll() noexcept {
  m_stopping = true;
  HostCore::Drivers drivers = m_core.Snapshot();
  for (auto driver = drivers.rbegin(); driver != drivers.rend(); ++driver) {
    (*driver)->Destroy();
  }
  if (!drivers.empty()) {
    ReportLiveXml(m_xmlMark);
  }
  while (!drivers.empty()) {
    std::shared_ptr<LoadedDriver> driver = std::move(drivers.back());
    drivers.pop_back();
    Unload(std::move(driver), true);
  }
  m_stopping = false;
}

void Host::Impl::Unload(std::shared_ptr<LoadedDriver> driver, bool wasLoaded) {
  const std::shared_ptr<LoadedDriver> record = std::move(driver);
  m_core.Remove(*record);
  if (wasLoaded) {
    m_core.Emit(Occurrence::Kind::Unload, record.get(), "", record->Entry().module);
  }
}

// Objects that no driver's code holds (the program's own, say) are nobody's fault.
void Host::Impl::ReportLiveXml(std::uint64_t mark) {
  struct Culprit {
    HostCore::Drivers owners;  // of the module
    std::vector<std::string> objects;
  };
  std::map<std::string, Culprit> culprits;  // by module
  for (const LiveXmlObject& object : LiveXmlObjectsSince(mark)) {
    for (const void* const code : {object.creator, object.lastHolder}) {
      const HostCore::Drivers owners = m_core.OwnersOf(code);
      if (!owners.empty()) {
        Culprit& culprit = culprits[owners.front()->Entry().module];
        culprit.owners = owners;
        culprit.objects.push_back(object.description);
        break;
      }
    }
  }
  for (const auto& [module, culprit] : culprits) {
    m_core.Report(culprit.owners.size() == 1 ? culprit.owners.front().get() : nullptr,
                  Summary(culprit.objects) + ", by module \"" + module + "\"", culprit.owners);
  }
}

std::shared_ptr<LoadedDriver> Host::Impl::Find(unsigned long driverId, const std::string& call) const {
  std::shared_ptr<LoadedDriver> found = m_core.Find(driverId);
  if (found != nullptr) {
    return found;
  }
  constexpr std::size_t kMostListed = 20;
  std::vector<std::string> known;
  for (const std::shared_ptr<LoadedDriver>& driver : m_core.Snapshot()) {
    known.push_back(known.size() == kMostListed ? "..." : driver->Title());
    if (known.size() > kMostListed) {
      break;
    }
  }
  throw HostError("there is no driver " + std::to_string(driverId) +
                      (known.empty() ? "; none is loaded" : "; loaded are: " + Join(known, ", ")),
                  call);
}

std::string Host::Impl::Command(unsigned long driverId, const std::string& name, const Parameters& parameters,
                                const void* code) {
  const std::string what = "command \"" + name + "\"";
  const HostCall call(m_core, m_states, what, code);
  return Find(driverId, what)->Command(name, parameters);
}

std::string Host::Impl::Command(const std::string& name, const Parameters& parameters, const void* code) {
  const std::string what = "command \"" + name + "\"";
  const HostCall call(m_core, m_states, what, code);
  HostCore::Drivers owners;
  std::vector<std::string> titles;
  for (const std::shared_ptr<LoadedDriver>& driver : m_core.Snapshot()) {
    if (driver->Commands().Find(name) != nullptr) {
      owners.push_back(driver);
      titles.push_back(driver->Title());
    }
  }
  if (owners.empty()) {
    throw HostError("no driver has registered the command " + Quoted(name) + "; the commands are: " + KnownCommands(), what);
  }
  if (owners.size() != 1) {
    throw HostError(
        "several drivers have registered the command " + Quoted(name) + ": " + Join(titles, ", ") + "; name one of them",
        what);
  }
  return owners.front()->Command(name, parameters);
}

// Devices of one kind have the same commands: they are told once, for the first of them.
std::string Host::Impl::KnownCommands() const {
  std::set<std::vector<std::string>> told;
  std::vector<std::string> texts;
  for (const std::shared_ptr<LoadedDriver>& driver : m_core.Snapshot()) {
    const std::vector<std::string> commands = driver->Commands().Names();
    if (!commands.empty() && told.insert(commands).second) {
      texts.push_back(driver->Entry().name + ": " + Join(commands, ", "));
    }
  }
  return texts.empty() ? "none" : Join(texts, "; ");
}

void Host::Impl::SendEvent(const std::string& name, const Parameters& parameters, const void* code) {
  const std::string what = "event \"" + name + "\"";
  const HostCall call(m_core, m_states, what, code);
  const unsigned int eventId = SystemEventIdOf(name);
  if (eventId == 0) {
    throw HostError("there is no system event \"" + name + "\"; known are: " + SystemEventNames(), what);
  }
  Occurrence occurrence{Occurrence::Kind::Event, 0, "", name, ""};
  occurrence.parameters = parameters;
  m_core.Emit(nullptr, std::move(occurrence));
  const XmlElement event = EventElement(name, parameters);
  // A driver that is loaded by whoever hears the event has not heard it.
  const HostCore::Drivers drivers = eventId == SystemEvent_OnProjectLoaded ? m_core.Snapshot() : HostCore::Drivers();
  for (const std::shared_ptr<LoadedDriver>& driver : drivers) {
    driver->NoteProjectLoaded(false);
  }
  std::set<unsigned long> failed;
  std::optional<HostError> first;
  m_core.listeners.Deliver(eventId, [&](const EventListeners::Registration& registration) {
    try {
      Find(registration.driverId, what)->DeliverEvent(*registration.listener, name, event);
    } catch (const HostError& error) {
      failed.insert(registration.driverId);
      first = first ? first : error;
    }
  });
  for (const std::shared_ptr<LoadedDriver>& driver : drivers) {
    driver->NoteProjectLoaded(failed.count(driver->Entry().id) == 0);
  }
  if (first) {
    throw HostError(*first);
  }
}

std::string Host::Impl::GetPersistState(unsigned long driverId, const void* code) {
  const HostCall call(m_core, m_states, "GetPersistState", code);
  return Find(driverId, "GetPersistState")->GetPersistState(XmlStyle::Compact);
}

void Host::Impl::AddVariable(const VariableEntry& entry, const void* code) {
  const HostCall call(m_core, m_states, "adding of a variable", code);
  m_variables.Add(entry);
  SendEvent(entry.user ? "OnUserVariableAdded" : "OnVariableAdded",
            {{"iddevice", std::to_string(entry.deviceId)}, {"idvariable", std::to_string(entry.variableId)}}, code);
}

void Host::Impl::RemoveVariable(unsigned long deviceId, unsigned long variableId, bool user, const void* code) {
  const HostCall call(m_core, m_states, "removal of a variable", code);
  SendRemoval(m_variables.Take(deviceId, variableId, user), deviceId != 0 && variableId != 0, "OnVariableRemoved",
              {{"iddevice", std::to_string(deviceId)}, {"idvariable", std::to_string(variableId)}}, code);
}

void Host::Impl::RemoveItem(unsigned long itemId, unsigned long roomId, const void* code) {
  const HostCall call(m_core, m_states, "removal of an item", code);
  SendRemoval(m_variables.TakeDevice(itemId), itemId != 0, "OnItemRemoved",
              {{"iditem", std::to_string(itemId)}, {"idroom", std::to_string(roomId)}}, code);
}

void Host::Impl::SendRemoval(HostVariables::Taken taken, bool idsAreGood, const std::string& name,
                             const Parameters& parameters, const void* code) {
  try {
    SendEvent(name, parameters, code);
  } catch (...) {
    m_variables.Release(std::move(taken), false);
    throw;
  }
  m_variables.Release(std::move(taken), idsAreGood);
}

void Host::Impl::Log(unsigned int level, const char* line) noexcept {
  try {
    const std::shared_ptr<LoadedDriver> driver = m_core.DriverOf(LogCaller());
    const HostCore::Drivers candidates = driver != nullptr ? HostCore::Drivers() : m_core.OwnersOf(LogCaller());
    Occurrence occurrence{Occurrence::Kind::Log, 0, "", "", line};
    occurrence.level = level;
    m_core.Emit(driver.get(), std::move(occurrence), candidates);
  } catch (...) {
    // A line for which there is no memory is dropped.
  }
}

void Host::Impl::OnXmlMisuse(const std::string& what, const void* code) {
  m_core.ReportCode(m_core.DriverOf(code).get(), code, what);
}

Host::Host(HostObserver& observer, StateStore* states) : m_impl(std::make_unique<Impl>(observer, states)) {}

Host::~Host() = default;

void Host::Load(const DriverEntry& entry) {
  m_impl->Load(entry, __builtin_return_address(0));
}

void Host::Stop() {
  m_impl->Stop(__builtin_return_address(0));
}

std::string Host::Command(unsigned long driverId, const std::string& name, const Parameters& parameters) {
  return m_impl->Command(driverId, name, parameters, __builtin_return_address(0));
}

std::string Host::Command(const std::string& name, const Parameters& parameters) {
  return m_impl->Command(name, parameters, __builtin_return_address(0));
}

void Host::SendEvent(const std::string& name, const Parameters& parameters) {
  m_impl->SendEvent(name, parameters, __builtin_return_address(0));
}

std::string Host::GetPersistState(unsigned long driverId) {
  return m_impl->GetPersistState(driverId, __builtin_return_address(0));
}

void Host::DefineVariable(const VariableEntry& entry) {
  m_impl->Variables().Add(entry);
}

void Host::AddVariable(const VariableEntry& entry) {
  m_impl->AddVariable(entry, __builtin_return_address(0));
}

void Host::RemoveVariable(unsigned long deviceId, unsigned long variableId, bool user) {
  m_impl->RemoveVariable(deviceId, variableId, user, __builtin_return_address(0));
}

void Host::RemoveItem(unsigned long itemId, unsigned long roomId) {
  m_impl->RemoveItem(itemId, roomId, __builtin_return_address(0));
}

void Host::LoadProject() {
  m_impl->SendEvent("OnProjectLoaded", {}, __builtin_return_address(0));
}

bool Host::TrapEnabled(unsigned long deviceId, unsigned long variableId) const {
  return m_impl->Variables().Get(deviceId, variableId).Entry().trapEnabled;
}

void Host::SetTrapEnabled(unsigned long deviceId, unsigned long variableId, bool enabled) {
  m_impl->Variables().Get(deviceId, variableId).TrapEnabled() = enabled;
}

std::vector<VariableEntry> Host::Variables(Flags flags) const {
  return m_impl->Variables().List(flags);
}

std::vector<DriverEntry> Host::Drivers() const {
  std::vector<DriverEntry> entries;
  for (const std::shared_ptr<LoadedDriver>& driver : m_impl->Core().Snapshot()) {
    entries.push_back(driver->Entry());
  }
  return entries;
}

std::vector<std::string> Host::Commands(unsigned long driverId) const {
  return m_impl->Find(driverId, "")->Commands().Names();
}

std::size_t Host::MannersCount() const {
  return m_impl->Core().MannersCount();
}

}  // namespace devhost
