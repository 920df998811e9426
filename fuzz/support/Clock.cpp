#include "fuzz/support/Clock.h"

namespace fuzz {
namespace {

Clock* s_clock = nullptr;

}  // namespace

void Clock::Use(Clock* clock) {
  s_clock = clock;
}

}  // namespace fuzz

// What every call of time() in the program is bound to when it is linked.
extern "C" std::time_t __wrap_time(std::time_t* place) {
  const std::time_t now = fuzz::s_clock == nullptr ? 0 : fuzz::s_clock->Ask();
  if (place != nullptr) {
    *place = now;
  }
  return now;
}
