#ifndef DEVHOST_COMMANDS_PREVIEW_COMMAND_H
#define DEVHOST_COMMANDS_PREVIEW_COMMAND_H

#include <string>

namespace devhost {

class Output;

// `devhost preview`.
struct PreviewOptions {
  std::string project;
  std::string moduleFolder;
  std::string state;     // folder of the drivers' states, "" for none; it is only read
  std::string device;    // name or id of the device's driver in the project
  std::string settings;  // file of one device settings element, "-" for standard input
  bool showSecrets = false;
};

// Prints what "SetDeviceState" with these settings would change in the device's snmpd.conf, as a unified diff, or "nothing
// would change". The agent of the project does it itself, on a scratch copy of the device; neither the project's folders nor
// its daemons are touched. Exit status: 0 the answer was printed, 1 the agent refused the settings or a driver failed, 2
// wrong device or settings. For a project, file or state that cannot be read it throws ProjectError, FileError or
// StateError.
int RunPreview(const PreviewOptions& options, Output& out, Output& errors);

}  // namespace devhost

#endif
