#ifndef DRIVERS_COMMON_DEVICE_STATE_H
#define DRIVERS_COMMON_DEVICE_STATE_H

#include <optional>
#include <string>

#include "drivers/common/SnmpSettings.h"
#include "host/INode.h"
#include "host/auto_com.h"

namespace drivers {

// A text that was accepted while the controller was off line.
struct PendingText {
  std::string text;
  std::string base;  // what the file held, as far as was known, when the text was made from it
};

// What a device saves from one life of the host to the next.
struct DeviceState {
  SnmpSettings settings;
  bool online = true;                  // whether the controller can be reached
  bool isRestartDue = false;           // the file was replaced, and the daemon has not been told
  std::optional<std::string> known;    // the last text that was read from snmpd.conf or written to it
  std::optional<PendingText> pending;  // only off line
  h7::auto_com<H7XML::INode> refused;  // a saved state that could not be used, in an element of this name
};

// Writes the state as an element, named `kind` after the kind of driver:
//
//   <LocalSnmpd version="1" online="true" restartDue="true">    without restartDue when it is false
//     <setting name="sysName" value="kitchen" erased="false"/>   one for each setting, see drivers/common/SettingNames.h
//     <trapTarget target="10.0.0.5" community="public" port="162"/>
//     <known>...</known>                                     a whole file, between two lines that hold a dash
//     <pending>...</pending> <base>...</base>                    both or none
//     <refused>...</refused>                                     moved there from where it was before
//   </LocalSnmpd>
//
// Bytes that XML cannot carry are escaped (%XX).
h7::auto_com<H7XML::INode> WriteDeviceState(const std::string& kind, const DeviceState& state);

// Reads `node`, the state of a driver of that kind, into `state`. Returns what is wrong, in one line, and leaves `state`
// unusable; or nothing. Everything that is unknown, missing or given twice is wrong.
std::string ReadDeviceState(const std::string& kind, const H7XML::INode& node, DeviceState& state);

}  // namespace drivers

#endif
