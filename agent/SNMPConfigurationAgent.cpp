#include "agent/SNMPConfigurationAgent.h"

#include <cstddef>
#include <vector>

#include "agent/Quietly.h"
#include "device/SNMPDevice.h"
#include "host/IDriverManager.h"
#include "host/IInstanceManager.h"
#include "host/ISupportSNMP.h"
#include "host/SystemEventId.h"

namespace {

const unsigned int kListenedEvents[] = {SystemEvent_OnVariableAdded, SystemEvent_OnVariableRemoved,
                                        SystemEvent_OnUserVariableAdded, SystemEvent_OnProjectLoaded,
                                        SystemEvent_OnItemRemoved};

}  // namespace

IDriver* SNMPConfigurationAgent::Create(IInstanceManager& instanceManager) {
  return new SNMPConfigurationAgent(instanceManager);
}

SNMPConfigurationAgent::SNMPConfigurationAgent(IInstanceManager& instanceManager)
    : H7BaseAgentDriver(instanceManager, DriverMultiplicity_Single),
      m_instanceManager(instanceManager),
      m_variableManager(GetVariableManager()) {
  std::size_t listened = 0;
  try {
    for (const unsigned int eventId : kListenedEvents) {
      RegisterListener(*this, eventId, 0);
      ++listened;
    }
    m_sectionTexts = managed_section::FixedTexts();
  } catch (...) {
    // The host must not keep a listener whose constructor has failed.
    while (listened != 0) {
      --listened;
      Quietly([this, listened] { UnregisterListener(*this, kListenedEvents[listened], 0); });
    }
    throw;
  }
}

SNMPConfigurationAgent::~SNMPConfigurationAgent() {
  for (const unsigned int eventId : kListenedEvents) {
    Quietly([this, eventId] { UnregisterListener(*this, eventId, 0); });
  }
  ForEachDevice(m_devices, [this](const boost::shared_ptr<SNMPDevice>& device) {
    Quietly([this, &device] {
      if (device->GetIsManagedDevice()) {
        SetManagedState(device->GetDeviceId(), false);
      }
    });
  });
}

int SNMPConfigurationAgent::Initialize(unsigned long driverId, H7XML::INode& config, H7XML::INode* persisted) {
  H7BaseAgentDriver::Initialize(driverId, config, persisted);
  if (m_registerer.get() == nullptr) {
    m_registerer.reset(new AutoQueryInstanceRegisterer(GetInstanceManager()));
    try {
      m_registerer->RegisterQuery(ISNMPConfigurationAgent_IID, static_cast<ISNMPConfigurationAgent*>(this));
    } catch (...) {
      // The host did not refuse, so the next initialisation tries again; otherwise no driver would ever find the agent.
      m_registerer.reset();
      throw;
    }
  }
  // The list is a copy, because drivers may announce and publish themselves during the calls. The host destroys none then.
  const std::vector<ISupportSNMP*> drivers = GetDriverManager().ListDrivers<ISupportSNMP>(0, ISupportSNMP_IID);
  for (ISupportSNMP* const driver : drivers) {
    driver->AgentAvailable();
  }
  if (persisted != nullptr) {
    FromXml(persisted);
  }
  return 0;
}
