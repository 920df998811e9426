#include "fuzz/agent/World.h"

#include "agent/ISNMPConfigurationAgent.h"
#include "devhost/driver/DriverServices.h"
#include "devhost/xml/XmlReader.h"
#include "host/H7XML.h"

namespace fuzz {
namespace {

const char* Truth(bool value) {
  return value ? "true" : "false";
}

bool Bit(unsigned int bits, unsigned int place) {
  return (bits >> place & 1U) != 0;
}

// Besides reached code, the fuzzer counts a new pair of a call and what was done inside it.
__attribute__((section("__libfuzzer_extra_counters"))) unsigned char s_ground[4096];

void Reach(const std::string& where, int what) {
  // The call counts without its arguments and without the name of its object.
  const std::string call = where.substr(0, where.find(' ', where.compare(0, 9, "variable ") == 0 ? where.find('.') : 0));
  const std::size_t dot = call.rfind('.');
  const std::string name = dot == std::string::npos ? call : call.substr(dot);
  s_ground[(std::hash<std::string>()(name) * 31 + static_cast<std::size_t>(what)) % sizeof s_ground] = 1;
}

bool StartsWith(const std::string& text, const std::string& start) {
  return text.compare(0, start.size(), start) == 0;
}

}  // namespace

int Device::CopyFrom(const std::string& path, std::string& config) {
  const int status = RecordingDevice::CopyFrom(path, config);
  if (status == -9) {
    config = file;
  }
  return status;
}

std::string Device::Describe() const {
  std::string text;
  for (const bool value : {managed, dirty, enabled, usePrimaryContact, useProjectOwnerAddress, useRoomDevice}) {
    text.append(Truth(value)).append(" ");
  }
  for (const std::string& value : {communityRead, communityWrite, sysContact, sysLocation, sysName,
                                   testsupport::TrapText(trapTargets), file, offered}) {
    text.append("[").append(value).append("]\n");
  }
  return text;
}

Variable::Variable(Journal& journal, unsigned long deviceId, unsigned long variableId, std::string variableName)
    : FakeVariable(deviceId, variableId, std::move(variableName)), m_journal(journal) {}

DualKey<unsigned long, unsigned long> Variable::GetIds() const {
  m_journal.Note("variable " + name + ".GetIds");
  return FakeVariable::GetIds();
}

const char* Variable::GetName() const {
  m_journal.Note("variable " + name + ".GetName");
  return FakeVariable::GetName();
}

bool& Variable::TrapEnabled() {
  m_journal.Note("variable " + name + ".TrapEnabled");
  return FakeVariable::TrapEnabled();
}

// The host has made itself the process's log when it was made. It becomes the log again while the world plays.
World::World(Factory factory, DescribeDriver describe)
    : m_factory(std::move(factory)),
      m_describe(std::move(describe)),
      m_host(m_journal),
      m_log(devhost::SetLogSink(nullptr)) {
  for (unsigned long name = 1; name <= kDevices; ++name) {
    m_devices.push_back(std::make_unique<Device>(name, m_journal));
  }
}

World::~World() {
  m_journal.SetHook(nullptr);
  Clock::Use(&m_clock);
  m_host.DropHandlers();
  m_driver.reset();
  Clock::Use(nullptr);
}

std::string World::Play(const Operation& operation, const std::vector<Plan>& plans) {
  m_seen.clear();
  m_calls = 0;
  m_plans = &plans;
  Clock::Use(&m_clock);
  devhost::SetLogSink(m_log);
  m_journal.SetHook([this](const std::string& call) { OnCall(call); });
  std::string result;
  try {
    result = Run(operation);
  } catch (const Fault&) {
    result = "fault";
  }
  m_journal.SetHook(nullptr);
  devhost::SetLogSink(nullptr);
  Clock::Use(nullptr);
  m_plans = nullptr;
  m_journal.Take();
  Reach(result.substr(0, result.find('>')), static_cast<int>(operation.kind));
  std::string seen;
  for (const std::string& line : m_seen) {
    seen.append(line).append("\n");
  }
  return seen + "= " + result + "\n";
}

void World::OnCall(const std::string& call) {
  m_seen.push_back(call);
  ++m_calls;
  const unsigned int number = m_calls;
  for (const Plan& plan : *m_plans) {
    if (plan.at != number) {
      continue;
    }
    if (plan.throws) {
      Reach(call, -1);
      m_seen.push_back("! fault");
      throw Fault();
    }
    if (MayNest(call)) {
      Reach(call, static_cast<int>(plan.nested.kind));
      m_seen.push_back("{");
      const std::string result = Run(plan.nested);
      m_seen.push_back("} " + result);
    }
  }
}

// A driver that is still being constructed, or whose own destructor has finished, must not be called.
bool World::MayNest(const std::string& call) const {
  return m_phase == Phase::Running ||
         (m_phase == Phase::Destroying && !StartsWith(call, "UnregisterQuery") && !StartsWith(call, "BaseDestroyed"));
}

std::string World::Run(const Operation& operation) {
  const bool nested = m_phase != Phase::Outside;
  if (operation.kind < Operation::Kind::Create) {
    ChangeWorld(operation);
    return "";
  }
  if (nested) {
    // A host does not create or destroy a driver during a call into it.
    if (operation.kind <= Operation::Kind::RegisterCommands) {
      return "not now";
    }
    return CallDriver(operation);
  }
  if (operation.kind != Operation::Kind::Create && m_driver == nullptr) {
    return "no driver";
  }
  m_phase = Phase::Running;
  try {
    const std::string result = CallDriver(operation);
    m_phase = Phase::Outside;
    return result;
  } catch (...) {
    m_phase = Phase::Outside;
    throw;
  }
}

void World::ChangeWorld(const Operation& operation) {
  Device& device = *m_devices.at(operation.device % kDevices);
  switch (operation.kind) {
    case Operation::Kind::SetText: {
      std::string* const texts[] = {&device.communityRead, &device.communityWrite, &device.sysContact,
                                    &device.sysLocation,   &device.sysName,        &device.version};
      *texts[operation.number % 6] = operation.text;
      break;
    }
    case Operation::Kind::AddTrap:
      device.trapTargets.emplace_back(operation.text, operation.secondText, Bit(operation.number, 0) ? "162" : "");
      break;
    case Operation::Kind::SetSwitches:
      device.managed = Bit(operation.number, 0);
      device.dirty = Bit(operation.number, 1);
      device.enabled = Bit(operation.number, 2);
      device.usePrimaryContact = Bit(operation.number, 3);
      device.useProjectOwnerAddress = Bit(operation.number, 4);
      device.useRoomDevice = Bit(operation.number, 5);
      device.versionValid = !Bit(operation.number, 6);
      break;
    case Operation::Kind::SetErased:
      device.communityReadErased = Bit(operation.number, 0);
      device.communityWriteErased = Bit(operation.number, 1);
      device.sysContactErased = Bit(operation.number, 2);
      device.sysLocationErased = Bit(operation.number, 3);
      device.sysNameErased = Bit(operation.number, 4);
      device.trapTargetsErased = Bit(operation.number, 5);
      break;
    case Operation::Kind::SetStatus: {
      testsupport::Statuses* const statuses[] = {&device.copyFrom, &device.copyTo, &device.reboot, &device.stop,
                                                 &device.start};
      statuses[operation.number % 5]->always = operation.status;
      break;
    }
    case Operation::Kind::SetFile:
      device.file = operation.text;
      break;
    case Operation::Kind::SetList:
      (operation.flag ? m_host.userVariableList : m_host.variableList) = operation.text;
      break;
    case Operation::Kind::AddVariable: {
      const unsigned long own = operation.flag ? operation.id + 1 : operation.id;
      m_variables.push_back(std::make_unique<Variable>(m_journal, own, operation.secondId, operation.text));
      m_host.variables[{operation.id, operation.secondId}] = m_variables.back().get();
      break;
    }
    case Operation::Kind::TakeVariable:
      m_host.variables.erase({operation.id, operation.secondId});
      break;
    case Operation::Kind::SetDrivers:
      m_host.drivers.clear();
      for (unsigned int index = 0; index != kDevices; ++index) {
        if (Bit(operation.number, index)) {
          m_host.drivers.push_back(m_devices[index].get());
        }
      }
      break;
    default:
      m_host.refusesRegistrations = operation.flag;
      break;
  }
}

std::string World::CallDriver(const Operation& operation) {
  switch (operation.kind) {
    case Operation::Kind::Create:
      Create();
      return "";
    case Operation::Kind::Destroy:
      Destroy();
      return "";
    case Operation::Kind::Initialize:
      Initialize(operation.text);
      return "";
    case Operation::Kind::Restart: {
      const std::string state = Persist();
      Destroy();
      Create();
      Initialize(state);
      m_driver->RegisterCommands();
      return state;
    }
    case Operation::Kind::RegisterCommands:
      m_driver->RegisterCommands();
      return "";
    case Operation::Kind::Command:
      return Command(operation);
    case Operation::Kind::Event: {
      const auto event = devhost::ReadXmlNode(operation.text);
      m_host.SendEvent(operation.number, *event);
      return "";
    }
    case Operation::Kind::Persist:
      return Persist();
    default:
      break;
  }
  void* const published = m_host.Published(ISNMPConfigurationAgent_IID);
  if (published == nullptr) {
    return "not published";
  }
  ISNMPConfigurationAgent& agent = *static_cast<ISNMPConfigurationAgent*>(published);
  if (operation.kind == Operation::Kind::Announce) {
    const bool none = operation.device == Operation::kNoDevice;
    agent.AddSNMPDevice(operation.id, none ? nullptr : m_devices.at(operation.device % kDevices).get());
  } else if (operation.kind == Operation::Kind::Withdraw) {
    agent.DeleteSNMPDevice(operation.id);
  } else {
    return Truth(agent.SetDeviceState(operation.id));
  }
  return "";
}

void World::Create() {
  if (m_driver != nullptr) {
    return;
  }
  m_phase = Phase::Constructing;
  try {
    m_driver.reset(m_factory(*this));
  } catch (const Fault&) {
    Forget();
    throw;
  }
  m_phase = Phase::Running;
}

void World::Destroy() {
  m_host.DropHandlers();
  m_phase = Phase::Destroying;
  delete m_driver.release();
  Forget();
  m_phase = Phase::Running;
}

// Takes back what a destroyed driver has left with the host, in case a call of its clean-up has failed.
void World::Forget() {
  m_journal.SetHook(nullptr);
  auto& services = *static_cast<devhost::DriverServices*>(Instances().Query(devhost::DriverServices_IID));
  const std::vector<RecordingHost::Listener> listeners = m_host.Listeners();
  for (const RecordingHost::Listener& listener : listeners) {
    services.UnregisterListener(*listener.callback, listener.eventId, listener.reserved);
  }
  Instances().UnregisterQuery(ISNMPConfigurationAgent_IID);
  m_journal.SetHook([this](const std::string& call) { OnCall(call); });
}

void World::Initialize(const std::string& state) {
  const auto config = H7XML::CreateXmlNode("config", "");
  h7::auto_com<H7XML::INode> persisted;
  if (!state.empty()) {
    persisted = devhost::ReadXmlNode(state);
  }
  m_driver->Initialize(3, *config, persisted.Get());
}

std::string World::Persist() {
  const auto state = m_driver == nullptr ? h7::auto_com<H7XML::INode>() : m_driver->GetPersistState(0);
  return state ? devhost::XmlText(*state, devhost::XmlStyle::Compact) : "";
}

std::string World::Command(const Operation& operation) {
  try {
    return m_host.CommandText(operation.text, operation.parameters);
  } catch (const std::out_of_range&) {
    return "no handler";
  }
}

std::string World::Describe() {
  std::string text;
  for (const auto& device : m_devices) {
    text += device->Describe();
  }
  for (const auto& variable : m_variables) {
    text.append(variable->name).append(" ").append(Truth(variable->enabled)).append("\n");
  }
  text += std::to_string(m_host.Listeners().size()) + " listeners, " +
          (m_host.AnythingPublished() ? "published" : "not published") + "\n";
  return m_driver == nullptr ? text : text + m_describe(*m_driver, *this);
}

std::string World::NameOf(const std::function<void()>& call) {
  m_journal.Take();
  call();
  const std::string noted = m_journal.Take().at(0);
  return noted.substr(0, noted.find('.'));
}

}  // namespace fuzz
