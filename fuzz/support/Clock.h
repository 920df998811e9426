#ifndef FUZZ_SUPPORT_CLOCK_H
#define FUZZ_SUPPORT_CLOCK_H

#include <ctime>

namespace fuzz {

// A clock that advances by more than a day each time it is asked, so that a time stamp shows which question it answers.
class Clock {
 public:
  std::time_t Ask() { return m_now += 100003; }

  // Lets `clock` answer time() from now on. With null, the time is always 0.
  static void Use(Clock* clock);

 private:
  std::time_t m_now = 1700000000;
};

}  // namespace fuzz

#endif
