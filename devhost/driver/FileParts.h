#ifndef DEVHOST_DRIVER_FILE_PARTS_H
#define DEVHOST_DRIVER_FILE_PARTS_H

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace devhost {

// Parts of a file whose offsets and sizes nobody has checked.

// What stands there. The bytes are copied, because nothing in a file has to be aligned. A part that the file does not have
// is all zero.
template <class Part>
Part PartAt(std::string_view file, std::uint64_t offset) {
  Part part = {};
  if (offset <= file.size() && sizeof part <= file.size() - offset) {
    std::memcpy(&part, file.data() + offset, sizeof part);
  }
  return part;
}

// As much of the range as the file has.
inline std::string_view RangeAt(std::string_view file, std::uint64_t offset, std::uint64_t size) {
  if (offset > file.size()) {
    return {};
  }
  return file.substr(static_cast<std::size_t>(offset), static_cast<std::size_t>(std::min<std::uint64_t>(size, file.size())));
}

}  // namespace devhost

#endif
