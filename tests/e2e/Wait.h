#ifndef TESTS_E2E_WAIT_H
#define TESTS_E2E_WAIT_H

#include <chrono>
#include <thread>

namespace e2e {

// Calls `there` again and again until it is true. Returns false after a deadline that only a hung program reaches.
template <typename Predicate>
bool Eventually(const Predicate& there) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(2);
  while (!there()) {
    if (std::chrono::steady_clock::now() > deadline) {
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

}  // namespace e2e

#endif
