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

  // Takes the folder for this writer, or fails at once with EWOULDBLOCK. Released with the last descriptor, so a killed
  // process releases it, too.
  virtual int LockFolder(int folder);
  virtual int Stat(int folder, const char* name, struct stat& result);
  virtual int StatOpened(int descriptor, struct stat& result);

  virtual ssize_t Read(int descriptor, char* buffer, std::size_t size);
  virtual ssize_t Write(int descriptor, const char* data, std::size_t size);
  virtual int ChangeOwner(int descriptor, uid_t user, gid_t group);
  virtual int ChangeMode(int descriptor, mode_t mode);
  virtual int Sync(int descriptor);

  virtual int Rename(int folder, const char* from, const char* to);
  virtual int Remove(int folder, const char* name);
};

}  // namespace drivers

#endif
