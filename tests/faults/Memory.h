#ifndef TESTS_FAULTS_MEMORY_H
#define TESTS_FAULTS_MEMORY_H

#include <cstddef>

// The memory of this test program. Its global operator new and delete are replaced: they count what is alive, let a test
// fail an allocation, and end the program with a message when a block is given back twice or in another way than it was got.
namespace faults {

// How many blocks from operator new have not been given back.
std::size_t LiveBlocks() noexcept;

// Hears of each allocation of this thread before it is made. It does not allocate itself.
class AllocationObserver {
 public:
  // May throw: the allocation then is not made, and this is what comes out of operator new. Not told of those allocations
  // that must not throw.
  virtual void OnAllocation() = 0;

 protected:
  ~AllocationObserver() = default;
};

// One observer for each thread; null (the initial state) for none.
void SetAllocationObserver(AllocationObserver* observer) noexcept;

}  // namespace faults

#endif
