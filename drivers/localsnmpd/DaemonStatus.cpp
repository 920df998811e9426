#include "drivers/localsnmpd/DaemonStatus.h"

#include "drivers/common/OffLineStatus.h"

namespace drivers {

std::string DescribeDaemonStatus(int status) {
  switch (status) {
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
    default:
      return DescribeOffLineStatus(status);
  }
}

}  // namespace drivers
