#ifndef DEVHOST_DRIVER_DRIVER_MODULE_H
#define DEVHOST_DRIVER_DRIVER_MODULE_H

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>

#include "host/IDriver.h"

namespace devhost {

// A module that cannot be loaded; the text names it and says why, in one line.
class ModuleError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The module that holds an address: looked up once, to be compared with many.
class CodePlace {
 public:
  explicit CodePlace(const void* code);
  bool IsIn(const void* moduleBase) const { return m_base != nullptr && m_base == moduleBase; }

 private:
  const void* m_base;  // where the module begins; null when the address is in none
};

// The addresses that a module takes up in the process.
class CodeRange {
 public:
  CodeRange() = default;
  CodeRange(std::uintptr_t begin, std::uintptr_t end) : m_begin(begin), m_end(end) {}

  bool IsEmpty() const { return m_begin == m_end; }
  bool Holds(const void* code) const {
    const auto address = reinterpret_cast<std::uintptr_t>(code);
    return m_begin <= address && address < m_end;
  }

 private:
  std::uintptr_t m_begin = 0;
  std::uintptr_t m_end = 0;
};

// Makes a driver that is part of the program, as a module's `DriverCreationFunc` makes one. What it captures outlives the
// driver.
using DriverFactory = std::function<IDriver*(IInstanceManager&)>;

// A driver module in this process, loaded with all its symbols bound and none of its own given to others; or a driver of the
// program itself in place of one.
class DriverModule {
 public:
  // Throws ModuleError, with nothing left loaded. A path without a slash is taken from the current directory, never
  // searched.
  explicit DriverModule(const std::string& path);
  // For a driver of the program. No code counts as this module's, because the program's code is the host's, too.
  explicit DriverModule(DriverFactory create) : m_create(std::move(create)) {}
  // Unloads it. Nothing of the module's may be in use any more.
  ~DriverModule();
  DriverModule(const DriverModule&) = delete;
  DriverModule& operator=(const DriverModule&) = delete;

  // "" for a driver of the program.
  const std::string& Path() const { return m_path; }
  // The text behind the module's `versionString`, which goes with the module; null for a driver of the program.
  const char* Version() const { return m_version; }
  // Makes a driver; what the module throws passes through. Null when the module returned none.
  IDriver* CreateDriver(IInstanceManager& instanceManager) const;
  // Whether the address lies in this module.
  bool Contains(const void* code) const { return Contains(CodePlace(code)); }
  bool Contains(const CodePlace& code) const { return code.IsIn(m_base); }
  // Empty for a driver of the program.
  CodeRange Range() const { return m_range; }

 private:
  void Open();
  void* RequiredSymbol(const char* name) const;

  const DriverFactory m_create;  // null for a module that was loaded
  std::string m_path;
  void* m_handle = nullptr;
  const void* m_base = nullptr;
  CodeRange m_range;
  GetCreationFuncFunc m_getCreationFunc = nullptr;
  const char* m_version = nullptr;
};

// The file of the module or program that holds the address; "" when none does.
std::string ModuleFileOf(const void* code);

}  // namespace devhost

#endif
