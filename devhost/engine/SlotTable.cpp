#include "devhost/engine/SlotTable.h"

#include <cxxabi.h>
#include <link.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

// NOLINTBEGIN(performance-no-int-to-ptr): tables of virtual functions are read and written as words

namespace devhost {
namespace {

using Word = std::uintptr_t;

// Constant data of a module, from its begin to its end, in whole words.
struct Region {
  Word begin = 0;
  Word end = 0;

  bool Holds(Word from, Word to) const { return begin <= from && from <= to && to <= end; }
};

struct Search {
  Word from;
  Word to;
  Region found;
};

// Tables lie where the loader writes no more once it is done, or in data that nobody ever writes.
int FindRegion(dl_phdr_info* info, std::size_t, void* data) {
  Search& search = *static_cast<Search*>(data);
  for (const ElfW(Phdr)* segment = info->dlpi_phdr; segment != info->dlpi_phdr + info->dlpi_phnum; ++segment) {
    const bool isConstant =
        segment->p_type == PT_GNU_RELRO || (segment->p_type == PT_LOAD && (segment->p_flags & PF_W) == 0);
    const Word begin = info->dlpi_addr + segment->p_vaddr;
    const Region region{(begin + sizeof(Word) - 1) / sizeof(Word) * sizeof(Word),
                        (begin + segment->p_memsz) / sizeof(Word) * sizeof(Word)};
    if (isConstant && region.Holds(search.from, search.to)) {
      search.found = region;
      return 1;
    }
  }
  return 0;
}

Region RegionOf(Word from, Word to) {
  Search search{from, to, {}};
  dl_iterate_phdr(&FindRegion, &search);
  return search.found;
}

// The address sanitizer keeps gaps between tables, which are copied with them.
__attribute__((no_sanitize("address"))) Word WordAt(Word address) {
  return *reinterpret_cast<const volatile Word*>(address);
}

// The constant data of a module, with the host's functions in some tables.
struct Copy {
  explicit Copy(const Region& from) : region(from) {
    original.reserve((region.end - region.begin) / sizeof(Word));
    for (Word at = region.begin; at != region.end; at += sizeof(Word)) {
      original.push_back(WordAt(at));
    }
    words = original;
  }

  Word Begin() const { return reinterpret_cast<Word>(words.data()); }
  Word End() const { return reinterpret_cast<Word>(words.data() + words.size()); }
  // Another module may have come to lie where one has been.
  bool IsOf(const Region& other) const {
    Word at = region.begin;
    return region.begin == other.begin && region.end == other.end &&
           std::all_of(original.begin(), original.end(), [&at](Word word) {
             const bool same = WordAt(at) == word;
             at += sizeof(Word);
             return same;
           });
  }

  const Region region;
  std::vector<Word> original;
  std::vector<Word> words;
  Copy* next = nullptr;
};

// Of the process: objects point into the copies, and functions in tables take no argument that says where they are.
std::atomic<Copy*> s_copies{nullptr};

Copy* CopyThatHolds(Word table) noexcept {
  Copy* copy = s_copies;
  while (copy != nullptr && (table < copy->Begin() || copy->End() <= table)) {
    copy = copy->next;
  }
  return copy;
}

Copy& CopyOf(const Region& region) {
  for (Copy* copy = s_copies; copy != nullptr; copy = copy->next) {
    if (copy->IsOf(region)) {
      return *copy;
    }
  }
  std::unique_ptr<Copy> copy = std::make_unique<Copy>(region);
  copy->next = s_copies;
  s_copies = copy.get();
  return *copy.release();
}

// Whether the object with this table is, at this address, that interface. In front of the functions stand the way to the
// whole object and its type.
bool IsInterface(void* object, Word table, const std::type_info& interface) {
  const auto* const type = reinterpret_cast<const std::type_info*>(WordAt(table - sizeof(Word)));
  const auto* const wanted = dynamic_cast<const abi::__class_type_info*>(&interface);
  if (type == nullptr || wanted == nullptr) {
    return false;
  }
  const auto wayToWhole = static_cast<std::ptrdiff_t>(WordAt(table - 2 * sizeof(Word)));
  void* base = static_cast<char*>(object) + wayToWhole;
  return type->__do_upcast(wanted, &base) && base == object;
}

}  // namespace

bool PutInFront(void* object, const std::type_info& interface, const void* const* functions, std::size_t count) {
  Word& table = *static_cast<Word*>(object);
  if (CopyThatHolds(table) != nullptr) {
    return true;
  }
  // What is constant cannot be led to another table.
  const Word place = reinterpret_cast<Word>(object);
  if (RegionOf(place, place + sizeof(Word)).end != 0) {
    return false;
  }
  const Region region = RegionOf(table - 2 * sizeof(Word), table + count * sizeof(Word));
  if (region.end == 0 || table % sizeof(Word) != 0 || !IsInterface(object, table, interface)) {
    return false;
  }
  Copy& copy = CopyOf(region);
  Word* const slots = copy.words.data() + (table - region.begin) / sizeof(Word);
  std::transform(functions, functions + count, slots, [](const void* function) { return reinterpret_cast<Word>(function); });
  table = reinterpret_cast<Word>(slots);
  return true;
}

const void* FunctionBehind(const void* object, std::size_t slot) noexcept {
  const Word table = *static_cast<const Word*>(object);
  const Copy* const copy = CopyThatHolds(table);
  // A function of the host is found through a copy only.
  return copy == nullptr ? nullptr
                         : reinterpret_cast<const void*>(copy->original[(table - copy->Begin()) / sizeof(Word) + slot]);
}

}  // namespace devhost

// NOLINTEND(performance-no-int-to-ptr)
