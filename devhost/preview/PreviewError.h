#ifndef DEVHOST_PREVIEW_PREVIEW_ERROR_H
#define DEVHOST_PREVIEW_PREVIEW_ERROR_H

#include <stdexcept>

namespace devhost {

// A project, device or settings that no preview can be made of: what is wrong and what is allowed, in one line.
class PreviewError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace devhost

#endif
