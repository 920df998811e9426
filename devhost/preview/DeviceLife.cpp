#include "devhost/preview/DeviceLife.h"

#include <algorithm>
#include <utility>

#include "devhost/preview/AgentStandIn.h"
#include "devhost/state/StateStore.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

namespace {

using Kind = Occurrence::Kind;

// What an agent gets in place of a file that must not be the base of its work. Any status but 0 and -9 makes it stop.
constexpr int kNotTheFile = -1;

// An id that neither of the two has.
unsigned long FreeId(const DriverEntry& agent, const DriverEntry& device) {
  unsigned long id = 1;
  while (id == agent.id || id == device.id) {
    ++id;
  }
  return id;
}

}  // namespace

// The state of the device alone. Others are neither handed theirs nor asked for a new one: the agent has not heard of the
// project's variables here, and would keep none of their flags.
class DeviceLife::States : public StateStore {
 public:
  explicit States(unsigned long deviceId) : m_deviceId(deviceId) {}

  const std::string& Handed() const { return m_handed; }
  void Hand(const std::string& state) {
    m_handed = state;
    m_kept = nullptr;
  }
  void KeepIn(StateStore* states) { m_kept = states; }

  h7::auto_com<H7XML::INode> Load(unsigned long driverId) override {
    return driverId == m_deviceId && !m_handed.empty() ? ReadXmlNode(m_handed) : h7::auto_com<H7XML::INode>();
  }
  void Save(unsigned long driverId, const std::string& xml) override {
    if (driverId == m_deviceId) {
      m_kept->Save(driverId, xml);
    }
  }
  bool TakesStates() const override { return m_kept != nullptr; }

 private:
  const unsigned long m_deviceId;
  std::string m_handed;
  StateStore* m_kept = nullptr;
};

DeviceLife::DeviceLife(DriverEntry agent, DriverEntry device)
    : m_agent(std::move(agent)),
      m_device(std::move(device)),
      m_standIn(m_agent),
      m_states(std::make_unique<States>(m_device.id)) {
  m_standIn.id = FreeId(m_agent, m_device);
}

DeviceLife::~DeviceLife() {
  Drop();
}

void DeviceLife::OnOccurrence(const Occurrence& occurrence) {
  const bool fails = occurrence.kind == Kind::Failure || occurrence.kind == Kind::Manners;
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_failed = m_failed || fails;
  // A status that the stand-in gets is an answer like any other.
  const bool isStatus = occurrence.kind == Kind::Status && !m_isAsking;
  if (!fails && !isStatus && occurrence.kind != Kind::StateProblem && occurrence.kind != Kind::Log) {
    return;
  }
  const std::string driver = DriverOf(occurrence);
  const std::string line = (driver.empty() ? "" : driver + ": ") + TextOf(occurrence);
  const bool isNew = std::none_of(m_heard.begin(), m_heard.end(), [&](const Heard& heard) { return heard.line == line; });
  if (isNew) {
    m_heard.push_back({occurrence.kind, line});
  }
}

bool DeviceLife::HasFailed() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_failedToLoad || m_failed;
}

std::vector<DeviceLife::Heard> DeviceLife::GetHeard() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_heard;
}

template <class Action>
auto DeviceLife::DropOnError(Action action) {
  try {
    return action();
  } catch (...) {
    Drop();
    throw;
  }
}

void DeviceLife::Drop() {
  m_states->KeepIn(nullptr);
  UnloadDevice();
  m_host.reset();
  m_hasAgent = false;
  m_hasStandIn = false;
}

// An agent that goes first would tell the device that it is not managed any more.
void DeviceLife::UnloadDevice() {
  if (m_host && m_hasAgent) {
    try {
      m_host->Unload(m_device.id);
    } catch (const HostError&) {
      // It was not loaded.
    }
  }
}

void DeviceLife::End() {
  if (m_host) {
    DropOnError([this] {
      UnloadDevice();
      m_host->Stop();
    });
    m_host.reset();
    m_hasAgent = false;
    m_hasStandIn = false;
  }
}

bool DeviceLife::HasBegunWith(const std::string& state) const {
  return m_host && !m_hasAgent && m_states->Handed() == state;
}

void DeviceLife::Begin(const std::string& state) {
  Drop();
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_heard.clear();
    m_failedToLoad = false;
    m_failed = false;
    m_isAsking = false;
  }
  m_states->Hand(state);
  m_host.emplace(static_cast<HostObserver&>(*this), m_states.get());
  m_host->Load(m_standIn,
               [this](IInstanceManager& instances) { return new AgentStandIn(instances, m_device.id, m_answers); });
  m_hasStandIn = true;
  m_host->Load(m_device);
  m_failedToLoad = HasFailed();
}

DeviceAnswers DeviceLife::Put(const char* question) {
  m_answers = DeviceAnswers();
  m_isAsking = true;
  m_host->Command(m_standIn.id, question, {});
  m_isAsking = false;
  return m_answers;
}

DeviceAnswers DeviceLife::DropOnProblem(DeviceAnswers answers) {
  if (!answers.problem.empty()) {
    Drop();
  }
  return answers;
}

DeviceAnswers DeviceLife::Ask(const std::string& state) {
  return DropOnError([&] {
    if (!HasBegunWith(state)) {
      Begin(state);
    }
    ForgetFailure();
    DeviceAnswers answers = Put(AgentStandIn::kAsk);
    m_learnsFromFile = m_unread ? !HaveSameSettings(*m_unread, answers) : m_learnsFromFile;
    m_unread.reset();
    return DropOnProblem(std::move(answers));
  });
}

void DeviceLife::AskUnread(const std::string& state) {
  if (!HasBegunWith(state)) {
    try {
      m_unread = AskSettings(state, {});
    } catch (const HostError&) {
      // The next question says so.
    }
  }
}

DeviceAnswers DeviceLife::AskSettings(const std::string& state, const File& file) {
  return DropOnError([&] {
    if (!HasBegunWith(state)) {
      Begin(state);
    }
    ForgetFailure();
    DeviceAnswers answers = Put(AgentStandIn::kAskSettings);
    answers.copyStatus = file.copyStatus;
    answers.file = file.text;
    return DropOnProblem(std::move(answers));
  });
}

void DeviceLife::ForgetFailure() {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_failed = false;
}

DeviceLife::AgentRead DeviceLife::LetAgentIn(const std::string& expected, const std::function<void(std::string&)>& edit) {
  return DropOnError([&] {
    m_host->Command(m_standIn.id, AgentStandIn::kStepAside, {});
    m_hasAgent = true;
    m_host->Load(m_agent);
    ListDevices(expected, edit);
    if (!m_hasAgentAsked) {
      LoadAgentFirst();
      ListDevices(expected, edit);
    }
    return m_agentRead;
  });
}

// A driver may announce itself when it is loaded, and never again.
void DeviceLife::LoadAgentFirst() {
  Drop();
  m_host.emplace(static_cast<HostObserver&>(*this), m_states.get());
  m_hasAgent = true;
  m_host->Load(m_agent);
  m_host->Load(m_device);
}

void DeviceLife::ListDevices(const std::string& expected, const std::function<void(std::string&)>& edit) {
  GuardCopies(*m_host, expected, edit);
  m_host->Command(m_agent.id, "GetDeviceList", {});
}

// The agent reads the file when it lists the device, and again before it writes: somebody may have edited it in between.
void DeviceLife::GuardCopies(Host& host, const std::string& expected, const std::function<void(std::string&)>& edit) {
  m_hasAgentAsked = false;
  m_agentRead = AgentRead::Nothing;
  host.EditCopies([this, expected, edit](unsigned long driverId, int status, std::string& text) {
    if (driverId != 0 && driverId != m_device.id) {
      return status;
    }
    m_hasAgentAsked = true;
    if (status != 0 && status != kCannotBeReached) {
      return status;
    }
    if (text != expected) {
      m_agentRead = AgentRead::Other;
      m_states->KeepIn(nullptr);
      return kNotTheFile;
    }
    if (status == 0 && m_agentRead == AgentRead::Nothing) {
      m_agentRead = AgentRead::Expected;
    }
    if (edit) {
      edit(text);
    }
    return status;
  });
}

std::string DeviceLife::CheckedReply(std::string reply) const {
  if (m_agentRead == AgentRead::Other && reply != "<Success/>") {
    throw HostError("the file of " + m_device.name + " was changed meanwhile and was not written; look at it again");
  }
  return reply;
}

std::string DeviceLife::SetDeviceState(const std::string& settings, StateStore* states) {
  return DropOnError([&] {
    m_states->KeepIn(states);
    return CheckedReply(m_host->Command(m_agent.id, "SetDeviceState", {{"xml", settings}}));
  });
}

std::optional<DeviceLife::File> DeviceLife::LookAtFile() {
  if (!m_hasStandIn) {
    return std::nullopt;
  }
  m_host->EditCopies(nullptr);
  try {
    const DeviceAnswers answers = Put(AgentStandIn::kAskFile);
    return answers.problem.empty() ? std::optional<File>(File{answers.copyStatus, answers.file}) : std::nullopt;
  } catch (const HostError&) {
    return std::nullopt;
  }
}

}  // namespace devhost
