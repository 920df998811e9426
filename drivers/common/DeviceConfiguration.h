#ifndef DRIVERS_COMMON_DEVICE_CONFIGURATION_H
#define DRIVERS_COMMON_DEVICE_CONFIGURATION_H

#include <string>

#include "drivers/common/SnmpSettings.h"
#include "host/INode.h"

namespace drivers {

// What the project says about a device, in the driver's configuration element:
//
//   <config folder="/abs/olute" version="1.2.0" versionValid="true">
//     <setting name="sysName" value="kitchen"/>
//     <trapTarget target="10.0.0.5" community="public" port="162"/>
//   </config>
//
// `folder` is absolute and holds the device's snmpd.conf; it is required unless the file is elsewhere. Each setting is given
// at most once, by the names of drivers/common/SettingNames.h; an empty value is "never held anything", not "erased". A trap
// target needs its target.
struct DeviceConfiguration {
  std::string folder;
  std::string version = "1.0.0";  // of the device's SNMP support
  bool versionValid = true;       // whether the agent can manage that version
  SnmpSettings settings;
};

// Whether a device's snmpd.conf is in a folder of this machine, which the configuration has to name.
enum class FolderIs { Required, NotUsed };

// Reads `config` into `result`. Returns what is wrong and what is allowed, in one line, or nothing when it is valid; an
// invalid one leaves `result` unusable. Unknown elements are wrong; of unknown attributes those that
// FindMisspelt finds (MisspeltAttribute.h), since a node does not list its attributes.
std::string ReadDeviceConfiguration(const H7XML::INode& config, DeviceConfiguration& result,
                                    FolderIs folderIs = FolderIs::Required);

}  // namespace drivers

#endif
