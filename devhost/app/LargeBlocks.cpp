#include "devhost/app/LargeBlocks.h"

#include <stdlib.h>
#include <sys/mman.h>

namespace devhost {

namespace {

constexpr std::size_t kHugePage = std::size_t{2} * 1024 * 1024;

}  // namespace

void* AllocateLargeBlock(std::size_t size) noexcept {
  void* block = nullptr;
  if (::posix_memalign(&block, kHugePage, size) != 0) {
    return nullptr;
  }
  ::madvise(block, size, MADV_HUGEPAGE);
  return block;
}

}  // namespace devhost
