#include "tests/support/RecordingHost.h"

#include <algorithm>
#include <stdexcept>

#include "agent/Exports.h"
#include "agent/ISNMPConfigurationAgent.h"
#include "agent/SNMPConfigurationAgent.h"
#include "devhost/driver/CommandMessage.h"
#include "devhost/driver/EventListeners.h"
#include "devhost/xml/XmlReader.h"
#include "host/H7XML.h"

namespace {

std::string Numbers(const char* call, unsigned long first, unsigned long second) {
  return std::string(call) + ' ' + std::to_string(first) + ' ' + std::to_string(second);
}

const char* Truth(bool value) {
  return value ? "true" : "false";
}

}  // namespace

RecordingHost::RecordingHost(Journal& journal) : m_journal(journal), m_formerSink(devhost::SetLogSink(this)) {}

RecordingHost::~RecordingHost() {
  devhost::SetLogSink(m_formerSink);
}

h7::auto_com<H7XML::INode> RecordingHost::Command(const std::string& name, const Parameters& parameters) {
  const Handler handler = m_handlers.at(name);
  return handler(devhost::CommandMessage(parameters));
}

std::string RecordingHost::CommandText(const std::string& name, const Parameters& parameters) {
  const h7::auto_com<H7XML::INode> reply = Command(name, parameters);
  return reply ? devhost::XmlText(*reply, devhost::XmlStyle::Compact) : "no reply";
}

void RecordingHost::SendEvent(unsigned int eventId, H7XML::INode& event) {
  const std::vector<Listener> listeners = m_listeners;
  for (const Listener& listener : listeners) {
    if (listener.eventId == eventId) {
      listener.callback->OnSystemEvent(event);
    }
  }
}

void RecordingHost::SendEvent(const std::string& name, const Parameters& parameters) {
  const h7::auto_com<H7XML::INode> event = H7XML::CreateXmlNode("event", "");
  event->SetNamedString("name", name);
  for (const auto& parameter : parameters) {
    const h7::auto_com<H7XML::INode> child = H7XML::CreateXmlNode("parameter", parameter.second);
    child->SetNamedString("name", parameter.first);
    event->AppendChild(*child);
  }
  SendEvent(devhost::SystemEventIdOf(name), *event);
}

void* RecordingHost::Published(const std::string& iid) const {
  const auto found = m_published.find(iid);
  return found == m_published.end() ? nullptr : found->second;
}

void RecordingHost::BaseConstructed(H7BaseDriver&, DriverMultiplicity multiplicity) {
  m_journal.Note("BaseConstructed " + std::to_string(static_cast<int>(multiplicity)));
}

void RecordingHost::BaseInitialized(unsigned long driverId) {
  m_journal.Note("BaseInitialized " + std::to_string(driverId));
}

void RecordingHost::BaseDestroyed() noexcept {
  try {
    m_journal.Note("BaseDestroyed");
  } catch (...) {
  }
}

IInstanceManager& RecordingHost::GetInstanceManager() {
  m_journal.Note("GetInstanceManager");
  return *this;
}

IDriverManager& RecordingHost::GetDriverManager() {
  m_journal.Note("GetDriverManager");
  return *this;
}

IVariableManager* RecordingHost::GetVariableManager() {
  m_journal.Note("GetVariableManager");
  return this;
}

UICmdDispatcher& RecordingHost::GetUICmdDispatcher() {
  m_journal.Note("GetUICmdDispatcher");
  return *this;
}

void RecordingHost::RegisterListener(ISystemEventCallback& listener, unsigned int eventId, unsigned long reserved) {
  m_journal.Note(Numbers("RegisterListener", eventId, reserved));
  m_listeners.push_back({&listener, eventId, reserved});
}

void RecordingHost::UnregisterListener(ISystemEventCallback& listener, unsigned int eventId, unsigned long reserved) {
  const auto isIt = [&](const Listener& registered) {
    return registered.callback == &listener && registered.eventId == eventId && registered.reserved == reserved;
  };
  const bool known = std::any_of(m_listeners.begin(), m_listeners.end(), isIt);
  m_journal.Note(Numbers("UnregisterListener", eventId, reserved) + (known ? "" : " unknown"));
  m_listeners.erase(std::remove_if(m_listeners.begin(), m_listeners.end(), isIt), m_listeners.end());
}

void RecordingHost::SendDataToUI(const H7XML::INode& data) {
  m_journal.Note("ConSendDataToUI " + devhost::XmlText(data, devhost::XmlStyle::Compact));
}

void RecordingHost::InvalidateState() {
  m_journal.Note("DmInvalidateState");
}

bool RecordingHost::RegisterQuery(const char* iid, void* instance) {
  m_journal.Note(std::string("RegisterQuery ") + iid);
  return !refusesRegistrations && m_published.emplace(iid, instance).second;
}

void RecordingHost::UnregisterQuery(const char* iid) {
  m_journal.Note(std::string("UnregisterQuery ") + iid);
  m_published.erase(iid);
}

void* RecordingHost::Query(const char* iid) {
  if (iid == std::string(devhost::DriverServices_IID)) {
    // This is how a base finds its host. It is not a call of the driver, so it is not recorded.
    return static_cast<devhost::DriverServices*>(this);
  }
  m_journal.Note(std::string("Query ") + iid);
  return Published(iid);
}

void RecordingHost::FindDrivers(unsigned long scope, const char* iid, std::vector<void*>& instances) {
  m_journal.Note("FindDrivers " + std::to_string(scope) + ' ' + iid);
  instances.clear();
  if (iid == std::string(ISupportSNMP_IID)) {
    instances.assign(drivers.begin(), drivers.end());
  }
}

IVariable* RecordingHost::FindVariable(unsigned long deviceId, unsigned long variableId) {
  m_journal.Note(Numbers("FindVariable", deviceId, variableId));
  const auto found = variables.find({deviceId, variableId});
  return found == variables.end() ? nullptr : found->second;
}

void RecordingHost::ListVariables(std::string& xml, bool userVariables) {
  m_journal.Note(std::string("ListVariables ") + Truth(userVariables) + (xml.empty() ? "" : " not empty"));
  xml = userVariables ? userVariableList : variableList;
}

void RecordingHost::RegisterUICmd(const std::string& name, Handler handler) {
  m_journal.Note("RegisterUICmd " + name);
  m_handlers[name] = std::move(handler);
}

void RecordingHost::Log(unsigned int level, const char* line, const void*) noexcept {
  try {
    m_journal.Note("Log " + std::to_string(level) + ' ' + line);
  } catch (...) {
  }
}

HostedAgent::HostedAgent(RecordingHost& host) : m_host(host), m_driver(GetCreationFunc()(host.Instances())) {}

int HostedAgent::Initialize(H7XML::INode* persisted) {
  const h7::auto_com<H7XML::INode> config = H7XML::CreateXmlNode("config", "");
  return m_driver->Initialize(3, *config, persisted);
}

void HostedAgent::Destroy() {
  m_host.DropHandlers();
  m_driver.reset();
}

SNMPConfigurationAgent& HostedAgent::Agent() const {
  return static_cast<SNMPConfigurationAgent&>(*m_driver);
}

ISNMPConfigurationAgent& HostedAgent::Published() const {
  void* const published = m_host.Published(ISNMPConfigurationAgent_IID);
  if (published == nullptr) {
    throw std::logic_error("the agent is not published");
  }
  return *static_cast<ISNMPConfigurationAgent*>(published);
}
