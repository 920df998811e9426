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
inline const CommandOption kSnapshots{"--snapshots", "DIR",
                                      "Where snapshots lie (default: beside the project or file, FILE.snapshots)",
                                      CommandOption::Takes::Folder};
inline const CommandOption kAskDaemon{"--probe", "", "Also ask the daemon what it serves"};
inline const CommandOption kAddress{"--address", "HOST:PORT", "Where the daemon is (default: what the project says)",
                                    CommandOption::Takes::Text};

// For commands that take one file of this machine in place of a device of a project. With --file there is no device on the
// line, so the argument that stands first is the next one.
inline const CommandOption kDeviceUnlessFile =
    With({"device", "", "Name or id of the device's driver in the project; not with --file", CommandOption::Takes::Text},
         &SuggestDevices);
inline const CommandOption kProjectUnlessFile{"--project", "FILE", "Project file; it or --file has to be given",
                                              CommandOption::Takes::Path};
inline const CommandOption kFile{"--file",
                                 "FILE",
                                 "An snmpd.conf of this machine, without a project",
                                 CommandOption::Takes::Path,
                                 false,
                                 {},
                                 {"--project", "--state"}};

// The device or file that the arguments of a command with all options of this header name. Throws ProjectError, FileError,
// and std::runtime_error when the line names none.
Target ReadTarget(const Arguments& arguments);

// Throws std::runtime_error when a device stands beside --file. For commands that have nothing behind the device.
void RequireOneTarget(const Arguments& arguments);

// The name of the device or file on the line.
std::string TargetName(const Arguments& arguments);

// The argument behind the device, wherever it stands; "" when it is missing. Throws std::runtime_error when a device stands
// beside --file.
std::string NextText(const Arguments& arguments, const CommandOption& argument);

// The number of a snapshot that `text` is. Throws SnapshotError, which begins with `name`, for what is not one.
unsigned long SnapshotNumber(const std::string& name, const std::string& text);

}  // namespace devhost

#endif
