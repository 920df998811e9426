#include <string>

#include "agent/SNMPConfigurationAgent.h"
#include "device/DeviceSettingsElement.h"
#include "device/SNMPDevice.h"
#include "host/H7XML.h"
#include "host/ICmdMessage.h"

namespace {

// Apart from success, only this status does not stop a change of settings. The device decides what it means.
const int kToleratedStatus = -9;

}  // namespace

h7::auto_com<H7XML::INode> SNMPConfigurationAgent::OnReqSetDeviceState(ICmdMessage const& message) {
  const std::string xml = message.GetString("xml");
  h7::auto_com<H7XML::INode> reply = H7XML::CreateXmlNode("Fail", "");
  if (xml.empty()) {
    return reply;
  }
  const h7::auto_com<H7XML::IDocument> document = H7XML::CreateXmlDocument(xml);
  if (!document) {
    return reply;
  }
  const h7::auto_com<H7XML::INode> settings = document->GetRootElement();
  if (!settings) {
    return reply;
  }
  const unsigned long deviceId = settings->GetChildULong(device_settings::kDeviceId);
  const boost::shared_ptr<SNMPDevice> device = FindDevice(m_devices, deviceId);
  if (!device) {
    return reply;
  }

  device_settings::Apply(*settings, *device);
  device->SetIsConfigDirty(true);

  const int readStatus = ReadConfig(device);
  if (readStatus != 0 && readStatus != kToleratedStatus) {
    reply = H7XML::CreateXmlNode("ReadFail", "");
    return reply;
  }
  const int writeStatus = WriteConfig(device);
  if (writeStatus != 0 && writeStatus != kToleratedStatus) {
    reply = H7XML::CreateXmlNode("WriteFail", "");
    return reply;
  }
  // A tolerated write is accepted, but the device stays marked as not yet written.
  if (writeStatus == 0) {
    device->SetIsConfigDirty(false);
  }

  DmInvalidateState();
  reply = H7XML::CreateXmlNode("Success", "");
  MySendDataToUI("DeviceChanged", static_cast<int>(deviceId), -1);
  return reply;
}
