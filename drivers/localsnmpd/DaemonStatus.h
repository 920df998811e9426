#ifndef DRIVERS_LOCALSNMPD_DAEMON_STATUS_H
#define DRIVERS_LOCALSNMPD_DAEMON_STATUS_H

#include <string>

// The statuses of a device with a daemon of its own, besides those of drivers/common/OffLineStatus.h. 0 is success.
//
//   -10  no daemon program is installed
//   -11  the system does not start the program
//   -12  the daemon ended while it started
//   -13  the daemon did not answer in time, and was stopped
//   -14  another program has the daemon's port
//   -15  the folder daemon/ beside snmpd.conf cannot be used
//   -16  there is no memory for the copy of snmpd.conf that the daemon reads
//   -17  the daemon does not end, even when it is killed
namespace drivers {

inline constexpr int kDaemonNotInstalled = -10;
inline constexpr int kDaemonNotStarted = -11;
inline constexpr int kDaemonEndedAtStart = -12;
inline constexpr int kDaemonNotReady = -13;
inline constexpr int kPortTaken = -14;
inline constexpr int kDaemonFolderUnusable = -15;
inline constexpr int kServedCopyNotWritten = -16;
inline constexpr int kDaemonDoesNotEnd = -17;

// The status in words, those of drivers/common/OffLineStatus.h included.
std::string DescribeDaemonStatus(int status);

}  // namespace drivers

#endif
