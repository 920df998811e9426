#include "drivers/localsnmpd/DaemonStatus.h"

#include "drivers/common/FileStatus.h"

namespace drivers {

std::string DescribeDaemonStatus(int status) {
  switch (status) {
    case kAcceptedForLater:
      return "the controller is off line; accepted for later";
    case kDaemonNotInstalled:
      return "no daemon program is installed";
    case kDaemonNotStarted:
      return "the system does not start the daemon program";
    case kDaemonEndedAtStart:
      return "the daemon ended while it started";
    case kDaemonNotReady:
      return "the daemon did not answer in time";
    case kPortTaken:
      return "another program has the daemon's port";
    case kDaemonFolderUnusable:
      return "the daemon's folder cannot be used";
    case kServedCopyNotWritten:
      return "there is no memory for the copy that the daemon reads";
    case kDaemonDoesNotEnd:
      return "the daemon does not end";
    case kControllerOffLine:
      return "the controller is off line";
    case kNoTextKnown:
      return "the controller is off line, and no text of its snmpd.conf is known";
    default:
      return DescribeFileStatus(status);
  }
}

}  // namespace drivers
