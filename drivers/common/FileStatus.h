#ifndef DRIVERS_COMMON_FILE_STATUS_H
#define DRIVERS_COMMON_FILE_STATUS_H

#include <string>

// The statuses with which a device answers when its file cannot be read or replaced. 0 is success.
//
//   -1            the file is a symbolic link, dangling or not: refused
//   -2            the file is not a regular file: refused
//   -3            a folder has the name of the temporary file, .snmpd.conf.new: it stays, nothing is written
//   -4            somebody changed the file since it was copied out: it stays
//   -5            the new text is larger than what can be read (ConfigFile::kMaximumSize): nothing is written
//   -6            what has the name of the lock, .snmpd.conf.lock, is not a regular file, or may not be opened: it stays,
//                 nothing is written
//   -7            another user's file has the name of the temporary file: it stays, nothing is written
//   -100 - errno  the system's own reason, each its own status. On Linux, for example:
//                 -102 no such folder   -105 input/output error      -113 permission denied   -120 not a folder
//                 -101 not permitted    -111 another writer at work  -127 file too large      -128 no space left
//                 -130 read-only file system                         -222 quota exceeded
//
// No status is ever -9: to the agent it means "accepted for later", and nothing here is.
namespace drivers {

inline constexpr int kFileIsSymbolicLink = -1;
inline constexpr int kFileIsNotRegular = -2;
inline constexpr int kFolderInTheWay = -3;
inline constexpr int kFileWasChanged = -4;
inline constexpr int kTextTooLarge = -5;
inline constexpr int kLockUnusable = -6;
inline constexpr int kTemporaryOfAnotherUser = -7;

// The status for a system error number, which is not 0.
int FileStatusOfErrno(int error);

// The status in words, for the log.
std::string DescribeFileStatus(int status);

}  // namespace drivers

#endif
