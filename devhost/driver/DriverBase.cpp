// The bodies of the driver bases, which every driver module finds here when it is loaded. They do nothing of their own: what
// stands behind a driver is its `DriverServices`.
#include <stdexcept>

#include "devhost/driver/DriverServices.h"
#include "host/H7BaseAgentDriver.h"
#include "host/H7BaseDriver.h"
#include "host/IDriver.h"
#include "host/IInstanceManager.h"

namespace devhost {

DriverServices::~DriverServices() = default;

namespace {

DriverServices& ServicesOf(void* host) {
  return *static_cast<DriverServices*>(host);
}

}  // namespace
}  // namespace devhost

using devhost::ServicesOf;

IDriver::~IDriver() = default;

H7BaseDriver::H7BaseDriver(IInstanceManager& instanceManager, DriverMultiplicity multiplicity)
    : m_host(instanceManager.Query(devhost::DriverServices_IID)) {
  if (m_host == nullptr) {
    throw std::logic_error("a driver was created with an instance manager that is not its own");
  }
  ServicesOf(m_host).BaseConstructed(*this, multiplicity);
}

H7BaseDriver::~H7BaseDriver() {
  ServicesOf(m_host).BaseDestroyed();
}

int H7BaseDriver::Initialize(unsigned long driverId, H7XML::INode&, H7XML::INode*) {
  ServicesOf(m_host).BaseInitialized(driverId);
  return 0;
}

h7::auto_com<H7XML::INode> H7BaseDriver::GetPersistState(unsigned long) {
  return {};
}

void H7BaseDriver::RegisterCommands() {}

IInstanceManager& H7BaseDriver::GetInstanceManager() const {
  return ServicesOf(m_host).GetInstanceManager();
}

IDriverManager& H7BaseDriver::GetDriverManager() const {
  return ServicesOf(m_host).GetDriverManager();
}

IVariableManager* H7BaseDriver::GetVariableManager() const {
  return ServicesOf(m_host).GetVariableManager();
}

UICmdDispatcher& H7BaseDriver::GetUICmdDispatcher() const {
  return ServicesOf(m_host).GetUICmdDispatcher();
}

void H7BaseDriver::RegisterListener(ISystemEventCallback& listener, unsigned int eventId, unsigned long reserved) {
  ServicesOf(m_host).RegisterListener(listener, eventId, reserved);
}

void H7BaseDriver::UnregisterListener(ISystemEventCallback& listener, unsigned int eventId, unsigned long reserved) {
  ServicesOf(m_host).UnregisterListener(listener, eventId, reserved);
}

void H7BaseDriver::ConSendDataToUI(const H7XML::INode& data) {
  ServicesOf(m_host).SendDataToUI(data);
}

void H7BaseDriver::DmInvalidateState() {
  ServicesOf(m_host).InvalidateState();
}

H7BaseAgentDriver::H7BaseAgentDriver(IInstanceManager& instanceManager, DriverMultiplicity multiplicity)
    : H7BaseDriver(instanceManager, multiplicity) {}

H7BaseAgentDriver::~H7BaseAgentDriver() = default;

int H7BaseAgentDriver::Initialize(unsigned long driverId, H7XML::INode& config, H7XML::INode* persisted) {
  return H7BaseDriver::Initialize(driverId, config, persisted);
}

h7::auto_com<H7XML::INode> H7BaseAgentDriver::GetPersistState(unsigned long reserved) {
  return H7BaseDriver::GetPersistState(reserved);
}

void H7BaseAgentDriver::RegisterCommands() {
  H7BaseDriver::RegisterCommands();
}
