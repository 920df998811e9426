#include "drivers/common/FileStatus.h"

#include <cerrno>
#include <system_error>

namespace drivers {

int FileStatusOfErrno(int error) {
  return -100 - error;
}

std::string DescribeFileStatus(int status) {
  if (status == 0) {
    return "success";
  }
  if (status == kFileIsSymbolicLink) {
    return "it is a symbolic link";
  }
  if (status == kFileIsNotRegular) {
    return "it is not a regular file";
  }
  if (status == kFolderInTheWay) {
    return "a folder named .snmpd.conf.new beside it is in the way; remove that folder";
  }
  if (status == kFileWasChanged) {
    return "somebody changed it since it was copied out; read it again";
  }
  if (status == kTextTooLarge) {
    return "the new text is larger than 256 MiB and could never be read again; the old file stays";
  }
  if (status == kLockUnusable) {
    return ".snmpd.conf.lock beside it is not a regular file, or may not be opened; remove it";
  }
  if (status == kTemporaryOfAnotherUser) {
    return "another user's file .snmpd.conf.new beside it is in the way; look at it, and remove it";
  }
  if (status == FileStatusOfErrno(EPERM)) {
    return "it is not permitted, or its mode, owner or access list cannot be kept";
  }
  if (status == FileStatusOfErrno(EWOULDBLOCK)) {
    return "somebody else is writing to it; try again";
  }
  if (status == FileStatusOfErrno(EFBIG)) {
    return "it is too large: more than 256 MiB, or more than this process may write (ulimit -f)";
  }
  if (status < -100) {
    return std::generic_category().message(-100 - status);
  }
  return "unknown reason";
}

}  // namespace drivers
