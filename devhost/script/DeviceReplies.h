#ifndef DEVHOST_SCRIPT_DEVICE_REPLIES_H
#define DEVHOST_SCRIPT_DEVICE_REPLIES_H

#include <string>
#include <vector>

#include "devhost/report/DeviceAnswers.h"

namespace devhost {

// What device drivers answer to the commands behind `device DRIVER ...`. `driver` is the driver's name, for messages, and
// `reply` the XML of the reply. A reply that does not hold what is asked for is refused with std::runtime_error.

// Refuses a reply <Fail>, with its reason.
void CheckReply(const std::string& driver, const std::string& reply);
// The value of one setting of a <settings> reply.
std::string SettingIn(const std::string& driver, const std::string& reply, const std::string& name);
// The path in a <filePath> reply.
std::string FilePathIn(const std::string& driver, const std::string& reply);

// These never refuse: what is not in the reply is missing or empty in the value.

// What a <settings> reply holds.
DeviceSettings SettingsIn(const std::string& reply);
// What a <counts> reply holds.
std::vector<OperationCount> CountsIn(const std::string& reply);
// What a <daemon> reply holds.
DaemonState DaemonIn(const std::string& reply);

}  // namespace devhost

#endif
