#ifndef TESTS_SUPPORT_AGENT_ACCESS_H
#define TESTS_SUPPORT_AGENT_ACCESS_H

#include "agent/SNMPConfigurationAgent.h"

// The agent's data members, for tests that look at its state or its layout.
struct SNMPConfigurationAgentTestAccess {
  explicit SNMPConfigurationAgentTestAccess(SNMPConfigurationAgent& agent)
      : devices(agent.m_devices),
        registerer(agent.m_registerer.get()),
        registererAddress(&agent.m_registerer),
        variableManager(agent.m_variableManager),
        sectionTexts(agent.m_sectionTexts),
        deviceVariables(agent.m_deviceVariables),
        userVariables(agent.m_userVariables),
        savedTrapFlags(agent.m_savedTrapFlags) {}

  DeviceMap& devices;
  AutoQueryInstanceRegisterer* registerer;
  const void* registererAddress;
  IVariableManager*& variableManager;
  managed_section::Texts& sectionTexts;
  VariableMap& deviceVariables;
  VariableMap& userVariables;
  TrapEnabledMap& savedTrapFlags;
};

#endif
