#include "devhost/preview/AgentStandIn.h"

#include "devhost/preview/DeviceQuestions.h"
#include "host/H7XML.h"
#include "host/IDriverManager.h"
#include "host/IInstanceManager.h"
#include "host/ISupportSNMP.h"
#include "host/UICmdDispatcher.h"

namespace devhost {

AgentStandIn::AgentStandIn(IInstanceManager& instanceManager, unsigned long deviceId, DeviceAnswers& answers)
    : H7BaseAgentDriver(instanceManager, DriverMultiplicity_Single), m_deviceId(deviceId), m_answers(answers) {}

AgentStandIn::~AgentStandIn() {
  GetInstanceManager().UnregisterQuery(ISNMPConfigurationAgent_IID);
}

int AgentStandIn::Initialize(unsigned long driverId, H7XML::INode& config, H7XML::INode* persisted) {
  H7BaseAgentDriver::Initialize(driverId, config, persisted);
  GetInstanceManager().RegisterQuery(ISNMPConfigurationAgent_IID, static_cast<ISNMPConfigurationAgent*>(this));
  return 0;
}

void AgentStandIn::RegisterCommands() {
  Register(kAsk, Questions::Everything);
  Register(kAskSettings, Questions::Settings);
  Register(kAskFile, Questions::File);
  GetUICmdDispatcher().RegisterUICmd(kStepAside, [this](const ICmdMessage&) {
    GetInstanceManager().UnregisterQuery(ISNMPConfigurationAgent_IID);
    return H7XML::CreateXmlNode("SteppedAside", "");
  });
}

void AgentStandIn::Register(const char* command, Questions questions) {
  GetUICmdDispatcher().RegisterUICmd(command, [this, questions](const ICmdMessage&) { return OnAsk(questions); });
}

void AgentStandIn::AddSNMPDevice(unsigned long deviceId, ISupportSNMP* device) {
  if (device != nullptr) {
    m_devices.emplace(deviceId, device);
  }
}

void AgentStandIn::DeleteSNMPDevice(unsigned long deviceId) {
  m_devices.erase(deviceId);
}

bool AgentStandIn::SetDeviceState(unsigned long) {
  return false;
}

// As an agent that starts after the devices does: it tells all devices that it is there.
ISupportSNMP* AgentStandIn::FindDevice() {
  if (m_devices.count(m_deviceId) == 0) {
    for (ISupportSNMP* const device : GetDriverManager().ListDrivers<ISupportSNMP>(0, ISupportSNMP_IID)) {
      device->AgentAvailable();
    }
  }
  const auto found = m_devices.find(m_deviceId);
  return found == m_devices.end() ? nullptr : found->second;
}

h7::auto_com<H7XML::INode> AgentStandIn::OnAsk(Questions questions) {
  m_answers = DeviceAnswers();
  try {
    ISupportSNMP* const device = FindDevice();
    if (device == nullptr) {
      m_answers.problem = "does not announce itself to the agent, so the agent cannot change its settings";
    } else {
      AskDevice(*device, questions, m_answers);
    }
  } catch (...) {
    m_answers.problem = WhatCameOutOf("AgentAvailable");
  }
  return H7XML::CreateXmlNode("Asked", "");
}

}  // namespace devhost
