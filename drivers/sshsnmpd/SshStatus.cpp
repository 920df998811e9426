#include "drivers/sshsnmpd/SshStatus.h"

#include "drivers/common/OffLineStatus.h"

namespace drivers {

std::string DescribeSshStatus(int status) {
  switch (status) {
    case kHostKeyUnknown:
      return "the controller's host key is not known; devhost trust shows it and asks";
    case kHostKeyDiffers:
      return "the controller's host key is not the one that is known, or is revoked; somebody may stand in between";
    case kLoginRefused:
      return "the controller does not accept the login";
    case kKeyFileUnusable:
      return "the key file cannot be used: it is missing, closed to this user, damaged, or needs a passphrase";
    case kNoCommand:
      return "the project gives no command for this";
    case kCommandFailed:
      return "the command failed on the controller";
    case kOutcomeUnknown:
      return "the connection broke while the command ran; it may have been done or not";
    case kControllerUnfit:
      return "the controller does not do what the driver needs: a program is missing, or sudo asks for a password";
    case kKnownHostsUnusable:
      return "the known-hosts file cannot be read or written";
    default:
      return DescribeOffLineStatus(status);
  }
}

}  // namespace drivers
