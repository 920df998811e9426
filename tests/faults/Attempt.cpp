#include "tests/faults/Attempt.h"

#include <exception>

#include "devhost/driver/CommandMessage.h"
#include "devhost/xml/XmlReader.h"
#include "host/H7XML.h"

namespace faults {
namespace {

std::string TakeResult(World& world) {
  std::string result = std::to_string(world.answer);
  if (world.reply) {
    result += ' ' + devhost::XmlText(*world.reply, devhost::XmlStyle::Compact);
  }
  world.reply.Reset();
  return result;
}

std::size_t ChildrenOf(const H7XML::INode& node) {
  std::size_t count = 0;
  const h7::auto_com<H7XML::INodeList> children = node.GetChildren();
  for (h7::auto_com<H7XML::INode> child = children->First(); child; child = children->Next()) {
    ++count;
  }
  return count;
}

// Returns what the agent cannot do, or null when it can do everything.
const char* Unable(World& world) {
  HostedAgent& agent = *world.agent;
  agent->AddSNMPDevice(4, &world.Device(4));
  if (!agent->SetDeviceState(4)) {
    return "a new device's state cannot be set";
  }
  if (ChildrenOf(*agent->OnReqGetDeviceList(devhost::CommandMessage({}))) != world.Registered().size()) {
    return "the device list does not hold what is registered";
  }
  agent->DeleteSNMPDevice(4);
  if (world.State().devices.count(4) != 0) {
    return "a device cannot be withdrawn";
  }
  world.host.SendEvent("OnVariableAdded", {{"iddevice", "5"}, {"idvariable", "3"}});
  if (world.State().deviceVariables.count(VariableKey(5, 3)) != 1) {
    return "a variable cannot be added";
  }
  std::size_t known = 0;
  for (const auto& entry : world.State().deviceVariables) {
    known += entry.second != nullptr ? 1 : 0;
  }
  const h7::auto_com<H7XML::INode> state = agent.Driver().GetPersistState(0);
  if (ChildrenOf(*state->GetChild("variables")) != known) {
    return "the state to persist does not hold the variables";
  }
  if (world.commandsRegistered) {
    for (const char* const command : {"SetDeviceState", "AddManagedDevice", "DeleteManagedDevice", "RebootController",
                                      "StopMasterAgent", "StartMasterAgent"}) {
      if (world.host.CommandText(command, {{"deviceId", "99"}}) != "<Fail/>") {
        return "a command for an unknown device does not fail";
      }
    }
  }
  return nullptr;
}

}  // namespace

Reference ReferenceOf(const Operation& operation) {
  World world(operation.stage);
  operation.run(world);
  Reference reference;
  reference.result = TakeResult(world);
  reference.description = world.Description();
  return reference;
}

Attempt::Attempt(const Operation& operation, const Reference& reference, const FaultKind& kind, unsigned int k,
                 const CallBack* callBack, std::vector<std::string>& complaints)
    : m_operation(operation),
      m_reference(reference),
      m_callBack(callBack),
      m_complaints(complaints),
      m_faults(kind, k),
      m_world(operation.stage) {}

bool Attempt::Run() {
  NoteRecords();
  const std::size_t liveXml = devhost::LiveXmlObjects();
  m_ending = m_faults.Run(
      m_world.journal, [this] { m_operation.run(m_world); }, CallingBack());
  Expect(EndedWell(), "the fault did not come out as it was thrown, or came out where it must be dropped");
  if (m_faults.Thrown() == 0) {
    CheckUndisturbed();
  }
  m_world.reply.Reset();
  Expect(devhost::LiveXmlObjects() == liveXml, "XML objects are alive, but nobody holds them");
  if (!m_world.agent) {
    CheckWhatDestructionDid();
  }
  if (m_world.agent) {
    const std::string disorder = m_world.Disorder();
    Expect(disorder.empty(), disorder.c_str());
  }
  if (m_world.agent || (m_operation.stage == Stage::NoAgent && LeftInHost() == 0)) {
    DoAgain();
    UseOtherwise();
    DestroyCleanly();
  }
  Expect(devhost::LiveXmlObjects() == liveXml, "XML objects are still held after the agent is gone");
  Expect(m_misuses.count == 0, "an XML object was released too often or used after its end");
  for (const boost::weak_ptr<SNMPDevice>& record : m_records) {
    Expect(record.expired(), "a record outlived the agent");
  }
  return m_faults.Thrown() != 0;
}

void Attempt::Expect(bool holds, const char* complaint) {
  if (!holds) {
    const std::string& failed = m_faults.FailedCall();
    m_complaints.push_back(complaint + (failed.empty() ? std::string() : " (what failed: " + failed + ")"));
  }
}

void Attempt::NoteRecords() {
  if (m_world.agent) {
    for (const auto& entry : m_world.State().devices) {
      m_records.emplace_back(entry.second);
    }
  }
}

std::function<void(const std::string&)> Attempt::CallingBack() {
  if (m_callBack == nullptr) {
    return nullptr;
  }
  m_faults.WaitForBegin();
  return [this](const std::string& call) {
    if (m_calledBack || call != m_callBack->from) {
      return;
    }
    m_calledBack = true;
    m_faults.Begin();
    try {
      m_callBack->run(m_world, std::stoul(call));
    } catch (...) {
      if (!m_callBack->keepsFaultsIn) {
        throw;
      }
      ++m_keptInByDevice;
    }
  };
}

bool Attempt::EndedWell() const {
  const bool returned = m_ending.how == Ending::How::Returned;
  if (m_operation.passes == Passes::Never || m_faults.Thrown() == m_keptInByDevice) {
    return returned;
  }
  // The first fault that no device has dropped must come out.
  return m_ending.how == Ending::How::ThrewAFault && m_ending.number == m_keptInByDevice + 1;
}

unsigned int Attempt::KeptIn() const {
  return m_faults.Thrown() - (m_ending.how == Ending::How::Returned ? 0 : 1);
}

std::size_t Attempt::LeftInHost() const {
  return m_world.host.Listeners().size() + (m_world.host.AnythingPublished() ? 1 : 0);
}

bool Attempt::AnyManaged() const {
  for (const auto& device : m_world.devices) {
    if (device.second->managed) {
      return true;
    }
  }
  return false;
}

void Attempt::CheckWhatDestructionDid() {
  // A host that fails to unregister something keeps it; the agent cannot change that.
  Expect(LeftInHost() <= KeptIn(), "the host was left with a listener or an instance of an agent that is gone");
  if (m_operation.stage != Stage::Running || m_callBack != nullptr) {
    return;
  }
  unsigned int managed = 0;
  for (const auto& device : m_world.devices) {
    if (device.second->managed) {
      ++managed;
      const bool calls = !m_faults.FailedCall().empty();
      const bool failedItself = m_faults.FailedCall().rfind(std::to_string(device.first) + '.', 0) == 0;
      Expect(!calls || m_faults.Thrown() > 1 || failedItself, "a device stays managed because another failed");
    }
  }
  Expect(managed <= m_faults.Thrown(), "more devices stay managed than failed");
}

void Attempt::CheckUndisturbed() {
  if (m_callBack == nullptr) {
    CheckResult();
  } else {
    Expect(m_calledBack, "the device was never reached, so it did not call back");
  }
}

void Attempt::CheckResult() {
  Expect(TakeResult(m_world) == m_reference.result, "the result differs from that in a world without faults");
  if (m_callBack != nullptr) {
    // The device has changed things itself, so the descriptions differ.
    return;
  }
  const std::string description = m_world.Description();
  Expect(description == m_reference.description, "the operation left another state than in a world without faults");
}

void Attempt::DoAgain() {
  try {
    if (m_faults.Thrown() == 0) {
      return;
    }
    if (m_callBack != nullptr) {
      m_world.AnnounceAll();
    }
    m_operation.run(m_world);
    CheckResult();
    const std::string disorder = m_world.Disorder();
    Expect(disorder.empty(), disorder.c_str());
  } catch (const std::exception& error) {
    Expect(false, (std::string("the repeated operation throws: ") + error.what()).c_str());
  }
}

void Attempt::UseOtherwise() {
  try {
    const char* const unable = Unable(m_world);
    Expect(unable == nullptr, unable);
  } catch (const std::exception& error) {
    Expect(false, (std::string("the agent cannot be used any more: ") + error.what()).c_str());
  }
}

void Attempt::DestroyCleanly() {
  const bool allRegistered = m_operation.stage == Stage::Running && m_callBack == nullptr;
  const bool fiveRegistered = allRegistered && m_world.State().devices.count(5) == 1;
  m_world.agent.reset();
  Expect(LeftInHost() == 0, "the host is left with a listener or an instance after a clean destruction");
  Expect(!fiveRegistered || !AnyManaged(), "a device stays managed after a clean destruction");
}

}  // namespace faults
