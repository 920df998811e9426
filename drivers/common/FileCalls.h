#ifndef DRIVERS_COMMON_FILE_CALLS_H
#define DRIVERS_COMMON_FILE_CALLS_H

#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>

namespace drivers {

// How a symbolic link under a file's name is treated.
enum class Links { Refuse, Follow };

// The system calls that `ConfigFile` makes, one each, so that a test can make any of them fail. Results and errno are those
// of the system call. Names are relative to the descriptor of an opened folder. Symbolic links are never followed, except
// for reading with Links::Follow.
class FileCalls {
 public:
  virtual ~FileCalls();

  virtual int OpenFolder(const char* path);
  virtual int OpenForReading(int folder, const char* name, Links links);
  // Fails when the name exists in any form.
  virtual int CreateNew(int folder, const char* name, mode_t mode);
  virtual int Close(int descriptor);

  // Opens a file for locking, made with mode 0600 where it is missing.
  virtual int OpenLock(int folder, const char* name);
  // Locks an open file for this writer, or fails at once with EWOULDBLOCK. Released with the last descriptor, so a killed
  // process releases it, too.
  virtual int Lock(int descriptor);
  virtual int Stat(int folder, const char* name, struct stat& result);
  virtual int StatOpened(int descriptor, struct stat& result);

  virtual ssize_t Read(int descriptor, char* buffer, std::size_t size);
  virtual ssize_t Write(int descriptor, const char* data, std::size_t size);
  virtual int ChangeOwner(int descriptor, uid_t user, gid_t group);
  virtual int ChangeMode(int descriptor, mode_t mode);
  virtual int Sync(int descriptor);

  // The size of the file's access list (POSIX ACL). Fails with ENODATA where it has none, and with EOPNOTSUPP where its file
  // system has none.
  virtual ssize_t AccessListSize(int descriptor);
  virtual int RemoveAccessList(int descriptor);

  // Fails with EAGAIN while anybody has the file open for writing, with EACCES where only the file's owner may ask, and with
  // EINVAL where the file system does not know. Until the descriptor is closed, whoever opens the file for writing waits.
  virtual int LockOutWriters(int descriptor);

  virtual int Rename(int folder, const char* from, const char* to);
  // Fails with EEXIST where `to` exists in any form. EINVAL, ENOSYS or EOPNOTSUPP: the file system cannot tell.
  virtual int RenameNew(int folder, const char* from, const char* to);
  // Exchanges two existing names in one step. EINVAL, ENOSYS or EOPNOTSUPP: the file system cannot.
  virtual int Exchange(int folder, const char* first, const char* second);
  virtual int Remove(int folder, const char* name);
};

}  // namespace drivers

#endif
