#include "fuzz/support/Clock.h"

namespace fuzz {
namespace {

Clock* s_clock = nullptr;

}  // namespace

void Clock::Use(Clock* clock) {
  s_clock = clock;
}

}  // namespace fuzz

// The linker binds every call of time() in the program to this function.
extern "C" std::time_t __wrap_time(std::time_t* place) {
  const std::time_t now = fuzz::s_clock == nullptr ? 0 : fuzz::s_clock->Ask();
  if (place != nullptr) {
    *place = now;
  }
  return now;
}
