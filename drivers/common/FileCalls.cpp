#include "drivers/common/FileCalls.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>

namespace drivers {

namespace {

const char kAccessList[] = "system.posix_acl_access";

}  // namespace

FileCalls::~FileCalls() = default;

int FileCalls::OpenFolder(const char* path) {
  return ::open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

int FileCalls::OpenForReading(int folder, const char* name, Links links) {
  // O_NONBLOCK: a FIFO under that name must not hold the host up. It means nothing for regular files.
  const int refuse = links == Links::Refuse ? O_NOFOLLOW : 0;
  return ::openat(folder, name, O_RDONLY | refuse | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
}

int FileCalls::CreateNew(int folder, const char* name, mode_t mode) {
  return ::openat(folder, name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode);
}

int FileCalls::Close(int descriptor) {
  return ::close(descriptor);
}

int FileCalls::OpenLock(int folder, const char* name) {
  return ::openat(folder, name, O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0600);
}

int FileCalls::Lock(int descriptor) {
  return ::flock(descriptor, LOCK_EX | LOCK_NB);
}

int FileCalls::Stat(int folder, const char* name, struct stat& result) {
  return ::fstatat(folder, name, &result, AT_SYMLINK_NOFOLLOW);
}

int FileCalls::StatOpened(int descriptor, struct stat& result) {
  return ::fstat(descriptor, &result);
}

ssize_t FileCalls::Read(int descriptor, char* buffer, std::size_t size) {
  return ::read(descriptor, buffer, size);
}

ssize_t FileCalls::Write(int descriptor, const char* data, std::size_t size) {
  return ::write(descriptor, data, size);
}

int FileCalls::ChangeOwner(int descriptor, uid_t user, gid_t group) {
  return ::fchown(descriptor, user, group);
}

int FileCalls::ChangeMode(int descriptor, mode_t mode) {
  return ::fchmod(descriptor, mode);
}

int FileCalls::Sync(int descriptor) {
  return ::fsync(descriptor);
}

ssize_t FileCalls::AccessListSize(int descriptor) {
  return ::fgetxattr(descriptor, kAccessList, nullptr, 0);
}

int FileCalls::RemoveAccessList(int descriptor) {
  return ::fremovexattr(descriptor, kAccessList);
}

int FileCalls::LockOutWriters(int descriptor) {
  // The system signals whoever holds the lease when a writer waits. The signal it would choose ends the process; this one
  // is ignored by default.
  const int chosen = ::fcntl(descriptor, F_SETSIG, SIGURG);
  return chosen != 0 ? chosen : ::fcntl(descriptor, F_SETLEASE, F_RDLCK);
}

int FileCalls::Rename(int folder, const char* from, const char* to) {
  return ::renameat(folder, from, folder, to);
}

int FileCalls::RenameNew(int folder, const char* from, const char* to) {
  return ::renameat2(folder, from, folder, to, RENAME_NOREPLACE);
}

int FileCalls::Exchange(int folder, const char* first, const char* second) {
  return ::renameat2(folder, first, folder, second, RENAME_EXCHANGE);
}

int FileCalls::Remove(int folder, const char* name) {
  return ::unlinkat(folder, name, 0);
}

}  // namespace drivers
