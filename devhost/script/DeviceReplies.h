#ifndef DEVHOST_SCRIPT_DEVICE_REPLIES_H
#define DEVHOST_SCRIPT_DEVICE_REPLIES_H

#include <optional>
#include <string>
#include <vector>

namespace devhost {

// What device drivers answer to the commands behind `device DRIVER ...`, made readable. `reply` is the XML of the reply.

// The reason when the reply is <Fail>, "" being an own reason ("no reason given"); empty for any other reply.
std::optional<std::string> FailureIn(const std::string& reply);

// One line for each setting and trap target of a <settings> reply: "sysName=kitchen", "sysContact='' erased",
// "trapTarget=10.0.0.5 community=public port=162".
std::vector<std::string> SettingLines(const std::string& reply);

// The value of one setting of a <settings> reply; empty when there is none of that name.
std::optional<std::string> SettingIn(const std::string& reply, const std::string& name);

// The names of the settings in a <settings> reply, for messages.
std::string SettingNames(const std::string& reply);

// All counts of a <counts> reply on one line: "CopyFrom=3 CopyTo=1".
std::string CountLine(const std::string& reply);

// What a <daemon> reply tells; "" where it tells nothing.
struct DaemonReply {
  std::string running;  // "true" or "false", as the other two
  std::string pid;
  std::string address;  // "udp:127.0.0.1:40161"
  std::string online;
  std::string pending;
};
DaemonReply DaemonIn(const std::string& reply);
// The same on one line: "running pid=4711 address=udp:127.0.0.1:40161 online".
std::string DaemonLine(const DaemonReply& daemon);

// The text of a <filePath> reply; "" for any other reply.
std::string FilePathIn(const std::string& reply);

}  // namespace devhost

#endif
