#ifndef TESTS_SUPPORT_SLOTS_H
#define TESTS_SUPPORT_SLOTS_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>

// Virtual tables, as a caller sees them that was built separately.
namespace testsupport {

// Returns the slot to which a pointer to a virtual member of a class's own table refers. Such a pointer holds the slot's
// distance from the start of the table, in bytes. On ARM, where the low bit of a function's address has a meaning, the mark
// for "virtual" is in the second word. Throws std::logic_error for a member that is not virtual or comes from another base's
// table.
template <class Member>
std::size_t SlotOf(Member member) {
  std::uintptr_t words[2];
  static_assert(sizeof member == sizeof words, "a member pointer has two words");
  std::memcpy(words, &member, sizeof words);
#if defined(__arm__) || defined(__aarch64__)
  const bool isVirtual = words[1] == 1;
  const std::uintptr_t distance = words[0];
#else
  const bool isVirtual = words[0] % 2 == 1 && words[1] == 0;
  const std::uintptr_t distance = words[0] - 1;
#endif
  if (!isVirtual) {
    throw std::logic_error("no virtual member of the class's own table");
  }
  return distance / sizeof(void*);
}

// Returns the table to which the first word of a view points.
inline void* const* TableOf(const void* view) {
  void* const* table;
  std::memcpy(&table, view, sizeof table);
  return table;
}

template <class Signature>
struct SlotCall;

template <class Result, class... Arguments>
struct SlotCall<Result(Arguments...)> {
  // The sanitizer cannot see that the types agree.
  __attribute__((no_sanitize("undefined"))) static Result Make(const void* view, std::size_t slot, Arguments... arguments) {
    Result (*function)(const void*, Arguments...);
    void* const entry = TableOf(view)[slot];
    std::memcpy(&function, &entry, sizeof function);
    return function(view, static_cast<Arguments&&>(arguments)...);
  }
};

// Calls the operation in `slot` of the table behind `view`, a pointer to exactly the interface that has the table:
// CallSlot<int(const std::string&)>(view, 7, text).
template <class Signature, class... Arguments>
auto CallSlot(const void* view, std::size_t slot, Arguments&&... arguments) {
  return SlotCall<Signature>::Make(view, slot, static_cast<Arguments&&>(arguments)...);
}

}  // namespace testsupport

#endif
