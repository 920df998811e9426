#ifndef DEVHOST_COMMANDS_DEVICE_OPTIONS_H
#define DEVHOST_COMMANDS_DEVICE_OPTIONS_H

#include <string>
#include <vector>

#include "devhost/commands/Command.h"
#include "devhost/commands/CommonOptions.h"
#include "devhost/operations/Apply.h"

// Options and arguments of commands that are about one device of a project.
namespace devhost {

// The devices of the project that the line names, by name: for completion. Throws ProjectError.
std::vector<Candidate> SuggestDevices(const Arguments& written, const std::string& word);

inline const CommandOption kDevice = With(
    {"device", "", "Name or id of the device's driver in the project", CommandOption::Takes::Text, true}, &SuggestDevices);
inline const CommandOption kDeviceProject{"--project", "FILE", "Project file", CommandOption::Takes::Path, true};
inline const CommandOption kDeviceState{
    "--state", "DIR", "Folder with the drivers' states; the device's state is kept there", CommandOption::Takes::Folder};
inline const CommandOption kSnapshots{
    "--snapshots", "DIR", "Where snapshots lie (default: beside the project, FILE.snapshots)", CommandOption::Takes::Folder};

// The device that the arguments of a command with all options of this header name. Throws ProjectError.
Target ReadTarget(const Arguments& arguments);

// The number of a snapshot that an option gives; 0 when it was not given. Throws SnapshotError for what is not one.
unsigned long SnapshotNumber(const Arguments& arguments, const CommandOption& option);

}  // namespace devhost

#endif
