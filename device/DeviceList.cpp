#include "agent/SNMPConfigurationAgent.h"
#include "device/DeviceSettingsElement.h"
#include "device/SNMPDevice.h"
#include "host/H7XML.h"

h7::auto_com<H7XML::INode> SNMPConfigurationAgent::OnReqGetDeviceList(ICmdMessage const&) {
  h7::auto_com<H7XML::INode> list = H7XML::CreateXmlNode(device_settings::kManagedDevices, "");
  ForEachDevice(m_devices, [this, &list](const boost::shared_ptr<SNMPDevice>& device) {
    if (!device || !device->GetIsValidVersion()) {
      return;
    }
    // A device whose file cannot be read is listed, too, with the settings that it holds.
    ReadConfig(device);
    list->AppendChild(*device->ToXml());
  });
  return list;
}
