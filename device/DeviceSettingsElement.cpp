#include "device/DeviceSettingsElement.h"

#include "device/SNMPDevice.h"
#include "host/H7XML.h"
#include "host/ISupportSNMP.h"
#include "host/ToString.h"

namespace device_settings {

const char kManagedDevices[] = "managedDevices";
const char kManagedDevice[] = "managedDevice";
const char kIsManagedDevice[] = "snmpIsManagedDevice";
const char kIsConfigDirty[] = "snmpIsConfigDirty";
const char kEnabled[] = "snmpEnabledSetting";
const char kCommunityRead[] = "snmpCommunityReadSetting";
const char kCommunityWrite[] = "snmpCommunityWriteSetting";
const char kSysContact[] = "snmpSysContactSetting";
const char kUsePrimaryContact[] = "snmpUsePrimaryContactSetting";
const char kSysLocation[] = "snmpSysLocationSetting";
const char kUseProjectOwnerAddress[] = "snmpUseProjectOwnerAddressSetting";
const char kSysName[] = "snmpSysNameSetting";
const char kUseRoomDevice[] = "snmpUseRoomDeviceSetting";
const char kTrapTargets[] = "snmpTrapTargets";
const char kTrapTarget[] = "trapTarget";
const char kTarget[] = "target";
const char kCommunity[] = "community";
const char kPort[] = "port";
const char kDeviceId[] = "deviceId";

namespace {

void ReplaceTrapTargets(const H7XML::INode& settings, SNMPDevice& device) {
  device.ClearTrapTargetSetting();
  const h7::auto_com<H7XML::INode> trapTargets = settings.GetChild(kTrapTargets);
  if (!trapTargets) {
    return;
  }
  // Every child counts, whatever its name.
  const h7::auto_com<H7XML::INodeList> children = trapTargets->GetChildren();
  for (h7::auto_com<H7XML::INode> child = children->First(); child; child = children->Next()) {
    const std::string target = child->GetChildString(kTarget);
    const std::string community = child->GetChildString(kCommunity);
    const std::string port = child->GetChildString(kPort);
    device.AddTrapTargetSetting(target, community, port);
  }
}

}  // namespace

void Apply(const H7XML::INode& settings, SNMPDevice& device) {
  device.SetIsManagedDevice(settings.GetChildBool(kIsManagedDevice));
  device.SetEnabledSetting(settings.GetChildBool(kEnabled));
  device.SetCommunityReadSetting(settings.GetChildString(kCommunityRead));
  device.SetCommunityWriteSetting(settings.GetChildString(kCommunityWrite));
  device.SetSysContactSetting(settings.GetChildString(kSysContact));
  device.SetUsePrimaryContactSetting(settings.GetChildBool(kUsePrimaryContact));
  device.SetSysLocationSetting(settings.GetChildString(kSysLocation));
  device.SetUseProjectOwnerAddressSetting(settings.GetChildBool(kUseProjectOwnerAddress));
  device.SetSysNameSetting(settings.GetChildString(kSysName));
  device.SetUseRoomDeviceSetting(settings.GetChildBool(kUseRoomDevice));
  ReplaceTrapTargets(settings, device);
}

}  // namespace device_settings

namespace {

h7::auto_com<H7XML::INode> TrapTargetsElement(SNMPDevice& device) {
  using namespace device_settings;
  h7::auto_com<H7XML::INode> list = H7XML::CreateXmlNode(kTrapTargets, "");
  for (const TrapTarget& entry : device.GetTrapTargetsSetting()) {
    const h7::auto_com<H7XML::INode> element = H7XML::CreateXmlNode(kTrapTarget, "");
    element->AddChildString(kTarget, entry.target);
    element->AddChildString(kCommunity, entry.community);
    element->AddChildString(kPort, entry.port);
    list->AppendChild(*element);
  }
  return list;
}

}  // namespace

h7::auto_com<H7XML::INode> SNMPDevice::ToXml() {
  using namespace device_settings;
  h7::auto_com<H7XML::INode> root = H7XML::CreateXmlNode(kManagedDevice, "");
  root->AddChildString(kIsManagedDevice, h7::ToString(GetIsManagedDevice()));
  root->AddChildString(kIsConfigDirty, h7::ToString(GetIsConfigDirty()));
  root->AddChildString(kEnabled, h7::ToString(m_device->GetEnabledSetting()));
  root->AddChildString(kCommunityRead, GetCommunityReadSetting());
  root->AddChildString(kCommunityWrite, GetCommunityWriteSetting());
  root->AddChildString(kSysContact, GetSysContactSetting());
  root->AddChildString(kUsePrimaryContact, h7::ToString(m_device->GetUsePrimaryContactSetting()));
  root->AddChildString(kSysLocation, GetSysLocationSetting());
  root->AddChildString(kUseProjectOwnerAddress, h7::ToString(m_device->GetUseProjectOwnerAddressSetting()));
  root->AddChildString(kSysName, GetSysNameSetting());
  root->AddChildString(kUseRoomDevice, h7::ToString(m_device->GetUseRoomDeviceSetting()));
  const h7::auto_com<H7XML::INode> trapTargets = TrapTargetsElement(*this);
  root->AppendChild(*trapTargets);
  root->AddChildString(kDeviceId, h7::ToString(m_deviceId));
  return root;
}
