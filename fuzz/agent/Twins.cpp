#include "fuzz/agent/Twins.h"

#include "agent/Exports.h"
#include "devhost/xml/XmlObserver.h"
#include "device/SNMPDevice.h"
#include "fuzz/agent/ReferenceAgent.h"
#include "fuzz/support/Input.h"
#include "tests/support/AgentAccess.h"

namespace fuzz {
namespace {

template <class Map>
std::string DescribeVariables(const Map& map) {
  std::string text = "variables\n";
  for (const auto& entry : map) {
    text += std::to_string(entry.first.first) + " " + std::to_string(entry.first.second) + " ";
    text += entry.second == nullptr ? "none\n" : static_cast<const Variable*>(entry.second)->name + "\n";
  }
  return text;
}

template <class Map>
std::string DescribeFlags(const Map& map) {
  std::string text = "flags\n";
  for (const auto& entry : map) {
    text += std::to_string(entry.first.first) + " " + std::to_string(entry.first.second) +
            (entry.second ? " true\n" : " false\n");
  }
  return text;
}

std::string DescribeRecord(unsigned long key, unsigned long id, const std::string& device, const std::string& timeout,
                           const std::string& retries, const std::string& config, long holders) {
  return std::to_string(key) + ": " + std::to_string(id) + " device " + device + " [" + timeout + "] [" + retries + "] [" +
         config + "] held by " + std::to_string(holders) + "\n";
}

std::string DescribeAgent(IDriver& driver, World& world) {
  const SNMPConfigurationAgentTestAccess state(static_cast<SNMPConfigurationAgent&>(driver));
  std::string text;
  for (const auto& entry : state.devices) {
    SNMPDevice& record = *entry.second;
    text +=
        DescribeRecord(entry.first, record.GetDeviceId(), world.NameOf([&] { record.GetIsManagedDevice(); }),
                       record.GetAgentXTimeout(), record.GetAgentXRetries(), record.GetConfig(), entry.second.use_count());
  }
  return text + DescribeVariables(state.deviceVariables) + DescribeVariables(state.userVariables) +
         DescribeFlags(state.savedTrapFlags);
}

std::string DescribeReference(IDriver& driver, World& world) {
  const ReferenceAgent& agent = static_cast<ReferenceAgent&>(driver);
  std::string text;
  for (const auto& entry : agent.devices) {
    const ReferenceAgent::Record& record = *entry.second;
    text += DescribeRecord(entry.first, record.id, world.NameOf([&] { record.device->GetIsManagedDevice(); }),
                           record.agentXTimeout, record.agentXRetries, record.config, 1);
  }
  return text + DescribeVariables(agent.deviceVariables) + DescribeVariables(agent.userVariables) +
         DescribeFlags(agent.savedTrapFlags);
}

}  // namespace

Twins::Twins()
    : m_reference([](World& world) { return new ReferenceAgent(world.Instances(), world.TheClock()); }, DescribeReference),
      m_agent([](World& world) { return GetCreationFunc()(world.Instances()); }, DescribeAgent) {}

void Twins::Play(const Operation& operation, const std::vector<Plan>& plans) {
  const std::string seen = m_agent.Play(operation, plans);
  RequireSame("seen", seen, m_reference.Play(operation, plans));
  RequireSame("kept", m_agent.Describe(), m_reference.Describe());
  Require(devhost::LiveXmlObjects() == 0, "XML objects are left behind");
}

void Twins::Start(const std::string& state) {
  Operation operation;
  operation.text = state;
  for (const Operation::Kind kind :
       {Operation::Kind::Create, Operation::Kind::Initialize, Operation::Kind::RegisterCommands}) {
    operation.kind = kind;
    Play(operation);
  }
}

}  // namespace fuzz
