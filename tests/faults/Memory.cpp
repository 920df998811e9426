#include "tests/faults/Memory.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

namespace faults {
namespace {

// The label stands in front of each block. The rest of the space in front of the block is only for the alignment.
struct Label {
  std::uint32_t state;
  std::uint32_t form;
};

constexpr std::uint32_t kAlive = 0xA11FEB10;
constexpr std::uint32_t kDead = 0xDEADB10C;

enum Form : std::uint32_t { kObject, kArray, kAlignedObject, kAlignedArray };

std::atomic<std::size_t> s_live{0};
thread_local AllocationObserver* t_observer = nullptr;

std::size_t RoomInFront(std::size_t alignment) noexcept {
  return std::max(alignment, std::size_t{__STDCPP_DEFAULT_NEW_ALIGNMENT__});
}

Label& LabelOf(void* block) noexcept {
  return *reinterpret_cast<Label*>(static_cast<char*>(block) - sizeof(Label));
}

void* Get(std::size_t size, Form form, std::size_t alignment = 0) noexcept {
  const std::size_t room = RoomInFront(alignment);
  void* start = nullptr;
  if (::posix_memalign(&start, room, room + size) != 0) {
    return nullptr;
  }
  void* const block = static_cast<char*>(start) + room;
  LabelOf(block) = {kAlive, form};
  ++s_live;
  return block;
}

void* GetOrThrow(std::size_t size, Form form, std::size_t alignment = 0) {
  if (t_observer != nullptr) {
    t_observer->OnAllocation();
  }
  void* const block = Get(size, form, alignment);
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  return block;
}

[[noreturn]] void Stop(const char* message) noexcept {
  const ssize_t written = ::write(STDERR_FILENO, message, std::strlen(message));
  static_cast<void>(written);
  std::abort();
}

void GiveBack(void* block, Form form, std::size_t alignment = 0) noexcept {
  if (block == nullptr) {
    return;
  }
  Label& label = LabelOf(block);
  if (label.state != kAlive) {
    Stop("A block was given back twice, was written in front of, or never came from operator new.\n");
  }
  if (label.form != form) {
    Stop("A block was given back in another form of operator delete than it was got with.\n");
  }
  label.state = kDead;
  --s_live;
  std::free(static_cast<char*>(block) - RoomInFront(alignment));
}

}  // namespace

std::size_t LiveBlocks() noexcept {
  return s_live;
}

void SetAllocationObserver(AllocationObserver* observer) noexcept {
  t_observer = observer;
}

}  // namespace faults

using namespace faults;

void* operator new(std::size_t size) {
  return GetOrThrow(size, kObject);
}
void* operator new[](std::size_t size) {
  return GetOrThrow(size, kArray);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return Get(size, kObject);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return Get(size, kArray);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
  return GetOrThrow(size, kAlignedObject, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
  return GetOrThrow(size, kAlignedArray, static_cast<std::size_t>(alignment));
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return Get(size, kAlignedObject, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return Get(size, kAlignedArray, static_cast<std::size_t>(alignment));
}

void operator delete(void* block) noexcept {
  GiveBack(block, kObject);
}
void operator delete[](void* block) noexcept {
  GiveBack(block, kArray);
}
void operator delete(void* block, std::size_t) noexcept {
  GiveBack(block, kObject);
}
void operator delete[](void* block, std::size_t) noexcept {
  GiveBack(block, kArray);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
  GiveBack(block, kObject);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
  GiveBack(block, kArray);
}
void operator delete(void* block, std::align_val_t alignment) noexcept {
  GiveBack(block, kAlignedObject, static_cast<std::size_t>(alignment));
}
void operator delete[](void* block, std::align_val_t alignment) noexcept {
  GiveBack(block, kAlignedArray, static_cast<std::size_t>(alignment));
}
void operator delete(void* block, std::size_t, std::align_val_t alignment) noexcept {
  GiveBack(block, kAlignedObject, static_cast<std::size_t>(alignment));
}
void operator delete[](void* block, std::size_t, std::align_val_t alignment) noexcept {
  GiveBack(block, kAlignedArray, static_cast<std::size_t>(alignment));
}
void operator delete(void* block, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  GiveBack(block, kAlignedObject, static_cast<std::size_t>(alignment));
}
void operator delete[](void* block, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  GiveBack(block, kAlignedArray, static_cast<std::size_t>(alignment));
}
