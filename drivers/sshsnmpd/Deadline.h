#ifndef DRIVERS_SSHSNMPD_DEADLINE_H
#define DRIVERS_SSHSNMPD_DEADLINE_H

#include <chrono>

namespace drivers {

// The moment until which something may take.
class Deadline {
 public:
  explicit Deadline(std::chrono::milliseconds time) : m_end(std::chrono::steady_clock::now() + time) {}

  // What is left, in whole milliseconds for poll(); 0 when it is over.
  int Left() const {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(m_end - std::chrono::steady_clock::now());
    return left.count() > 0 ? static_cast<int>(left.count()) : 0;
  }

 private:
  std::chrono::steady_clock::time_point m_end;
};

}  // namespace drivers

#endif
