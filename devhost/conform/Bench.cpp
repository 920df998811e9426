#include "devhost/conform/Bench.h"

#include <cxxabi.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <typeinfo>
#include <utility>

#include "devhost/conform/Check.h"
#include "devhost/engine/HostError.h"
#include "devhost/system/Output.h"
#include "devhost/text/Words.h"
#include "devhost/xml/XmlReader.h"
#include "host/IDriverManager.h"

namespace devhost {

namespace {

constexpr unsigned long kDouble = 1;
constexpr unsigned long kAgent = 2;
constexpr unsigned long kReader = 3;
constexpr std::size_t kSlots = 40;
constexpr char kNoDevice[] = "there is no device to call: see life-publish";

// The first word of an object with virtual functions: in front of these stand the way to the whole object and its type.
const void* const* TableOf(const ISupportSNMP* object) {
  const void* const* table = nullptr;
  std::memcpy(&table, static_cast<const void*>(object), sizeof table);
  return table;
}

bool IsDevice(const ISupportSNMP* published) {
  const void* const* const table = TableOf(published);
  if (ModuleFileOf(table).empty()) {
    return false;
  }
  std::ptrdiff_t wayToWhole = 0;
  std::memcpy(&wayToWhole, table - 2, sizeof wayToWhole);
  const auto* const type = static_cast<const std::type_info*>(table[-1]);
  const auto* const wanted = dynamic_cast<const abi::__class_type_info*>(&typeid(ISupportSNMP));
  void* base = const_cast<char*>(reinterpret_cast<const char*>(published)) + wayToWhole;
  return type != nullptr && wanted != nullptr && type->__do_upcast(wanted, &base) && base == published;
}

}  // namespace

// Not an agent, so it gets the devices themselves and not what the host puts in front of them.
struct Bench::Reader : H7BaseAgentDriver {
  explicit Reader(IInstanceManager& instances) : H7BaseAgentDriver(instances, DriverMultiplicity_Single) {}
  using H7BaseAgentDriver::GetDriverManager;
};

Bench::Bench(Trial& trial, StateStore* states) : m_trial(trial), m_host(*this, states) {
  m_host.Load({kDouble, "double", "the agent double", "<config/>"}, [this](IInstanceManager& instances) {
    m_double = new AgentDouble(instances, m_record, m_trial.trail);
    return m_double;
  });
  m_host.Load({kReader, "reader", "the bench", "<config/>"}, [this](IInstanceManager& instances) {
    m_reader = new Reader(instances);
    return m_reader;
  });
}

std::string Bench::TryLoad(unsigned long id, const std::string& config) {
  // Not the folder above: when that has been removed, nobody is left to remove it again.
  std::filesystem::create_directory(FolderOf(id));
  const std::string text = config.empty() ? m_trial.profile.ConfigIn(FolderOf(id)) : config;
  m_trial.trail.Note("Initialize");
  try {
    m_host.Load({id, "device" + std::to_string(id), m_trial.module, text});
    return "";
  } catch (const HostError& error) {
    return error.what();
  }
}

void Bench::Load(unsigned long id) {
  const std::string problem = TryLoad(id);
  if (!problem.empty()) {
    throw Blocked("there is no driver: " + problem);
  }
}

std::string Bench::TryLoadThrough(const Wrap& wrap) {
  std::filesystem::create_directory(FolderOf(kDevice));
  m_trial.trail.Note("Initialize");
  if (!m_open) {
    m_open.emplace(m_trial.module);
  }
  try {
    m_host.Load({kDevice, "device", m_trial.module, m_trial.profile.ConfigIn(FolderOf(kDevice))},
                [this, wrap](IInstanceManager& instances) {
                  m_openDriver = m_open->CreateDriver(wrap(instances));
                  return m_openDriver;
                });
    return "";
  } catch (const HostError& error) {
    return error.what();
  }
}

int Bench::InitializeAgain() {
  int result = 0;
  m_trial.trail.Note("Initialize");
  Act([&] {
    const h7::auto_com<H7XML::INode> config = MakeXmlNode(ReadXml(m_trial.profile.ConfigIn(FolderOf(kDevice))));
    result = m_openDriver->Initialize(kDevice, *config, nullptr);
  });
  return result;
}

void Bench::SetInside(const std::function<void()>& inside) {
  m_inside = inside;
  m_record.onCall = inside ? [inside](const AgentCall&) { inside(); } : std::function<void(const AgentCall&)>();
}

void Bench::LoadAgent() {
  m_host.Load({kAgent, "agent", m_trial.agent, "<config/>"});
}

std::string Bench::AskAgent(const std::string& command, const Parameters& parameters) {
  m_trial.trail.Note(command);
  try {
    return m_host.Command(kAgent, command, parameters);
  } catch (const HostError& error) {
    throw Violation(error.what(), command);
  }
}

void Bench::SendCommand(const std::string& words, unsigned long id) {
  std::vector<std::string> parts = SplitWords(words);
  const std::string command = parts.empty() ? "" : parts.front();
  Parameters parameters;
  for (std::size_t i = 1; i < parts.size(); ++i) {
    const std::size_t end = parts[i].find('=');
    parameters.emplace_back(parts[i].substr(0, end), end == std::string::npos ? "" : parts[i].substr(end + 1));
  }
  try {
    const std::string reply = m_host.Command(id, command, parameters);
    Expect(!StartsWith(reply, "<Fail"), "the command " + Quoted(words) + " was answered with " + Quoted(reply), command);
  } catch (const HostError& error) {
    throw Violation(error.what(), command);
  }
}

std::string Bench::FolderOf(unsigned long id) const {
  return m_trial.folder + "/device" + std::to_string(id);
}

void Bench::Act(const std::function<void()>& action) {
  if (m_isActing) {
    action();
    return;
  }
  m_isActing = true;
  m_record.action = action;
  m_record.problem = nullptr;
  m_host.Command(kDouble, AgentDouble::kCommand, {});
  m_isActing = false;
  if (m_record.problem != nullptr) {
    std::rethrow_exception(std::exchange(m_record.problem, nullptr));
  }
}

void Bench::AgentArrives() {
  ExpectDevices();
  m_trial.trail.Note("AgentAvailable");
  Act([this] { m_double->Arrive(); });
}

void Bench::AgentLeaves() {
  Act([this] { m_double->Leave(); });
}

std::vector<ISupportSNMP*> Bench::Published() {
  std::vector<ISupportSNMP*> devices;
  Act([&] { devices = m_double->Devices(); });
  return devices;
}

std::size_t Bench::ExpectDevices() {
  std::vector<ISupportSNMP*> objects;
  Act([&] { objects = m_reader->GetDriverManager().ListDrivers<ISupportSNMP>(0, ISupportSNMP_IID); });
  for (const ISupportSNMP* const object : objects) {
    if (!WhyNotADevice(object, m_trial.module).empty()) {
      throw Blocked(kNoDevice);
    }
  }
  return objects.size();
}

Device Bench::GetDevice() {
  if (ExpectDevices() == 0) {
    throw Blocked(kNoDevice);
  }
  return {*Published().front(), m_trial.trail};
}

void Bench::ActOnDevice(const std::function<void(Device&)>& action) {
  AgentArrives();
  Load();
  Act([&] {
    Device device = GetDevice();
    action(device);
  });
}

void Bench::Stop() {
  m_trial.trail.Note("destructor");
  m_host.Stop();
  m_double = nullptr;
  m_reader = nullptr;
}

std::size_t Bench::CountOf(const std::string& operation, unsigned long deviceId) const {
  return static_cast<std::size_t>(std::count_if(m_record.calls.begin(), m_record.calls.end(), [&](const AgentCall& call) {
    return call.operation == operation && call.deviceId == deviceId;
  }));
}

std::vector<std::string> Bench::Reports(bool onOtherThread) const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_reports[onOtherThread ? 1 : 0];
}

std::vector<std::string> Bench::Lines(Occurrence::Kind kind) const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  std::vector<std::string> lines;
  for (const Occurrence& occurrence : m_occurrences) {
    if (occurrence.kind == kind) {
      lines.push_back(kind == Occurrence::Kind::Log ? occurrence.text : devhost::TextOf(occurrence));
    }
  }
  return lines;
}

std::vector<std::pair<std::string, std::string>> Bench::LogWithSlots() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_log;
}

std::vector<std::string> Bench::OperatorLines() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  std::vector<std::string> lines;
  for (const Occurrence& occurrence : m_occurrences) {
    if (occurrence.kind == Occurrence::Kind::Log && occurrence.level == 3) {
      lines.push_back(occurrence.text);
    }
  }
  return lines;
}

void Bench::ForgetAll() {
  const std::lock_guard<std::mutex> lock(m_mutex);
  // New ones, since {} would keep the memory.
  m_occurrences = std::vector<Occurrence>();
  m_log = std::vector<std::pair<std::string, std::string>>();
  m_record.calls = std::vector<AgentCall>();
}

void Bench::Remember(const Occurrence& occurrence, bool isHere) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_occurrences.push_back(occurrence);
  using Kind = Occurrence::Kind;
  if (occurrence.kind == Kind::Manners) {
    m_reports[isHere ? 0 : 1].push_back(devhost::TextOf(occurrence));
  }
  if (occurrence.kind == Kind::Log) {
    m_log.emplace_back(occurrence.text, isHere ? m_trial.trail.Last() : "");
    if (!isHere) {
      m_reports[1].push_back("LogXMessage was called on another thread than the host's: " + Quoted(occurrence.text));
    }
  }
}

// At once to the output, which is all that is left of a process that crashes.
void Bench::OnOccurrence(const Occurrence& occurrence) {
  using Kind = Occurrence::Kind;
  const bool isHere = std::this_thread::get_id() == m_thread;
  Remember(occurrence, isHere);
  if (occurrence.kind == Kind::Log || occurrence.kind == Kind::Manners || occurrence.kind == Kind::Failure) {
    Output(STDOUT_FILENO).Write(OneLine(devhost::TextOf(occurrence)) + "\n");
  }
  if (isHere && m_inside && (occurrence.kind == Kind::Log || occurrence.kind == Kind::Invalidate)) {
    m_inside();
  }
}

std::string WhyNotADevice(const ISupportSNMP* published, const std::string& module) {
  if (!IsDevice(published)) {
    return "what is published is not an ISupportSNMP: convert the driver to ISupportSNMP* before it becomes a void*";
  }
  for (std::size_t slot = 0; slot != kSlots; ++slot) {
    const std::string file = ModuleFileOf(TableOf(published)[slot]);
    std::error_code error;
    if (!std::filesystem::equivalent(file, module, error)) {
      return "slot " + std::to_string(slot + 1) + " of the device leads to " + (file.empty() ? "no code" : Quoted(file)) +
             "; allowed: code of the module";
    }
  }
  return "";
}

}  // namespace devhost
