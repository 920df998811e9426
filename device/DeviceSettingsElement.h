#ifndef DEVICE_DEVICE_SETTINGS_ELEMENT_H
#define DEVICE_DEVICE_SETTINGS_ELEMENT_H

#include "host/INode.h"

class SNMPDevice;

// The names of the device settings element and of the list of such elements. The configuration tool gets a device's settings
// in this form and sends them back. `SNMPDevice::ToXml` writes the element; docs/device-settings.md describes it.
namespace device_settings {

extern const char kManagedDevices[];
extern const char kManagedDevice[];
extern const char kIsManagedDevice[];
extern const char kIsConfigDirty[];
extern const char kEnabled[];
extern const char kCommunityRead[];
extern const char kCommunityWrite[];
extern const char kSysContact[];
extern const char kUsePrimaryContact[];
extern const char kSysLocation[];
extern const char kUseProjectOwnerAddress[];
extern const char kSysName[];
extern const char kUseRoomDevice[];
extern const char kTrapTargets[];
extern const char kTrapTarget[];
extern const char kTarget[];
extern const char kCommunity[];
extern const char kPort[];
extern const char kDeviceId[];

// Applies every setting of an edited element to the device, in the order of the element, then replaces the trap targets.
// Nothing is checked. An absent child is applied as false or as the empty text. Without trap targets, the device has none
// afterwards. "snmpIsConfigDirty" and "deviceId" are not applied.
void Apply(const H7XML::INode& settings, SNMPDevice& device);

}  // namespace device_settings

#endif
