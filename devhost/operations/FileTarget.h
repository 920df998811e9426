#ifndef DEVHOST_OPERATIONS_FILE_TARGET_H
#define DEVHOST_OPERATIONS_FILE_TARGET_H

#include <string>

#include "devhost/operations/Apply.h"

namespace devhost {

// The id of the device in settings for a file.
inline constexpr unsigned long kFileDeviceId = 1;

// One snmpd.conf of this machine as a target, without a project: the agent, and the driver that replaces a file in one step
// and only where nobody else has changed it. Its daemon is never started. The device holds nothing, so its settings are
// those of the section. Snapshots lie beside the file, in FILE.snapshots. `moduleFolder` has the modules.
//
// Throws FileError for a file that is missing, that has another name than snmpd.conf, a symbolic link, and what is not a
// regular file; ProjectError when a module is missing.
Target TargetOfFile(const std::string& path, const std::string& moduleFolder);

// What drivers know the file by: a target has no other name. A copy of one may.
bool HasNameOfTarget(const std::string& path);

// The agent for a file that is only looked at, under any name. Throws FileError for a file that is missing, a symbolic link,
// and what is not a regular file; ProjectError when the module is missing.
DriverEntry AgentForFile(const std::string& path, const std::string& moduleFolder);

}  // namespace devhost

#endif
