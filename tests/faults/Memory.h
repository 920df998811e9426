#ifndef TESTS_FAULTS_MEMORY_H
#define TESTS_FAULTS_MEMORY_H

#include <cstddef>

// The memory of this test program. It replaces the global operator new and delete: they count live blocks, and a test can
// let an allocation fail. They end the program with a message when a block is released twice, or with the wrong kind of
// delete.
namespace faults {

// Returns how many blocks from operator new have not been released.
std::size_t LiveBlocks() noexcept;

// Is called for each allocation of this thread before it is made. It must not allocate itself.
class AllocationObserver {
 public:
  // May throw: then the allocation is not made, and the exception comes out of operator new. It is not called for
  // allocations that must not throw.
  virtual void OnAllocation() = 0;

 protected:
  ~AllocationObserver() = default;
};

// Sets the observer of this thread. Null, the initial state, means no observer.
void SetAllocationObserver(AllocationObserver* observer) noexcept;

}  // namespace faults

#endif
