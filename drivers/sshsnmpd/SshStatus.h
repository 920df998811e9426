#ifndef DRIVERS_SSHSNMPD_SSH_STATUS_H
#define DRIVERS_SSHSNMPD_SSH_STATUS_H

#include <string>

// The statuses of a device behind SSH, besides those of drivers/common/OffLineStatus.h. 0 is success; -9 means that the
// controller cannot be reached and a text was accepted for later.
//
//   -30  the controller's host key is not known
//   -31  the controller's host key is not the one that is known, or is revoked
//   -32  the controller does not accept the login
//   -33  the key file cannot be used
//   -34  the project gives no command for this
//   -35  the command failed on the controller
//   -36  the connection broke while the command ran: it may have been done or not
//   -37  the controller does not do what the driver needs: a program is missing, or sudo asks for a password
//   -38  the known-hosts file cannot be read or written
namespace drivers {

inline constexpr int kHostKeyUnknown = -30;
inline constexpr int kHostKeyDiffers = -31;
inline constexpr int kLoginRefused = -32;
inline constexpr int kKeyFileUnusable = -33;
inline constexpr int kNoCommand = -34;
inline constexpr int kCommandFailed = -35;
inline constexpr int kOutcomeUnknown = -36;
inline constexpr int kControllerUnfit = -37;
inline constexpr int kKnownHostsUnusable = -38;

// The status in words, those of drivers/common/OffLineStatus.h included.
std::string DescribeSshStatus(int status);

}  // namespace drivers

#endif
