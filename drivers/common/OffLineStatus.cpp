#include "drivers/common/OffLineStatus.h"

#include "drivers/common/FileStatus.h"

namespace drivers {

std::string DescribeOffLineStatus(int status) {
  switch (status) {
    case kAcceptedForLater:
      return "the controller is off line; accepted for later";
    case kControllerOffLine:
      return "the controller is off line";
    case kNoTextKnown:
      return "the controller is off line, and no text of its snmpd.conf is known";
    default:
      return DescribeFileStatus(status);
  }
}

}  // namespace drivers
