#include "devhost/driver/DriverModule.h"

#include <dlfcn.h>
#include <link.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>

#include "devhost/driver/ModuleSymbols.h"

namespace devhost {
namespace {

// The loaded object that holds the address, by the address where it begins; null when there is none.
const void* BaseOf(const void* code) {
  Dl_info info;
  return code != nullptr && dladdr(code, &info) != 0 ? info.dli_fbase : nullptr;
}

// A module that the loader has mapped, and the address that says which one it is.
struct Mapped {
  const void* address;
  CodeRange range;
};

int TakeRange(dl_phdr_info* info, std::size_t, void* mapped) {
  std::uintptr_t begin = UINTPTR_MAX;
  std::uintptr_t end = 0;
  for (const ElfW(Phdr)* segment = info->dlpi_phdr; segment != info->dlpi_phdr + info->dlpi_phnum; ++segment) {
    if (segment->p_type == PT_LOAD) {
      begin = std::min<std::uintptr_t>(begin, info->dlpi_addr + segment->p_vaddr);
      end = std::max<std::uintptr_t>(end, info->dlpi_addr + segment->p_vaddr + segment->p_memsz);
    }
  }
  const CodeRange range(std::min(begin, end), end);
  Mapped& wanted = *static_cast<Mapped*>(mapped);
  if (!range.Holds(wanted.address)) {
    return 0;
  }
  wanted.range = range;
  return 1;
}

CodeRange RangeOf(const void* address) {
  Mapped mapped{address, {}};
  dl_iterate_phdr(&TakeRange, &mapped);
  return mapped.range;
}

void CheckIsFile(const std::string& path) {
  struct stat status;
  if (stat(path.c_str(), &status) != 0) {
    throw ModuleError("module \"" + path + "\" cannot be loaded: " + std::strerror(errno));
  }
  if (!S_ISREG(status.st_mode)) {
    throw ModuleError("module \"" + path + "\" cannot be loaded: it is not a file");
  }
}

// What the loader says begins with the path, which the message names anyway.
std::string LoaderMessage(const std::string& path) {
  const char* const text = dlerror();
  std::string message = text != nullptr ? text : "unknown reason";
  if (message.compare(0, path.size() + 2, path + ": ") == 0) {
    message.erase(0, path.size() + 2);
  }
  return message;
}

}  // namespace

CodePlace::CodePlace(const void* code) : m_base(BaseOf(code)) {}

DriverModule::DriverModule(const std::string& path) : m_path(path.find('/') == std::string::npos ? "./" + path : path) {
  CheckIsFile(m_path);
  m_handle = dlopen(m_path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (m_handle == nullptr) {
    const std::string message = LoaderMessage(m_path);
    const std::string mismatch = LibraryMismatchIn(message);
    throw ModuleError("module \"" + m_path +
                      "\" cannot be loaded: " + (mismatch.empty() ? message : mismatch + " (" + message + ")"));
  }
  try {
    Open();
  } catch (...) {
    dlclose(m_handle);
    throw;
  }
}

DriverModule::~DriverModule() {
  if (m_handle != nullptr) {
    dlclose(m_handle);
  }
}

void DriverModule::Open() {
  const std::string mismatch = LibraryMismatch(SymbolsTaken(m_handle));
  if (!mismatch.empty()) {
    throw ModuleError("module \"" + m_path + "\" cannot be loaded: " + mismatch);
  }
  void* const function = RequiredSymbol("GetCreationFunc");
  const void* const version = RequiredSymbol("versionString");
  // The one conversion from a data to a function pointer that POSIX defines is through the pointer's bytes.
  static_assert(sizeof function == sizeof m_getCreationFunc, "object and function pointers have one size here");
  std::memcpy(&m_getCreationFunc, &function, sizeof function);
  m_version = *static_cast<const char* const*>(version);
  if (m_version == nullptr) {
    throw ModuleError("module \"" + m_path + "\" is not a driver module: its \"versionString\" is null");
  }
  m_base = BaseOf(function);
  m_range = RangeOf(function);
}

void* DriverModule::RequiredSymbol(const char* name) const {
  void* const symbol = dlsym(m_handle, name);
  if (symbol == nullptr) {
    throw ModuleError("module \"" + m_path + "\" is not a driver module: it does not export \"" + name + "\"");
  }
  return symbol;
}

IDriver* DriverModule::CreateDriver(IInstanceManager& instanceManager) const {
  if (m_create) {
    return m_create(instanceManager);
  }
  const DriverCreationFunc create = m_getCreationFunc();
  return create != nullptr ? create(instanceManager) : nullptr;
}

std::string ModuleFileOf(const void* code) {
  Dl_info info;
  return code != nullptr && dladdr(code, &info) != 0 && info.dli_fname != nullptr ? info.dli_fname : "";
}

}  // namespace devhost
