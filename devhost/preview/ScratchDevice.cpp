#include "devhost/preview/ScratchDevice.h"

#include "agent/ISNMPConfigurationAgent.h"
#include "host/IInstanceManager.h"

namespace devhost {

namespace {

ISNMPConfigurationAgent* FindAgent(IInstanceManager& instances) {
  return static_cast<ISNMPConfigurationAgent*>(instances.Query(ISNMPConfigurationAgent_IID));
}

}  // namespace

ScratchDevice::ScratchDevice(IInstanceManager& instanceManager, DeviceAnswers& content)
    : H7BaseAgentDriver(instanceManager, DriverMultiplicity_PerDevice), m_content(content) {}

ScratchDevice::~ScratchDevice() {
  GetInstanceManager().UnregisterQuery(ISupportSNMP_IID);
  ISNMPConfigurationAgent* const agent = FindAgent(GetInstanceManager());
  if (agent != nullptr) {
    agent->DeleteSNMPDevice(m_driverId);
  }
}

int ScratchDevice::Initialize(unsigned long driverId, H7XML::INode& config, H7XML::INode* persisted) {
  H7BaseAgentDriver::Initialize(driverId, config, persisted);
  m_driverId = driverId;
  GetInstanceManager().RegisterQuery(ISupportSNMP_IID, static_cast<ISupportSNMP*>(this));
  AgentAvailable();
  return 0;
}

void ScratchDevice::AgentAvailable() {
  ISNMPConfigurationAgent* const agent = FindAgent(GetInstanceManager());
  if (agent != nullptr) {
    agent->AddSNMPDevice(m_driverId, this);
  }
}

void ScratchDevice::AddTrapTargetSetting(std::string target, std::string community, std::string port) {
  m_content.trapTargets.value.emplace_back(target, community, port);
  m_content.trapTargets.wasErased = false;
}

int ScratchDevice::CopyFrom(const std::string&, std::string& config) {
  config = m_content.file;
  return m_content.copyStatus;
}

int ScratchDevice::CopyTo(const std::string&, const std::string& config) {
  m_content.file = config;
  return m_content.copyStatus;
}

bool ScratchDevice::IsSNMPVersionValid(const std::string& version) {
  return m_content.isVersionValid && version == m_content.version;
}

}  // namespace devhost
