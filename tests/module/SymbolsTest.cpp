// Tests which symbols the built module exports and which it takes.

#include <cxxabi.h>
#include <dlfcn.h>
#include <gmock/gmock.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>

#include "agent/ISNMPConfigurationAgent.h"
#include "devhost/driver/DriverModule.h"
#include "devhost/driver/ModuleNote.h"
#include "host/H7BaseAgentDriver.h"
#include "host/H7XML.h"
#include "tests/module/Shell.h"
#include "tests/support/RecordingHost.h"
#include "tests/support/ScratchFolder.h"

namespace {

using testing::AnyOf;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

using Names = std::set<std::string>;
using Symbols = std::multimap<std::string, std::string>;

std::string Demangled(const std::string& name) {
  int status = 0;
  const std::unique_ptr<char, void (*)(void*)> text(abi::__cxa_demangle(name.c_str(), nullptr, nullptr, &status), std::free);
  return status == 0 ? text.get() : name;
}

// Returns the demangled dynamic symbols of the module that `option` selects. Each has its version, which a run-time library
// has added behind a "@". Several versions of one symbol are several entries.
Symbols SymbolsOf(const std::string& module, const std::string& option) {
  const ShellResult nm = RunInShell("nm --dynamic --format=posix " + option + " '" + module + "'");
  EXPECT_EQ(nm.status, 0) << "nm (package binutils) cannot list the symbols of the module: " << nm.output;
  Symbols symbols;
  std::istringstream lines(nm.output);
  for (std::string line; std::getline(lines, line);) {
    const std::string name = line.substr(0, line.find(' '));
    const std::size_t at = name.find('@');
    symbols.emplace(Demangled(name.substr(0, at)), at == std::string::npos ? "" : name.substr(name.find_last_of('@') + 1));
  }
  return symbols;
}

Names Listed(const std::string& file) {
  std::istringstream lines(testsupport::ScratchFolder::ReadFile(MODULE_DATA_FOLDER "/" + file));
  Names names;
  for (std::string line; std::getline(lines, line);) {
    names.insert(line);
  }
  return names;
}

bool BeginsWith(const std::string& text, const char* start) {
  return text.compare(0, std::strlen(start), start) == 0;
}

// Returns whether compilers, sanitizers or coverage put the symbol into every module.
bool IsFromTheBuild(const std::string& name) {
  static const char* const kWeak[] = {"_ITM_deregisterTMCloneTable", "_ITM_registerTMCloneTable", "__gmon_start__"};
  for (const char* weak : kWeak) {
    if (name == weak) {
      return true;
    }
  }
  for (const char* start : {"__asan_", "__ubsan_", "__sanitizer_", "__sancov_", "__gcov_"}) {
    if (BeginsWith(name, start)) {
      return true;
    }
  }
  return false;
}

// The undefined-behaviour sanitizer looks at the types of objects, so only it needs the type of the base's base.
bool IsUnderSanitizer() {
  for (const auto& symbol : SymbolsOf(AGENT_MODULE, "--undefined-only")) {
    if (BeginsWith(symbol.first, "__ubsan_")) {
      return true;
    }
  }
  return false;
}

// The names stand in the files exports.txt and imports.txt, one demangled name on each line, sorted. After a change that
// hosts have agreed to, replace the file with the actual list that the failed test prints.
TEST(TheModulesSymbols, ThatItExportsAreThoseOfTheList) {
  Names exported;
  for (const auto& symbol : SymbolsOf(AGENT_MODULE, "--defined-only")) {
    exported.insert(symbol.first);
    EXPECT_EQ(symbol.second, "") << symbol.first;
  }
  EXPECT_EQ(exported, Listed("exports.txt"));
}

// The symbols of the run-time libraries have versions. The host must offer those without a version.
TEST(TheModulesSymbols, ThatItTakesFromTheHostAreThoseOfTheList) {
  Names host;
  for (const auto& symbol : SymbolsOf(AGENT_MODULE, "--undefined-only")) {
    if (symbol.second.empty() && !IsFromTheBuild(symbol.first)) {
      host.insert(symbol.first);
    }
  }
  if (host.count("typeinfo for H7BaseDriver") != 0 && IsUnderSanitizer()) {
    host.erase("typeinfo for H7BaseDriver");
  }
  EXPECT_EQ(host, Listed("imports.txt"));
}

TEST(TheModulesSymbols, ThatItTakesFromElsewhereAreThoseOfTheRunTimeLibraries) {
  for (const auto& symbol : SymbolsOf(AGENT_MODULE, "--undefined-only")) {
    EXPECT_THAT(symbol.second,
                AnyOf("", StartsWith("GLIBC_"), StartsWith("GLIBCXX_"), StartsWith("CXXABI_"), StartsWith("GCC_")))
        << symbol.first;
  }
}

// Checks the library of each "needed" entry of the module.
TEST(TheModule, NeedsTheRunTimeLibrariesAndNoOther) {
  const ShellResult readelf = RunInShell("readelf --dynamic --wide '" AGENT_MODULE "'");
  ASSERT_EQ(readelf.status, 0) << readelf.output;
  const std::string mark = "Shared library: [";
  std::size_t count = 0;
  for (std::size_t at = readelf.output.find(mark); at != std::string::npos; at = readelf.output.find(mark, at + 1)) {
    const std::size_t start = at + mark.size();
    const std::string library = readelf.output.substr(start, readelf.output.find(']', start) - start);
    EXPECT_THAT(library, AnyOf(StartsWith("libstdc++.so."), StartsWith("libgcc_s.so."), StartsWith("libm.so."),
                               StartsWith("libc.so."), StartsWith("ld-linux")));
    ++count;
  }
  EXPECT_GE(count, 2U);
  EXPECT_THAT(readelf.output, Not(HasSubstr("RPATH")));
  EXPECT_THAT(readelf.output, Not(HasSubstr("RUNPATH")));
  EXPECT_THAT(readelf.output, Not(HasSubstr("TEXTREL")));
}

TEST(TheModulesSymbols, NameNothingFromInsideTheDevelopmentHost) {
  for (const auto& symbol : SymbolsOf(AGENT_MODULE, "")) {
    EXPECT_THAT(symbol.first, Not(HasSubstr("devhost")));
    EXPECT_THAT(symbol.first, Not(HasSubstr("pugi")));
  }
}

TEST(TheModule, BindsAllItsSymbolsAtOnceAndGivesNoneToOthers) {
  void* const module = dlopen(AGENT_MODULE, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(module, nullptr) << dlerror();
  EXPECT_NE(dlsym(module, "GetCreationFunc"), nullptr);
  EXPECT_EQ(dlsym(RTLD_DEFAULT, "GetCreationFunc"), nullptr);
  const void* const version = dlsym(module, "versionString");
  ASSERT_NE(version, nullptr);
  EXPECT_STREQ(*static_cast<const char* const*>(version), "1.0.0.0");
  dlclose(module);
  EXPECT_EQ(dlopen(AGENT_MODULE, RTLD_NOW | RTLD_NOLOAD), nullptr);
}

TEST(TheModulesNote, StatesTheExportedVersionAndTheEnterpriseNumber) {
  const devhost::ModuleNote note = devhost::ReadModuleNote(testsupport::ScratchFolder::ReadFile(AGENT_MODULE), "the module");
  EXPECT_EQ(note.version, devhost::DriverModule(AGENT_MODULE).Version());
  EXPECT_EQ(note.enterpriseNumber, SNMP_ENTERPRISE_NUMBER);
}

TEST(TheModulesFactory, ReturnsTheDriverViewWhichIsNotTheFirstAddress) {
  Journal journal;
  const devhost::DriverModule module(AGENT_MODULE);
  RecordingHost host(journal);
  IDriver* const driver = module.CreateDriver(host.Instances());
  ASSERT_NE(driver, nullptr);
  const char* const first = static_cast<const char*>(dynamic_cast<void*>(driver));
  EXPECT_EQ(static_cast<void*>(driver), first + sizeof(H7BaseDriver));
  EXPECT_EQ(static_cast<void*>(dynamic_cast<H7BaseDriver*>(driver)), first);
  EXPECT_TRUE(module.Contains(*static_cast<void* const*>(static_cast<const void*>(first))));
  const h7::auto_com<H7XML::INode> config = H7XML::CreateXmlNode("config", "");
  driver->Initialize(3, *config, nullptr);
  EXPECT_EQ(host.Published(ISNMPConfigurationAgent_IID), first + sizeof(H7BaseAgentDriver));
  EXPECT_EQ(host.Listeners().at(0).callback, static_cast<const void*>(first + sizeof(H7BaseAgentDriver) + sizeof(void*)));
  delete driver;
  EXPECT_THAT(journal.Calls(), Contains("BaseDestroyed"));
}

}  // namespace
