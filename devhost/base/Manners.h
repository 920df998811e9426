#ifndef DEVHOST_BASE_MANNERS_H
#define DEVHOST_BASE_MANNERS_H

#include <string>

namespace devhost {

// Hears of drivers that break the host's rules.
class Manners {
 public:
  virtual ~Manners() = default;
  // `what` says in one line what was done; who did it is known from the way the report came.
  virtual void Report(const std::string& what) = 0;
};

// Keeps calls from a second thread out of the host's tables.
class ThreadCheck {
 public:
  virtual ~ThreadCheck() = default;
  // False when another thread is inside a call; the call has been reported then and must do nothing.
  virtual bool MayCall(const std::string& operation) = 0;
};

}  // namespace devhost

#endif
