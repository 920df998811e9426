#ifndef DEVHOST_SCRIPT_DEVICE_REPLIES_H
#define DEVHOST_SCRIPT_DEVICE_REPLIES_H

#include <string>

namespace devhost {

// What device drivers answer to the commands behind `device DRIVER ...`. `driver` is the driver's name, for messages, and
// `reply` the XML of the reply. A reply that does not hold what is asked for is refused with std::runtime_error.

// Refuses a reply <Fail>, with its reason.
void CheckReply(const std::string& driver, const std::string& reply);
// The value of one setting of a <settings> reply.
std::string SettingIn(const std::string& driver, const std::string& reply, const std::string& name);
// The path in a <filePath> reply.
std::string FilePathIn(const std::string& driver, const std::string& reply);
// The address in a <daemon> reply, "udp:127.0.0.1:40161"; "" where there is none.
std::string AddressIn(const std::string& reply);

}  // namespace devhost

#endif
