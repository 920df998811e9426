#ifndef DEVHOST_SYSTEM_OUTPUT_H
#define DEVHOST_SYSTEM_OUTPUT_H

#include <string_view>

namespace devhost {

// Writes text to a file descriptor, at once: what a person or the next program sees is in the order in which it happened,
// also when a driver ends the process. It is written to from inside the drivers' calls, so it never throws: a failure is
// remembered, and everything after it is dropped.
class Output {
 public:
  // The descriptor is borrowed.
  explicit Output(int descriptor) : m_descriptor(descriptor) {}
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  void Write(std::string_view text) noexcept;

  // The error number of the first write that failed, or 0.
  int Error() const noexcept { return m_error; }
  int Descriptor() const noexcept { return m_descriptor; }

 private:
  int m_descriptor;
  int m_error = 0;
};

}  // namespace devhost

#endif
