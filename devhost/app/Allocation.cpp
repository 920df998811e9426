#include <cstdlib>
#include <new>

#include "devhost/app/LargeBlocks.h"

// The program's own operator new and delete, which every module that it loads uses too: large blocks in huge pages. They
// stay out of the library, for whoever links that has a say of his own, and out of builds with sanitizers, which replace
// them too.

void* operator new(std::size_t size) {
  for (;;) {
    void* const block = size < devhost::kLargeBlock ? std::malloc(size == 0 ? 1 : size) : devhost::AllocateLargeBlock(size);
    if (block != nullptr) {
      return block;
    }
    const std::new_handler handler = std::get_new_handler();
    if (handler == nullptr) {
      throw std::bad_alloc();
    }
    handler();
  }
}

void operator delete(void* block) noexcept {
  std::free(block);
}

void operator delete(void* block, std::size_t /*size*/) noexcept {
  std::free(block);
}
