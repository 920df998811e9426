#ifndef DRIVERS_LOCALSNMPD_DESCRIPTOR_H
#define DRIVERS_LOCALSNMPD_DESCRIPTOR_H

#include <unistd.h>

#include <utility>

namespace drivers {

// Owns a file descriptor, or none after a failed open.
class Descriptor {
 public:
  explicit Descriptor(int descriptor = -1) noexcept : m_descriptor(descriptor) {}
  Descriptor(Descriptor&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
  }
  ~Descriptor() { Close(); }

  bool IsOpen() const { return m_descriptor >= 0; }
  int Get() const { return m_descriptor; }
  void Close() {
    if (IsOpen()) {
      ::close(std::exchange(m_descriptor, -1));
    }
  }

 private:
  int m_descriptor;
};

}  // namespace drivers

#endif
