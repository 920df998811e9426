#ifndef DRIVERS_COMMON_FILE_DESCRIPTOR_H
#define DRIVERS_COMMON_FILE_DESCRIPTOR_H

#include <utility>

#include "drivers/common/FileCalls.h"

namespace drivers {

// Owns a descriptor that one of the opening `FileCalls` returned, or none after a failed open. It closes through the same
// calls, which must outlive it.
class FileDescriptor {
 public:
  FileDescriptor(FileCalls& calls, int descriptor) : m_calls(calls), m_descriptor(descriptor) {}
  ~FileDescriptor() {
    if (IsOpen()) {
      m_calls.Close(m_descriptor);
    }
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;

  bool IsOpen() const { return m_descriptor >= 0; }
  int Get() const { return m_descriptor; }
  // Closes now and returns what the system call does. The descriptor is gone whatever that is.
  int Close() { return m_calls.Close(std::exchange(m_descriptor, -1)); }

 private:
  FileCalls& m_calls;
  int m_descriptor;
};

}  // namespace drivers

#endif
