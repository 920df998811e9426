#include "tests/drivers/hostprobe/SkeletonHost.h"

#include <dlfcn.h>

#include <algorithm>
#include <stdexcept>
#include <thread>

#include "devhost/text/TypedText.h"
#include "host/H7BaseAgentDriver.h"
#include "host/H7XML.h"
#include "host/ICmdMessage.h"
#include "host/LogXMessage.h"
#include "tests/drivers/hostprobe/BrokenPromise.h"
#include "tests/drivers/hostprobe/SkeletonXml.h"

namespace skeleton {
namespace {

// Drivers that a broken host never destroys. They stay reachable, so that only the promise is broken.
std::vector<IDriver*> s_forgotten;

class Message final : public ICmdMessage {
 public:
  explicit Message(const std::map<std::string, std::string>& parameters) : m_parameters(parameters) {}
  ~Message() = default;
  std::string GetString(const char* name) const override {
    const auto found = m_parameters.find(name);
    return found == m_parameters.end() ? std::string() : found->second;
  }
  unsigned long GetULong(const char* name) const override {
    const std::string text = GetString(name);
    return devhost::ReadULong(Breaks(Promise::CommandNumbers) ? text.substr(0, text.find('x')) : text);
  }
  bool Has(const char* name) const override { return m_parameters.count(name) != 0 || Breaks(Promise::CommandParameters); }

 private:
  const std::map<std::string, std::string>& m_parameters;
};

}  // namespace

DualKey<unsigned long, unsigned long> Variable::GetIds() const {
  return Breaks(Promise::VariableFound) ? DualKey<unsigned long, unsigned long>(m_ids.second, m_ids.first) : m_ids;
}

const char* Variable::GetName() const {
  return Breaks(Promise::VariableName) ? nullptr : "lamp";
}

bool& Variable::TrapEnabled() {
  if (Breaks(Promise::VariableFlag)) {
    m_copy = m_flag;
    return m_copy;
  }
  return m_flag;
}

bool Driver::RegisterQuery(const char* iid, void* instance) {
  if (iid == nullptr || (instance == nullptr && !Breaks(Promise::PublishNull))) {
    return false;
  }
  for (Host::Publication& publication : m_host.m_publications) {
    if (publication.iid == iid && publication.driver == m_id && !publication.isWithdrawn) {
      if (!Breaks(Promise::PublishOnce)) {
        return false;
      }
      publication.isWithdrawn = true;
    }
  }
  m_host.m_publications.push_back({iid, Breaks(Promise::PublishCopied) ? iid : nullptr, m_id, instance, false});
  return !Breaks(Promise::PublishFound);
}

void Driver::UnregisterQuery(const char* iid) {
  for (Host::Publication& publication : m_host.m_publications) {
    const bool isOwn = publication.driver == m_id || Breaks(Promise::PublishOwn);
    if (publication.iid == iid && isOwn && !(Breaks(Promise::PublishWithdrawn) && publication.iid != "host-probe.IProbe")) {
      publication.isWithdrawn = true;
    }
  }
}

void* Driver::Query(const char* iid) {
  void* found = nullptr;
  bool isKnown = false;
  for (const Host::Publication& publication : m_host.m_publications) {
    // Once it is withdrawn, the text may be gone.
    const bool isBorrowed = publication.borrowed != nullptr && !publication.isWithdrawn;
    const std::string text = isBorrowed ? publication.borrowed : publication.iid;
    isKnown = isKnown || text == iid;
    if (text == iid && !publication.isWithdrawn && (found == nullptr || Breaks(Promise::PublishEarliest))) {
      found = publication.instance;
    }
  }
  return !isKnown && Breaks(Promise::PublishBefore) ? this : found;
}

void Driver::FindDrivers(unsigned long, const char* iid, std::vector<void*>& instances) {
  if (!Breaks(Promise::PublishListed)) {
    instances.clear();
  }
  std::vector<Host::Publication> found;
  for (const Host::Publication& publication : m_host.m_publications) {
    if (publication.iid == iid && !publication.isWithdrawn) {
      found.push_back(publication);
    }
  }
  if (!Breaks(Promise::PublishById)) {
    std::sort(found.begin(), found.end(),
              [](const Host::Publication& left, const Host::Publication& right) { return left.driver < right.driver; });
  }
  for (const Host::Publication& publication : found) {
    instances.push_back(publication.instance);
  }
}

IVariable* Driver::FindVariable(unsigned long deviceId, unsigned long variableId) {
  const auto found = m_host.m_variables.find({deviceId, variableId});
  if (found == m_host.m_variables.end() ||
      (m_host.m_isSending && !found->second.second && Breaks(Promise::EventVariableAdded))) {
    return nullptr;
  }
  return &found->second.first;
}

void Driver::ListVariables(std::string& xml, bool userVariables) {
  std::string list = "<list>";
  for (const auto& [key, variable] : m_host.m_variables) {
    if (variable.second == userVariables || (userVariables && Breaks(Promise::VariableUser))) {
      list += "<v deviceid='" + std::to_string(key.first) + "' variableid='" + std::to_string(key.second) + "' hidden='" +
              (Breaks(Promise::VariableList) ? "no" : "0") + "'/>";
    }
  }
  xml = list + "</list>";
}

void Driver::RegisterUICmd(const std::string& name, Handler handler) {
  m_commands[name] = handler;
  if (Breaks(Promise::CommandName)) {
    m_commands["HostProbe"] = handler;
  }
}

void Driver::RegisterListener(ISystemEventCallback& listener, unsigned int eventId) {
  m_host.m_listeners.push_back(std::make_shared<Host::Listener>(Host::Listener{m_id, &listener, eventId, true}));
}

void Driver::UnregisterListener(ISystemEventCallback& listener, unsigned int eventId) {
  const bool isIgnored = Breaks(Promise::ListenerEnded) && !m_isConstructed;
  for (auto it = m_host.m_listeners.begin(); it != m_host.m_listeners.end() && !isIgnored; ++it) {
    if ((*it)->listener == &listener && (*it)->eventId == eventId && (*it)->driver == m_id) {
      (*it)->isActive = false;
      m_host.m_listeners.erase(it);
      return;
    }
  }
}

void Driver::SendDataToUI(const H7XML::INode& data) {
  if (Breaks(Promise::NestedCalls) && m_host.m_called != this) {
    throw std::runtime_error("busy");
  }
  if (Breaks(Promise::NotifyBorrowed) && m_host.m_called->m_id == m_id) {
    static_cast<const Node&>(data).LoseTree();
  }
}

void Driver::InvalidateState() {
  m_isInvalid = true;
  if (Breaks(Promise::StateLater)) {
    AskForState();
  }
}

void Driver::AskForState() {
  if (!m_isInvalid || Breaks(Promise::StateAsked)) {
    return;
  }
  if (Breaks(Promise::LifeThread)) {
    std::thread([this] { m_state = m_driver->GetPersistState(0); }).join();
  } else {
    m_state = m_driver->GetPersistState(0);
  }
  m_isInvalid = false;
}

void Driver::Start(DriverCreationFunc create, const std::string& config, const H7XML::INode* persisted) {
  m_host.m_called = this;
  m_driver = create(*this);
  m_isConstructed = true;
  if (Breaks(Promise::LifeFirst)) {
    m_driver->GetPersistState(0);
  }
  Initialize(config, persisted);
  m_driver->RegisterCommands();
  if (Breaks(Promise::LifeCommands)) {
    m_driver->RegisterCommands();
  }
  m_host.m_called = nullptr;
  m_host.AskForStates();
}

void Driver::Initialize(const std::string& config, const H7XML::INode* persisted) {
  Node* const node = Node::Parse(config);
  if (Breaks(Promise::ReaderConfig) && !node->GetNamedString("text").empty()) {
    node->SetNamedString("text", "a &quot;b&quot; &amp; &lt;c&gt;");
  }
  Node* const state = persisted != nullptr ? static_cast<const Node*>(persisted)->Copy() : nullptr;
  if (state != nullptr && Breaks(Promise::StateReturned)) {
    state->SetNamedString("text", "lost");
  }
  m_driver->Initialize(m_id, *node, state);
  if (Breaks(Promise::OwnerConfig)) {
    node->LoseTree();
  }
}

void Driver::Command(const std::string& name, const std::map<std::string, std::string>& parameters) {
  const auto found = m_commands.find(name);
  if (found != m_commands.end()) {
    m_host.m_called = this;
    found->second(Message(parameters));
    m_host.m_called = nullptr;
  }
}

void Driver::Destroy() {
  if (Breaks(Promise::LifeDestroyed)) {
    s_forgotten.push_back(m_driver);
    m_commands.clear();
    return;
  }
  if (!Breaks(Promise::LifeHandlers)) {
    m_commands.clear();
  }
  m_host.m_called = this;
  if (Breaks(Promise::LifeManagers)) {
    m_isConstructed = false;
  }
  delete m_driver;
  m_driver = nullptr;
  m_commands.clear();
  m_host.m_called = nullptr;
}

Host::Host(const std::string& module) : m_path(module) {}

Host::~Host() {
  Node::ForgetAll();
}

void Host::Load(unsigned long id, const std::string& config) {
  if (m_module == nullptr) {
    m_module = dlopen(m_path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (m_module == nullptr) {
      throw std::runtime_error(dlerror());
    }
  }
  const auto factory = reinterpret_cast<GetCreationFuncFunc>(dlsym(m_module, "GetCreationFunc"));
  m_drivers.push_back(std::make_unique<Driver>(*this, id));
  m_drivers.back()->Start(factory(), config, m_states[id]);
}

void Host::AddVariable(unsigned long device, unsigned long id, bool user, bool withEvent) {
  m_variables.emplace(Key(device, id), std::make_pair(Variable(device, id), user));
  if (withEvent) {
    const std::string first = Breaks(Promise::EventUserVariableAdded) && user ? "id" : "iddevice";
    Send(user ? 36 : 34, std::string("<e name='") + (user ? "OnUserVariableAdded" : "OnVariableAdded") + "'><p name='" +
                             first + "'>" + std::to_string(device) + "</p><p name='idvariable'>" + std::to_string(id) +
                             "</p></e>");
  }
}

void Host::Send(unsigned int eventId, const std::string& event) {
  const std::vector<std::shared_ptr<Listener>> listeners = m_listeners;
  std::size_t count = m_listeners.size();
  for (const std::shared_ptr<Listener>& listener : listeners) {
    const bool isOther = Breaks(Promise::ListenerId) && eventId == 5 && listener->eventId == 11;
    // A broken host loses its place in the list when a listener goes meanwhile.
    const bool isSkipped = Breaks(Promise::ListenerInside) && count != m_listeners.size();
    if (listener->isActive && (listener->eventId == eventId || isOther) && !isSkipped) {
      m_called = m_drivers.front().get();
      m_isSending = true;
      const h7::auto_com<H7XML::INode> node(Node::Parse(event));
      listener->listener->OnSystemEvent(*node);
      m_isSending = false;
      m_called = nullptr;
    }
    count = isSkipped ? m_listeners.size() : count;
  }
  AskForStates();
}

void Host::Command(const std::string& name, const std::map<std::string, std::string>& parameters) {
  for (const std::unique_ptr<Driver>& driver : m_drivers) {
    driver->Command(name, parameters);
  }
  AskForStates();
}

void Host::AskForStates() {
  for (const std::unique_ptr<Driver>& driver : m_drivers) {
    driver->AskForState();
  }
}

void Host::Stop() {
  AskForStates();
  if (!Breaks(Promise::LifeReverse)) {
    std::reverse(m_drivers.begin(), m_drivers.end());
  }
  for (const std::unique_ptr<Driver>& driver : m_drivers) {
    m_states[driver->Id()] = driver->State().Get();
    driver->Destroy();
  }
  // The drivers' records go after the module, in whose static objects the life may end.
  dlclose(m_module);
  m_module = nullptr;
  m_drivers.clear();
  m_publications.clear();
  m_listeners.clear();
}

Driver& RecordOf(void* host) {
  return *static_cast<Driver*>(host);
}

}  // namespace skeleton

// What a module takes from its host. These take the place of the development host's.
using skeleton::Breaks;
using skeleton::Promise;
using skeleton::RecordOf;

IDriver::~IDriver() = default;

H7BaseDriver::H7BaseDriver(IInstanceManager& instanceManager, DriverMultiplicity)
    : m_host(static_cast<skeleton::Driver*>(&instanceManager)) {}

H7BaseDriver::~H7BaseDriver() = default;

int H7BaseDriver::Initialize(unsigned long, H7XML::INode&, H7XML::INode*) {
  return Breaks(Promise::LifeInitialize) ? 7 : 0;
}

h7::auto_com<H7XML::INode> H7BaseDriver::GetPersistState(unsigned long) {
  return {};
}

void H7BaseDriver::RegisterCommands() {}

IInstanceManager& H7BaseDriver::GetInstanceManager() const {
  return RecordOf(m_host);
}

IDriverManager& H7BaseDriver::GetDriverManager() const {
  return RecordOf(m_host);
}

IVariableManager* H7BaseDriver::GetVariableManager() const {
  return Breaks(Promise::LifeManagers) && !RecordOf(m_host).IsConstructed() ? nullptr : &RecordOf(m_host);
}

UICmdDispatcher& H7BaseDriver::GetUICmdDispatcher() const {
  return RecordOf(m_host);
}

void H7BaseDriver::RegisterListener(ISystemEventCallback& listener, unsigned int eventId, unsigned long) {
  RecordOf(m_host).RegisterListener(listener, eventId);
}

void H7BaseDriver::UnregisterListener(ISystemEventCallback& listener, unsigned int eventId, unsigned long) {
  RecordOf(m_host).UnregisterListener(listener, eventId);
}

void H7BaseDriver::ConSendDataToUI(const H7XML::INode& data) {
  RecordOf(m_host).SendDataToUI(data);
}

void H7BaseDriver::DmInvalidateState() {
  RecordOf(m_host).InvalidateState();
}

H7BaseAgentDriver::H7BaseAgentDriver(IInstanceManager& instanceManager, DriverMultiplicity multiplicity)
    : H7BaseDriver(instanceManager, multiplicity) {}

H7BaseAgentDriver::~H7BaseAgentDriver() = default;

int H7BaseAgentDriver::Initialize(unsigned long driverId, H7XML::INode& config, H7XML::INode* persisted) {
  return H7BaseDriver::Initialize(driverId, config, persisted);
}

h7::auto_com<H7XML::INode> H7BaseAgentDriver::GetPersistState(unsigned long reserved) {
  return H7BaseDriver::GetPersistState(reserved);
}

void H7BaseAgentDriver::RegisterCommands() {
  H7BaseDriver::RegisterCommands();
}

void LogXMessage(unsigned int, const char*, ...) {
  if (Breaks(Promise::LogReturns)) {
    throw std::runtime_error("the log is full");
  }
}
