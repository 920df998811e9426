#ifndef DRIVERS_COMMON_OFF_LINE_STATUS_H
#define DRIVERS_COMMON_OFF_LINE_STATUS_H

#include <string>

// The statuses of a device whose controller can be off line, besides those of drivers/common/FileStatus.h. 0 is success; -9,
// and no other status, means that a text was accepted for later.
//
//   -9   the controller is off line: CopyFrom gave the last text that is known, CopyTo keeps the text for later
//   -20  the controller is off line: nothing was done
//   -21  the controller is off line, and no text of its snmpd.conf is known
namespace drivers {

inline constexpr int kAcceptedForLater = -9;
inline constexpr int kControllerOffLine = -20;
inline constexpr int kNoTextKnown = -21;

// The status in words, those of files included.
std::string DescribeOffLineStatus(int status);

}  // namespace drivers

#endif
