#ifndef DEVHOST_ENGINE_HOST_ERROR_H
#define DEVHOST_ENGINE_HOST_ERROR_H

#include <stdexcept>

namespace devhost {

// What could not be done, in one line that says what, where and what is allowed. The host goes on working.
class HostError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace devhost

#endif
