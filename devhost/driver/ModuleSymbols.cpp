#include "devhost/driver/ModuleSymbols.h"

#include <cxxabi.h>
#include <dlfcn.h>
#include <elf.h>
#include <link.h>

#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace devhost {
namespace {

// The tables of a loaded module that list its symbols.
struct SymbolTables {
  const ElfW(Sym) * symbols = nullptr;
  const char* names = nullptr;
  std::uint32_t end = 0;  // all symbols that are taken stand before this one
};

// The loader has put addresses into the dynamic section, but not on every architecture.
template <class Table>
const Table* TableAt(const link_map& module, const ElfW(Dyn) & entry) {
  const ElfW(Addr) address = entry.d_un.d_ptr < module.l_addr ? module.l_addr + entry.d_un.d_ptr : entry.d_un.d_ptr;
  return reinterpret_cast<const Table*>(address);  // NOLINT(performance-no-int-to-ptr): the loader's tables hold integers
}

SymbolTables TablesOf(const link_map& module) {
  SymbolTables tables;
  for (const ElfW(Dyn)* entry = module.l_ld; entry->d_tag != DT_NULL; ++entry) {
    if (entry->d_tag == DT_SYMTAB) {
      tables.symbols = TableAt<ElfW(Sym)>(module, *entry);
    } else if (entry->d_tag == DT_STRTAB) {
      tables.names = TableAt<char>(module, *entry);
    } else if (entry->d_tag == DT_GNU_HASH || (entry->d_tag == DT_HASH && tables.end == 0)) {
      // In the one table the first symbol that the module offers, in the other the number of all symbols.
      tables.end = TableAt<std::uint32_t>(module, *entry)[1];
    }
  }
  return tables;
}

// Whether the text has this name, and not a longer one that begins with it.
bool Names(const std::string& text, std::string_view name) {
  for (std::size_t at = text.find(name); at != std::string::npos; at = text.find(name, at + 1)) {
    const std::size_t end = at + name.size();
    if (end == text.size() || (std::isalnum(static_cast<unsigned char>(text[end])) == 0 && text[end] != '_')) {
      return true;
    }
  }
  return false;
}

static_assert(_GLIBCXX_USE_CXX11_ABI == 1, "the words below are for a host with the new std::string");

constexpr char kOldString[] =
    "it was built with the old std::string (-D_GLIBCXX_USE_CXX11_ABI=0), which this program cannot exchange texts with; "
    "build "
    "it without that option";
[[maybe_unused]] constexpr char kChecked[] =
    "it was built with the checked standard library (-D_GLIBCXX_DEBUG), whose lists this program cannot read; build it "
    "without that option";
constexpr char kOtherLibrary[] =
    "it was built with the C++ library libc++, which this program cannot exchange texts with; build it with libstdc++";

}  // namespace

std::string Demangled(const std::string& symbol) {
  const std::unique_ptr<char, void (*)(void*)> text(abi::__cxa_demangle(symbol.c_str(), nullptr, nullptr, nullptr),
                                                    &std::free);
  return text != nullptr ? text.get() : "";
}

std::vector<std::string> SymbolsTaken(void* handle) {
  std::vector<std::string> taken;
  link_map* module = nullptr;
  if (dlinfo(handle, RTLD_DI_LINKMAP, &module) != 0) {
    return taken;
  }
  const SymbolTables tables = TablesOf(*module);
  if (tables.symbols == nullptr || tables.names == nullptr) {
    return taken;
  }
  taken.reserve(tables.end);
  for (std::uint32_t i = 1; i < tables.end; ++i) {
    if (tables.symbols[i].st_shndx == SHN_UNDEF && tables.symbols[i].st_name != 0) {
      taken.emplace_back(tables.names + tables.symbols[i].st_name);
    }
  }
  return taken;
}

std::string LibraryMismatch(const std::vector<std::string>& symbols) {
  bool oldString = false;
  bool newString = false;
  [[maybe_unused]] bool checked = false;
  bool otherLibrary = false;
  for (const std::string& symbol : symbols) {
    const std::string name = Demangled(symbol);
    oldString = oldString || Names(name, "std::string") || Names(name, "std::basic_string");
    newString = newString || Names(name, "std::__cxx11");
    checked = checked || Names(name, "__gnu_debug") || Names(name, "std::__debug");
    otherLibrary = otherLibrary || Names(name, "std::__1");
  }
  if (otherLibrary && !oldString && !newString) {
    return kOtherLibrary;
  }
  if (oldString && !newString) {
    return kOldString;
  }
#ifndef _GLIBCXX_DEBUG
  if (checked) {
    return kChecked;
  }
#endif
  return "";
}

std::string LibraryMismatchIn(const std::string& loaderMessage) {
  constexpr std::string_view kBefore = "undefined symbol: ";
  const std::size_t at = loaderMessage.find(kBefore);
  if (at == std::string::npos) {
    return "";
  }
  const std::size_t begin = at + kBefore.size();
  const std::size_t end = loaderMessage.find_first_of(", \t", begin);
  return LibraryMismatch({loaderMessage.substr(begin, end == std::string::npos ? end : end - begin)});
}

}  // namespace devhost
