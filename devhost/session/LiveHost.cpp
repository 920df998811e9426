#include "devhost/session/LiveHost.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>

#include "devhost/preview/DeviceQuestions.h"
#include "devhost/project/ChosenDevice.h"
#include "devhost/script/DeviceReplies.h"
#include "devhost/session/RequestError.h"
#include "devhost/text/Words.h"
#include "devhost/xml/XmlReader.h"
#include "host/ISupportSNMP.h"

namespace devhost {

namespace {

using Kind = Occurrence::Kind;

constexpr char kNoDevice[] = "the project has no device with that id; GET /devices has those that there are";

// The largest id that no driver of the project has.
unsigned long FreeId(const std::map<unsigned long, const DriverEntry*>& drivers) {
  unsigned long id = std::numeric_limits<std::uint32_t>::max();
  while (drivers.count(id) != 0) {
    --id;
  }
  return id;
}

// Sets a switch for as long as it lives.
class Switched {
 public:
  explicit Switched(bool& which) : m_which(which) { m_which = true; }
  ~Switched() { m_which = false; }
  Switched(const Switched&) = delete;
  Switched& operator=(const Switched&) = delete;

 private:
  bool& m_which;
};

// Learns what the driver may quote of what it has answered. A file takes a while, and what was learnt of it once stays.
void Learn(const DeviceAnswers& answers, const std::string& learntFile, Masker& secrets) {
  if (answers.file != learntFile) {
    secrets.Config(answers.file);
  }
  secrets.Secret(answers.communityRead.value);
  secrets.Secret(answers.communityWrite.value);
  for (const TrapTarget& target : answers.trapTargets.value) {
    secrets.Secret(target.community);
  }
}

// What a list needs, which no device has to look into its file for.
void Glance(ISupportSNMP& device, DeviceGlance& glance) {
  std::string operation = "GetSNMPVersion";
  try {
    glance.version = device.GetSNMPVersion();
    operation = "IsSNMPVersionValid";
    glance.isListed = glance.isListed && device.IsSNMPVersionValid(glance.version);
    operation = "GetIsManagedDevice";
    glance.isManaged = device.GetIsManagedDevice();
    operation = "GetIsConfigDirty";
    glance.isDirty = device.GetIsConfigDirty();
  } catch (...) {
    glance.problem = WhatCameOutOf(operation);
  }
}

}  // namespace

LiveHost::LiveHost(const Project& project, StateStore& states, Masker& secrets, Channel& channel, bool isReadOnly)
    : m_project(project),
      m_secrets(secrets),
      m_channel(channel),
      m_states(states, secrets, isReadOnly ? LearntStates::New::NotTaken : LearntStates::New::Kept) {
  for (const DriverEntry& driver : project.drivers) {
    m_secrets.Xml(driver.configXml);
    m_drivers[driver.id] = &driver;
    m_agent = m_agent == nullptr && IsAgent(driver) ? &driver : m_agent;
  }
  m_askerEntry = {FreeId(m_drivers), "devhost", "devhost", "<config/>"};
}

LiveHost::~LiveHost() = default;

void LiveHost::Start() {
  HostObserver& observer = *this;
  m_host = std::make_unique<Host>(observer, &m_states);
  try {
    for (const VariableEntry& variable : m_project.variables) {
      m_host->DefineVariable(variable);
    }
    for (const DriverEntry& driver : m_project.drivers) {
      m_host->Load(driver);
    }
    m_host->Load(
        m_askerEntry, [this](IInstanceManager& instances) { return new DeviceAsker(instances, m_ask); },
        Host::Devices::Watched);
    m_host->LoadProject();
  } catch (...) {
    m_host.reset();
    throw;
  }
}

std::vector<std::string> LiveHost::Stop() {
  const Switched stopping(m_isStopping);
  m_host->Stop();
  m_host.reset();
  return std::exchange(m_unkept, {});
}

const DriverEntry& LiveHost::RequireAgent() const {
  if (m_agent == nullptr) {
    throw RequestError(409, "no-agent",
                       "the project has no agent, which does this; name snmp_configuration_agent.so as a driver in the "
                       "project file, and start devhost again");
  }
  return *m_agent;
}

const DriverEntry* LiveHost::Driver(unsigned long id) const {
  const auto found = m_drivers.find(id);
  return found == m_drivers.end() ? nullptr : found->second;
}

template <class Question>
void LiveHost::AskEach(std::optional<unsigned long> only, const Question& question) {
  const std::vector<unsigned long> ids = m_host->Publishers(ISupportSNMP_IID);
  m_ask = [&](const std::vector<ISupportSNMP*>& devices) {
    for (std::size_t i = 0; i != devices.size() && i != ids.size(); ++i) {
      const DriverEntry* const driver = Driver(ids[i]);
      if (driver != nullptr && (!only || *only == driver->id)) {
        question(*devices[i], *driver);
      }
    }
  };
  const Switched asking(m_isAsking);
  m_host->Command(m_askerEntry.id, DeviceAsker::kCommand, {});
  m_ask = nullptr;
}

DeviceGlance LiveHost::GlanceAt(ISupportSNMP& device, const DriverEntry& driver) const {
  DeviceGlance glance;
  glance.driver = &driver;
  glance.isListed = m_announced.count(driver.id) != 0;
  glance.isReachable = m_outOfReach.count(driver.id) == 0;
  Glance(device, glance);
  return glance;
}

std::vector<DeviceGlance> LiveHost::Devices() {
  ListOnce();
  std::vector<DeviceGlance> glances;
  AskEach(std::nullopt,
          [&](ISupportSNMP& device, const DriverEntry& driver) { glances.push_back(GlanceAt(device, driver)); });
  return glances;
}

DeviceGlance LiveHost::Device(unsigned long id) {
  ListOnce();
  std::optional<DeviceGlance> glance;
  AskEach(id, [&](ISupportSNMP& device, const DriverEntry& driver) { glance = GlanceAt(device, driver); });
  if (!glance) {
    throw NotFound(kNoDevice);
  }
  return *glance;
}

DeviceAnswers LiveHost::Ask(unsigned long id) {
  ListOnce();
  DeviceAnswers answers = AskNow(id);
  if (!answers.problem.empty() || m_files[id] == answers.file) {
    return answers;
  }
  m_files[id] = answers.file;
  if (m_agent != nullptr) {
    ListDevices();
    answers = AskNow(id);
  }
  return answers;
}

DeviceAnswers LiveHost::AskNow(unsigned long id) {
  std::optional<DeviceAnswers> answers;
  HoldEvents([&] {
    AskEach(id,
            [&](ISupportSNMP& device, const DriverEntry&) { AskDevice(device, Questions::Everything, answers.emplace()); });
    if (answers) {
      Learn(*answers, m_files[id], m_secrets);
      NoteFile(id, answers->copyStatus);
    }
  });
  if (!answers) {
    throw NotFound(kNoDevice);
  }
  NoteReach(id, answers->copyStatus != kCannotBeReached);
  return *answers;
}

// What the driver has logged meanwhile is the reason that it knows.
void LiveHost::NoteFile(unsigned long id, int status) {
  m_unread.erase(id);
  if (status == 0 || status == kCannotBeReached) {
    return;
  }
  std::string& problem = m_unread[id];
  problem = "CopyFrom gave " + std::to_string(status);
  for (const Occurrence& occurrence : m_held) {
    if (occurrence.kind == Kind::Log && occurrence.driverId == id) {
      problem += "; " + m_secrets.Text(occurrence.text, WrittenBy::Others);
    }
  }
}

std::string LiveHost::FileProblem(unsigned long id) const {
  const auto found = m_unread.find(id);
  return found == m_unread.end() ? "" : found->second;
}

DaemonState LiveHost::Daemon(unsigned long id) {
  const std::string reply = AskDriver(id, "GetDaemon");
  m_secrets.Xml(reply);  // for what it teaches: an address that looks like a secret is still where the daemon is
  const DaemonState daemon = DaemonIn(reply);
  if (daemon.running) {
    unsigned long& known = m_daemons[id];
    if (known != 0 && known != daemon.pid) {
      m_channel.Event(nlohmann::ordered_json{{"kind", "restart"}, {"device", id}});
    }
    known = daemon.pid;
  }
  return daemon;
}

std::string LiveHost::FilePath(unsigned long id) {
  const std::string reply = AskDriver(id, "GetFilePath");
  try {
    return reply.empty() ? "" : FilePathIn(Driver(id)->name, reply);
  } catch (const std::runtime_error&) {
    return "";  // a controller behind SSH has its file on another machine
  }
}

std::string LiveHost::AskDriver(unsigned long id, const char* command) {
  const std::vector<std::string> commands = m_host->Commands(id);
  if (std::find(commands.begin(), commands.end(), command) == commands.end()) {
    return "";
  }
  const Switched asking(m_isAsking);
  try {
    return m_host->Command(id, command, {});
  } catch (const HostError&) {
    return "";  // the driver's own answer is a bonus: nobody has asked for this command
  }
}

void LiveHost::ListOnce() {
  if (m_isListed || m_agent == nullptr) {
    return;
  }
  ListDevices();
}

void LiveHost::ListDevices() {
  m_isListed = true;
  m_outOfReach.clear();
  HoldEvents([this] { m_secrets.Xml(m_host->Command(m_agent->id, "GetDeviceList", {})); });
}

template <class Action>
void LiveHost::HoldEvents(const Action& action) {
  const auto release = [this] {
    for (const Occurrence& occurrence : std::exchange(m_held, {})) {
      m_channel.Event(occurrence);
    }
  };
  try {
    const Switched holding(m_isHolding);
    action();
  } catch (...) {
    release();
    throw;
  }
  release();
}

void LiveHost::OnOccurrence(const Occurrence& occurrence) {
  const bool isOurs = occurrence.driverId == m_askerEntry.id && occurrence.driverName == m_askerEntry.name;
  const bool isAnswer =
      occurrence.kind == Kind::Command || occurrence.kind == Kind::Reply || occurrence.kind == Kind::Status;
  if (isOurs || (m_isAsking && isAnswer)) {
    return;
  }
  if (m_isStopping && occurrence.kind == Kind::StateProblem) {
    m_unkept.push_back("driver " + std::to_string(occurrence.driverId) + " " + Quoted(occurrence.driverName) + ": " +
                       m_secrets.Text(occurrence.text));
  }
  // A status that a question of ours gets is an answer like any other.
  const bool isAnswerToUs = m_isHolding && occurrence.kind == Kind::Status;
  if (m_listener && !isAnswerToUs) {
    m_listener(occurrence);
  }
  if (m_isHolding) {
    m_held.push_back(occurrence);
  } else {
    m_channel.Event(occurrence);
  }
  if (occurrence.kind == Kind::Notification && m_agent != nullptr && occurrence.driverId == m_agent->id) {
    NoteNotification(occurrence.text);
  } else if (occurrence.kind == Kind::Status && occurrence.text == "CopyFrom returned " + std::to_string(kCannotBeReached)) {
    NoteReach(occurrence.driverId, false);
  }
}

// Ids of notifications are signed; the bits are those of the id.
void LiveHost::NoteNotification(const std::string& xml) {
  try {
    const XmlElement notification = ReadXml(xml);
    if (notification.children.empty() || notification.children.front().name != "id") {
      return;
    }
    const long long number = std::strtoll(notification.children.front().text.c_str(), nullptr, 10);
    const unsigned long id = static_cast<std::uint32_t>(number);
    if (notification.name == "DeviceAdded") {
      m_isListed = !m_announced.insert(id).second && m_isListed;
    } else if (notification.name == "DeviceDeleted") {
      m_announced.erase(id);
    }
    m_channel.Event(nlohmann::ordered_json{{"kind", "devices"}});
  } catch (const XmlError&) {
    // Another agent's: a list may show it.
  }
}

void LiveHost::NoteReach(unsigned long id, bool isReachable) {
  const bool isNews = isReachable ? m_outOfReach.erase(id) != 0 : m_outOfReach.insert(id).second;
  if (isNews) {
    m_channel.Event(nlohmann::ordered_json{{"kind", "devices"}});
  }
}

}  // namespace devhost
