#include "devhost/engine/LoadedDriver.h"

#include <cxxabi.h>

#include <boost/algorithm/string/join.hpp>
#include <exception>
#include <optional>
#include <utility>

#include "devhost/driver/CommandMessage.h"
#include "devhost/engine/EndWatch.h"
#include "devhost/engine/HostCore.h"
#include "devhost/xml/XmlReader.h"
#include "host/ISystemEventCallback.h"
#include "host/SystemEventId.h"

namespace devhost {
LoadedDriver::LoadedDriver(HostCore& core, const DriverEntry& entry, const DriverFactory& create, bool getsFronts)
    : m_core(core),
      m_entry(entry),
      m_moduleNote(std::in_place, "loading", TitleOf(entry)),
      m_module(create ? DriverModule(create) : DriverModule(entry.module)),
      m_getsFronts(getsFronts),
      m_commands(*this),
      m_instances(core.directory, *this, entry.id, static_cast<DriverServices*>(this)) {
  m_code.emplace(m_module, TitleOf(entry));
  m_moduleNote.reset();
}

LoadedDriver::~LoadedDriver() {
  m_moduleNote.emplace("unloading", Title());
}

template <class Action>
auto LoadedDriver::Call(const std::string& description, Action action) {
  const CallScope scope(m_core, this, description);
  const EndNote note(description, Title());
  m_core.calls.ForgetException();
  std::string problem;
  std::optional<CallWatch::Origin> origin;
  try {
    return action();
  } catch (const abi::__forced_unwind&) {
    EndWatch::OnEndOfThread();
  } catch (const std::exception& exception) {
    problem = exception.what();
    origin = m_core.calls.OriginOfException();
  } catch (...) {
    problem = "something that is not a std::exception";
    origin = m_core.calls.OriginOfException();
  }
  // Thrown behind the handlers: the driver's exception object is gone before its module can be.
  if (origin) {
    const std::string call = description + " of " + Title();
    throw HostError("an exception came out of " + origin->operation + " of " + TitleOf(origin->driver) + " during " + call +
                        ": " + problem,
                    &origin->driver, call, "an exception came out of " + origin->operation + ": " + problem);
  }
  throw HostError("an exception came out of " + description + " of " + Title() + ": " + problem, &m_entry, description,
                  "an exception came out: " + problem);
}

void LoadedDriver::Create() {
  Call("creation", [this] { m_driver = m_module.CreateDriver(m_instances); });
  if (m_driver == nullptr) {
    const std::string problem = "was not made: its module \"" + m_entry.module + "\" returned none";
    throw HostError(Title() + " " + problem, &m_entry, "creation", problem);
  }
}

void LoadedDriver::Initialize(H7XML::INode& config, H7XML::INode* persisted) {
  m_hasState = persisted != nullptr;
  m_stateIsWhole = !m_hasState;
  m_initializing = true;
  const int result = Call("Initialize", [&] { return m_driver->Initialize(m_entry.id, config, persisted); });
  if (m_base == BaseState::Constructed) {
    Report("its Initialize did not call the base's Initialize");
    m_base = BaseState::Initialized;
  }
  if (result != 0) {
    Occurrence failure{Occurrence::Kind::Failure, 0, "", "",
                       Title() + (m_entry.origin.empty() ? "" : " (" + m_entry.origin + ")") +
                           " could not start: its Initialize returned " + std::to_string(result) +
                           "; allowed: 0 for success"};
    failure.call = "Initialize";
    m_core.Emit(this, std::move(failure));
  }
}

void LoadedDriver::MakeRegisterCommands() {
  Call("RegisterCommands", [this] { m_driver->RegisterCommands(); });
}

std::string LoadedDriver::Command(const std::string& name, const Parameters& parameters) {
  const std::string call = CommandTitle(name);
  const std::shared_ptr<const CommandTable::Handler> handler = m_commands.Find(name);
  if (handler == nullptr) {
    const std::string known = boost::join(m_commands.Names(), ", ");
    const std::string problem = "has no " + call + (known.empty() ? "; it has none" : "; it has: " + known);
    throw HostError(Title() + " " + problem, &m_entry, call, problem);
  }
  Occurrence occurrence{Occurrence::Kind::Command, 0, "", name, ""};
  occurrence.parameters = parameters;
  m_core.Emit(this, std::move(occurrence));
  const CommandMessage message(parameters);
  std::string replyName;
  std::string reply;
  Call(call, [&] {
    const h7::auto_com<H7XML::INode> node = (*handler)(message);
    if (node) {
      reply = XmlText(*node, XmlStyle::Compact);
      replyName = node->GetName();
    }
  });
  m_core.Emit(Occurrence::Kind::Reply, this, replyName, reply);
  return reply;
}

void LoadedDriver::DeliverEvent(ISystemEventCallback& listener, const std::string& name, const XmlElement& event) {
  // Every listener gets a node of its own, so that none sees what another one did to it.
  const h7::auto_com<H7XML::INode> node = MakeXmlNode(event);
  Call(SystemEventTitle(name), [&] { listener.OnSystemEvent(*node); });
}

std::string LoadedDriver::GetPersistState(XmlStyle style) {
  return Call("GetPersistState", [this, style] {
    const h7::auto_com<H7XML::INode> state = m_driver->GetPersistState(0);
    return state ? XmlText(*state, style) : std::string();
  });
}

void LoadedDriver::Destroy() noexcept {
  try {
    const CallScope scope(m_core, this, "destruction");
    const EndNote note("destruction", Title());
    m_commands.Clear();
    delete std::exchange(m_driver, nullptr);
    ReportLeftovers();
  } catch (const abi::__forced_unwind&) {
    EndWatch::OnEndOfThread();
  } catch (...) {
    // A second thread that is inside has been reported; a report for which there is no memory is lost.
  }
}

void LoadedDriver::ReportLeftovers() {
  for (const std::string& name : m_commands.Names()) {
    Report("left command \"" + name + "\" behind: it was registered during the destruction");
  }
  m_commands.Clear();
  for (const EventListeners::Registration& registration : m_core.listeners.RemoveAll(m_entry.id)) {
    Report("left a listener for " + SystemEventTitle(registration.eventId) + " behind");
  }
  for (const std::string& iid : m_core.directory.WithdrawAll(m_entry.id)) {
    Report("left its registration under \"" + iid + "\" behind");
  }
  if (m_base == BaseState::Constructed || m_base == BaseState::Initialized) {
    Report("was destroyed without its base");
  }
  m_core.calls.NoteDestroyed(*this);
}

void LoadedDriver::BaseConstructed(H7BaseDriver&, DriverMultiplicity) {
  m_base = BaseState::Constructed;
}

void LoadedDriver::BaseInitialized(unsigned long driverId) {
  m_base = BaseState::Initialized;
  if (driverId != m_entry.id) {
    Report("passed the id " + std::to_string(driverId) + " to its base's Initialize");
  }
}

void LoadedDriver::BaseDestroyed() noexcept {
  m_base = BaseState::Destroyed;
}

IVariableManager* LoadedDriver::GetVariableManager() {
  const ServiceCall call(*this, "GetVariableManager");
  return call.IsAllowed() ? &m_core.variables : nullptr;
}

bool LoadedDriver::MayGiveState() const {
  return m_driver != nullptr && (m_stateIsWhole || !m_core.listeners.Listens(m_entry.id, SystemEvent_OnProjectLoaded));
}

void LoadedDriver::RegisterListener(ISystemEventCallback& listener, unsigned int eventId, unsigned long reserved) {
  const ServiceCall call(*this, "RegisterListener");
  if (call.IsAllowed()) {
    m_core.listeners.Add(m_entry.id, listener, eventId, reserved);
  }
}

void LoadedDriver::UnregisterListener(ISystemEventCallback& listener, unsigned int eventId, unsigned long reserved) {
  const ServiceCall call(*this, "UnregisterListener");
  if (call.IsAllowed()) {
    m_core.listeners.Remove(m_entry.id, listener, eventId, reserved);
  }
}

void LoadedDriver::SendDataToUI(const H7XML::INode& data) {
  const ServiceCall call(*this, "ConSendDataToUI");
  if (call.IsAllowed() && IsBaseInitialized("ConSendDataToUI")) {
    m_core.Emit(Occurrence::Kind::Notification, this, data.GetName(), XmlText(data, XmlStyle::Compact));
  }
}

void LoadedDriver::InvalidateState() {
  const ServiceCall call(*this, "DmInvalidateState");
  if (call.IsAllowed() && IsBaseInitialized("DmInvalidateState")) {
    m_core.NoteStateInvalid(*this);
    m_core.Emit(Occurrence::Kind::Invalidate, this, "", "");
  }
}

void LoadedDriver::NotePublished(const std::string& iid, void* instance) {
  m_core.calls.NotePublished(*this, iid, instance);
}

void LoadedDriver::NoteWithdrawn(const std::string& iid, void* instance) {
  m_core.calls.NoteUnpublished(*this, iid, instance);
}

void* LoadedDriver::Shown(const std::string& iid, void* instance) {
  return m_core.calls.Shown(*this, iid, instance);
}

void LoadedDriver::Report(const std::string& what) {
  m_core.Report(this, what);
}

bool LoadedDriver::Enter(const char* operation, From from) {
  // No driver is being called: what the host itself is doing meanwhile is still the call that is under way.
  if (m_core.gate.EnterFromDriver({nullptr, operation, Title()})) {
    Report(std::string(operation) + " came from a second thread; it was refused");
    return false;
  }
  if (from == From::Initialize && !m_initializing) {
    Leave();
    Report(std::string("called ") + operation + " before Initialize; nothing was done");
    return false;
  }
  return true;
}

void LoadedDriver::Leave() noexcept {
  m_core.gate.Leave();
}

bool LoadedDriver::IsBaseInitialized(const char* operation) {
  if (m_base != BaseState::Initialized) {
    const char* const when = m_base == BaseState::Destroyed ? " after its base was destroyed" : " before Initialize";
    Report(std::string("called ") + operation + when + "; nothing was done");
  }
  return m_base == BaseState::Initialized;
}

}  // namespace devhost
