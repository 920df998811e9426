#ifndef FUZZ_SUPPORT_CLOCK_H
#define FUZZ_SUPPORT_CLOCK_H

#include <ctime>

namespace fuzz {

// A clock that goes on by more than a day each time it is asked, so that a time stamp tells which question it answers.
class Clock {
 public:
  std::time_t Ask() { return m_now += 100003; }

  // This one answers time() until another one does. Null stops time.
  static void Use(Clock* clock);

 private:
  std::time_t m_now = 1700000000;
};

}  // namespace fuzz

#endif
