#include <utility>

#include "agent/SNMPConfigurationAgent.h"
#include "device/SNMPDevice.h"
#include "host/H7XML.h"
#include "host/ICmdMessage.h"
#include "host/LogXMessage.h"

void SNMPConfigurationAgent::AddSNMPDevice(unsigned long deviceId, ISupportSNMP* device) {
  if (device == nullptr) {
    // The "l" behind "%u" is printed as a letter. It stays, because operators search for the line as it has always been.
    LogXMessage(3, "Unable to add SNMP device %ul.", static_cast<unsigned int>(deviceId));
    return;
  }
  const boost::shared_ptr<SNMPDevice> record(new SNMPDevice(deviceId, device));
  m_devices.insert(std::make_pair(deviceId, record));
  MySendDataToUI("DeviceAdded", static_cast<int>(deviceId), -1);
}

void SNMPConfigurationAgent::DeleteSNMPDevice(unsigned long deviceId) {
  m_devices.erase(deviceId);
  MySendDataToUI("DeviceDeleted", static_cast<int>(deviceId), -1);
}

bool SNMPConfigurationAgent::SetDeviceState(unsigned long deviceId) {
  const boost::shared_ptr<SNMPDevice> device = FindDevice(m_devices, deviceId);
  return device && ReadConfig(device) == 0 && WriteConfig(device) == 0;
}

h7::auto_com<H7XML::INode> SNMPConfigurationAgent::SetManagedState(unsigned long deviceId, bool managed) {
  const boost::shared_ptr<SNMPDevice> device = FindDevice(m_devices, deviceId);
  if (!device) {
    return H7XML::CreateXmlNode("Fail", "");
  }
  device->SetIsManagedDevice(managed);
  DmInvalidateState();
  MySendDataToUI(managed ? "ManagedDeviceAdded" : "ManagedDeviceDeleted", static_cast<int>(deviceId), -1);
  return H7XML::CreateXmlNode("deviceId", deviceId);
}

h7::auto_com<H7XML::INode> SNMPConfigurationAgent::OnReqAddManagedDevice(ICmdMessage const& message) {
  return SetManagedState(message.GetULong("deviceId"), true);
}

h7::auto_com<H7XML::INode> SNMPConfigurationAgent::OnReqDeleteManagedDevice(ICmdMessage const& message) {
  return SetManagedState(message.GetULong("deviceId"), false);
}
