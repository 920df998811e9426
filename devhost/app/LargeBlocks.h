#ifndef DEVHOST_APP_LARGEBLOCKS_H
#define DEVHOST_APP_LARGEBLOCKS_H

#include <cstddef>

namespace devhost {

// From this size on, in bytes, a block of memory is large. The text of a device's snmpd.conf may be.
constexpr std::size_t kLargeBlock = std::size_t{4} * 1024 * 1024;

// A block of at least `size` bytes that the kernel is asked to back with huge pages: the texts of large files live in two or
// three such blocks, and half the time of a change went into faults for their small pages. A kernel without huge pages gives
// small ones.
// Ownership: the caller releases it with std::free.
// Errors: null when there is no memory.
void* AllocateLargeBlock(std::size_t size) noexcept;

}  // namespace devhost

#endif
