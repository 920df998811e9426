#ifndef DRIVERS_COMMON_WRITER_LOCK_H
#define DRIVERS_COMMON_WRITER_LOCK_H

#include <optional>

#include "drivers/common/FileCalls.h"
#include "drivers/common/FileDescriptor.h"

namespace drivers {

// Keeps other writers out of a folder: a locked file, .snmpd.conf.lock, which exists only as long as a writer works. It is a
// file of our own because everybody who can open the folder can lock the folder itself. What a killed writer left is not
// locked; the next one takes it over.
class WriterLock {
 public:
  // For an opened folder, which must outlive it, as must the calls.
  WriterLock(FileCalls& calls, int folder);
  // Removes the file when it was taken.
  ~WriterLock();
  WriterLock(const WriterLock&) = delete;
  WriterLock& operator=(const WriterLock&) = delete;

  // Takes the lock and returns 0, or fails at once with a status of FileStatus.h: that of EWOULDBLOCK while another writer
  // has it. Call it once.
  int Take();

 private:
  int TakeOnce(bool& isStale);

  FileCalls& m_calls;
  const int m_folder;
  std::optional<FileDescriptor> m_file;
  bool m_isTaken = false;
};

}  // namespace drivers

#endif
