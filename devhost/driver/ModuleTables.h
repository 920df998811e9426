#ifndef DEVHOST_DRIVER_MODULE_TABLES_H
#define DEVHOST_DRIVER_MODULE_TABLES_H

#include <string>
#include <string_view>
#include <vector>

namespace devhost {

// What a module's file says to the loader, without being loaded.
struct ModuleTables {
  std::vector<std::string> taken;      // the symbols that it cannot be loaded without, mangled
  std::vector<std::string> offered;    // those that it exports
  std::vector<std::string> libraries;  // what it is linked with: "libstdc++.so.6", ...
};

// Reads the tables of `file`, the content of a module for a processor like this one. Throws ModuleError, which calls the
// module `name`, for anything else, and for a module without section headers, which linkers write.
ModuleTables ReadModuleTables(std::string_view file, const std::string& name);

}  // namespace devhost

#endif
