// Group "module": what can be said of the file of a driver before it has made a driver.
#include <dlfcn.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "devhost/conform/Bench.h"
#include "devhost/conform/Check.h"
#include "devhost/conform/Trial.h"
#include "devhost/driver/DriverModule.h"
#include "devhost/driver/ModuleSymbols.h"
#include "devhost/driver/ModuleTables.h"
#include "devhost/system/FileText.h"
#include "devhost/text/Words.h"
#include "host/LogXMessage.h"

namespace devhost {

namespace {

constexpr std::size_t kMostNamed = 3;

// Some of the symbols, as their authors have written them.
std::string Listed(const std::vector<std::string>& symbols) {
  std::string list;
  for (std::size_t i = 0; i != std::min(symbols.size(), kMostNamed); ++i) {
    const std::string name = Demangled(symbols[i]);
    list += (list.empty() ? "" : ", ") + Quoted(name.empty() ? symbols[i] : name);
  }
  return list + (symbols.size() > kMostNamed ? " and " + std::to_string(symbols.size() - kMostNamed) + " more" : "");
}

ModuleTables TablesOf(const Trial& trial) {
  try {
    return ReadModuleTables(ReadRegularFile(trial.module), trial.module);
  } catch (const ModuleError& error) {
    throw Violation(error.what());
  }
}

// The libraries that a module is linked with, loaded: the same that the loader takes for it.
std::vector<void*> OpenLibraries(const ModuleTables& tables) {
  std::vector<void*> libraries;
  for (const std::string& name : tables.libraries) {
    void* const library = ::dlopen(name.c_str(), RTLD_LAZY | RTLD_LOCAL);
    Expect(library != nullptr, "it is linked with " + Quoted(name) + ", which cannot be loaded here");
    libraries.push_back(library);
  }
  return libraries;
}

// Whether a host offers it: this one, but not what only this one consists of.
bool IsOfHost(const std::string& symbol) {
  void* const place = ::dlsym(RTLD_DEFAULT, symbol.c_str());
  const std::string file = place != nullptr ? ModuleFileOf(place) : "";
  const bool isInHost = file == ModuleFileOf(reinterpret_cast<const void*>(&LogXMessage)) ||
                        file == std::filesystem::read_symlink("/proc/self/exe");
  return isInHost && Demangled(symbol).find("devhost::") == std::string::npos;
}

void NeedsNothingElse(Trial& trial) {
  const ModuleTables tables = TablesOf(trial);
  const std::string mismatch = LibraryMismatch(tables.taken);
  Expect(mismatch.empty(), mismatch);
  const std::vector<void*> libraries = OpenLibraries(tables);
  std::vector<std::string> missing;
  std::copy_if(tables.taken.begin(), tables.taken.end(), std::back_inserter(missing), [&](const std::string& symbol) {
    return !IsOfHost(symbol) && std::none_of(libraries.begin(), libraries.end(),
                                             [&](void* library) { return ::dlsym(library, symbol.c_str()) != nullptr; });
  });
  Expect(missing.empty(),
         "it takes " + Listed(missing) + ", which neither hosts nor the libraries that it is linked with offer");
}

void Loads(Trial& trial) {
  try {
    NeedsNothingElse(trial);
  } catch (const Violation&) {
    throw Blocked("it cannot be loaded: see module-needs");
  }
  trial.trail.Note("loading");
  try {
    const DriverModule module(trial.module);
  } catch (const ModuleError& error) {
    throw Violation(error.what());
  }
}

void ExportsNothingElse(Trial& trial) {
  const ModuleTables tables = TablesOf(trial);
  std::vector<std::string> others;
  std::copy_if(tables.offered.begin(), tables.offered.end(), std::back_inserter(others), [](const std::string& symbol) {
    // Names with a _ in front are those of compilers and linkers, but for C++.
    return symbol != "GetCreationFunc" && symbol != "versionString" && (symbol[0] != '_' || StartsWith(symbol, "_Z"));
  });
  Expect(others.empty(), "it exports " + Listed(others) + "; allowed: GetCreationFunc and versionString");
}

void Unloads(Trial& trial) {
  {
    Bench bench(trial);
    bench.Load();
    bench.Stop();
  }
  std::ifstream maps("/proc/self/maps");
  const std::string text((std::istreambuf_iterator<char>(maps)), std::istreambuf_iterator<char>());
  Expect(text.find(std::filesystem::canonical(trial.module).string()) == std::string::npos,
         "the module is still in memory after its driver is gone");
}

// The best of some times, since the machine may be busy.
void LoadsSoon(Trial& trial) {
  using Clock = std::chrono::steady_clock;
  constexpr std::chrono::milliseconds kMost(500);
  Clock::duration best = Clock::duration::max();
  for (int i = 0; i != 3 && best > kMost; ++i) {
    const Clock::time_point start = Clock::now();
    const DriverModule module(trial.module);
    best = std::min(best, Clock::now() - start);
  }
  Expect(best <= kMost, "loading the module takes " +
                            std::to_string(std::chrono::duration_cast<std::chrono::milliseconds>(best).count()) +
                            " milliseconds; allowed: 500");
}

}  // namespace

std::vector<Check> ModuleChecks() {
  return {
      {"module-needs", Severity::Contract, Level::Basic, "",
       "The module takes symbols of hosts and of the libraries that it is linked with, and has the host's std::string.",
       "A host binds all symbols of a module when it loads it, and offers nothing but what the headers of host/ declare.\n"
       "Texts and lists cross the border, so module and host need the same C++ library, the same std::string and the same\n"
       "std::vector. While a module fails at this check, only checks of its file are made.",
       &NeedsNothingElse},
      {"module-loads", Severity::Contract, Level::Basic, "",
       "The module loads with all its symbols bound, and exports GetCreationFunc and versionString.",
       "IDriver.h says what a host looks for in a module. The version is a text, not a null pointer. While a module fails "
       "at\n"
       "this check, only checks of its file are made.",
       &Loads},
      {"module-exports", Severity::Practice, Level::Basic, "",
       "The module exports GetCreationFunc and versionString, and nothing else.",
       "A symbol that is exported may be taken for one of the same name in another module. snmp_driver() in the kit hides\n"
       "the others; without it, link with -fvisibility=hidden and the kit's driver_module.map.",
       &ExportsNothingElse},
      {"module-unloads", Severity::Practice, Level::Full, "", "The module leaves the memory when its driver is gone.",
       "A new version of the driver is loaded without a restart of the host. A module stays when it is linked with\n"
       "-z nodelete, or has symbols that are unique in the process (static variables in inline functions and templates).",
       &Unloads},
      {"module-load-time", Severity::Practice, Level::Full, "", "The module loads in half a second.",
       "The host does nothing else meanwhile. Start what takes long in Initialize.", &LoadsSoon}};
}

}  // namespace devhost
