#ifndef DEVHOST_PREVIEW_PREVIEW_H
#define DEVHOST_PREVIEW_PREVIEW_H

#include <stdexcept>
#include <string>
#include <vector>

#include "devhost/driver/DriverEntry.h"
#include "devhost/system/FileText.h"

namespace devhost {

// A project, device or settings that no preview can be made of: what is wrong and what is allowed, in one line.
class PreviewError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A change of a device's settings that has not been made.
struct PreviewInput {
  DriverEntry agent;
  DriverEntry device;  // its configuration has to name the folder of its snmpd.conf
  std::string state;   // what is kept for the device, as XML; "" for nothing
  NamedText settings;  // the device settings element
  bool showSecrets = false;
};

// What the change would make of the device's snmpd.conf.
struct PreviewResult {
  std::string file;        // the path of the snmpd.conf
  std::string difference;  // a unified diff, "" when nothing would change
  // Why there is no difference to show: what the drivers said, then the reason; empty when there is one, or nothing to
  // change.
  std::vector<std::string> complaints;
};

// Lets the agent do "SetDeviceState" with the settings on a scratch copy of the device. The device's own folder is only
// read, and no daemon is started. Throws PreviewError when the settings are not for this device or no copy of it can be
// made, FileError when its snmpd.conf cannot be read, FolderError and ProgramError when this machine does not allow it.
PreviewResult PreviewChange(const PreviewInput& input);

}  // namespace devhost

#endif
