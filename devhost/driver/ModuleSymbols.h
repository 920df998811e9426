#ifndef DEVHOST_DRIVER_MODULE_SYMBOLS_H
#define DEVHOST_DRIVER_MODULE_SYMBOLS_H

#include <string>
#include <vector>

namespace devhost {

// The symbols that a loaded module takes from others, mangled. `handle` is what dlopen returned. Empty for a module that
// does not say how many symbols it has.
std::vector<std::string> SymbolsTaken(void* handle);

// The symbol as C++ writes it, "" for one that is not of C++.
std::string Demangled(const std::string& symbol);

// Why texts and lists cannot cross between this program and a module that takes these symbols: it was built with another
// std::string, another mode of the C++ library, or another C++ library. In words that say what to build it with; "" when the
// symbols do not prove that. Symbols of both kinds prove nothing: a library inside the module may have been built
// differently from the module itself.
std::string LibraryMismatch(const std::vector<std::string>& symbols);

// The same for the one symbol without which the loader did not load a module. `loaderMessage` is what dlerror returned.
std::string LibraryMismatchIn(const std::string& loaderMessage);

}  // namespace devhost

#endif
