#include "drivers/common/AgentLink.h"

#include "agent/ISNMPConfigurationAgent.h"
#include "host/IInstanceManager.h"

namespace drivers {

AgentLink::AgentLink(IInstanceManager& instanceManager) : m_instanceManager(instanceManager), m_announcedTo(nullptr) {}

bool AgentLink::Announce(unsigned long deviceId, ISupportSNMP& device) {
  ISNMPConfigurationAgent* const agent = FindAgent();
  if (agent == nullptr) {
    return false;
  }
  // Noted before the call: the agent may have taken the device in and thrown after that, and a nested call may withdraw it.
  m_announcedTo = agent;
  agent->AddSNMPDevice(deviceId, &device);
  return true;
}

void AgentLink::Withdraw(unsigned long deviceId) {
  m_announcedTo = nullptr;
  ISNMPConfigurationAgent* const agent = FindAgent();
  if (agent != nullptr) {
    agent->DeleteSNMPDevice(deviceId);
  }
}

bool AgentLink::IsAnnounced() const {
  return m_announcedTo != nullptr && m_announcedTo == FindAgent();
}

ISNMPConfigurationAgent* AgentLink::FindAgent() const {
  return static_cast<ISNMPConfigurationAgent*>(m_instanceManager.Query(ISNMPConfigurationAgent_IID));
}

}  // namespace drivers
