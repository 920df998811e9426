#ifndef DEVHOST_PREVIEW_PREVIEW_H
#define DEVHOST_PREVIEW_PREVIEW_H

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "devhost/check/Finding.h"
#include "devhost/driver/DriverEntry.h"
#include "devhost/preview/DeviceAnswers.h"
#include "devhost/preview/DeviceLife.h"
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
  DriverEntry device;
  std::string state;   // what is kept for the device, as XML; "" for nothing
  NamedText settings;  // the device settings element
  bool showSecrets = false;
  std::string file = {};  // what messages call the snmpd.conf; "" for "snmpd.conf of NAME"
  // Whether the agent is asked for its devices before, as a configuration tool does: the device then holds what its file
  // has, and a setting that is emptied counts as erased, so that the agent does not fill it from the file again.
  bool listsFirst = false;
  std::function<void(std::string&)> edit;  // what the agent gets of the file goes through it, as with Host::EditCopies
  bool wantsDifference = true;             // for somebody who looks at it; the verdict needs none
};

// What the change would make of the device's snmpd.conf.
struct PreviewResult {
  enum class Verdict {
    Unchanged,
    Changed,
    Refused,  // the agent would not write the file: it cannot be read, say
    Failed    // a driver has failed, so nobody can tell
  };

  Verdict verdict;
  std::string file;             // what the difference and the findings call the snmpd.conf
  std::string difference;       // a unified diff, where it would change and one is wanted; else ""
  std::vector<Finding> losses;  // what the change would drop from the file; none unless it would change
  // What else there is to say, a line each. Why there is no difference to show: what the drivers said, then the reason.
  std::vector<std::string> messages;
  // What the device answers now and what it would answer then, with its secrets; the latter is valid only where the verdict
  // is Unchanged or Changed.
  DeviceAnswers before;
  DeviceAnswers after;
};

// What is to be said of a device whose driver has kept a change for later, in one line; "" when it has kept none. `state` is
// what is kept for the device, as XML, or "": drivers of drivers/common/DeviceState.h have the elements `pending` and `base`
// in it then. Throws XmlError for a state that is not XML.
std::string WaitingChange(const std::string& device, const std::string& state);

// Shows what "SetDeviceState" would do with these settings. The device is only asked, in a host without an agent: no setter,
// no CopyTo, no action and no command reaches it, whatever its driver is. Its driver does run: it is loaded, made with its
// real configuration and its state, initialised and destroyed, because only the driver knows where the file is. The agent
// then works on a scratch device with the same answers, in a host inside the life of the other one. Secrets are masked
// unless they are to be shown.
//
// Throws PreviewError when the settings are not for this device, FileError and ProgramError when this machine does not allow
// it.
PreviewResult PreviewChange(const PreviewInput& input);

// The same in a life of the device that may go on. With `file`, which may be null, the device is asked for its settings
// alone, and that is its file.
PreviewResult PreviewChange(const PreviewInput& input, DeviceLife& life, const DeviceLife::File* file = nullptr);

}  // namespace devhost

#endif
