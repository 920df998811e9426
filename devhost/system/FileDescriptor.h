#ifndef DEVHOST_SYSTEM_FILE_DESCRIPTOR_H
#define DEVHOST_SYSTEM_FILE_DESCRIPTOR_H

#include <unistd.h>

#include <utility>

namespace devhost {

// Owns a file descriptor, or none after an open that failed.
class FileDescriptor {
 public:
  explicit FileDescriptor(int descriptor = -1) noexcept : m_descriptor(descriptor) {}
  FileDescriptor(FileDescriptor&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
  }
  ~FileDescriptor() { Close(); }

  bool IsOpen() const noexcept { return m_descriptor >= 0; }
  int Get() const noexcept { return m_descriptor; }
  // Closes it before the end of this object's life.
  void Close() noexcept {
    if (IsOpen()) {
      ::close(std::exchange(m_descriptor, -1));
    }
  }

 private:
  int m_descriptor;
};

}  // namespace devhost

#endif
