#ifndef TESTS_DRIVERS_HOSTPROBE_BROKEN_PROMISE_H
#define TESTS_DRIVERS_HOSTPROBE_BROKEN_PROMISE_H

#include "drivers/hostprobe/Promise.h"

namespace skeleton {

using drivers::Promise;

// The one promise that the skeleton host breaks; Count for none. Each has one place in the skeleton, which asks `Breaks`.
extern Promise brokenPromise;

inline bool Breaks(Promise promise) {
  return brokenPromise == promise;
}

}  // namespace skeleton

#endif
