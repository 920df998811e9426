// What the built module shows and what it asks for.

#include <cxxabi.h>
#include <dlfcn.h>
#include <gmock/gmock.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <set>
#include <sstream>
#include <string>

#include "devhost/loader/DriverModule.h"
#include "devhost/xml/XmlObserver.h"
#include "host/H7BaseAgentDriver.h"
#include "tests/module/Shell.h"
#include "tests/support/RecordingHost.h"
#include "tests/support/ScratchFolder.h"

namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

using Names = std::set<std::string>;

std::string Demangled(const std::string& name) {
  int status = 0;
  const std::unique_ptr<char, void (*)(void*)> text(abi::__cxa_demangle(name.c_str(), nullptr, nullptr, &status), std::free);
  return status == 0 ? text.get() : name;
}

// The dynamic symbols of the module that `option` selects, demangled.
Names Symbols(const std::string& option) {
  const ShellResult nm = RunInShell("nm --dynamic --format=posix " + option + " '" AGENT_MODULE "'");
  EXPECT_EQ(nm.status, 0) << "nm (package binutils) cannot list the symbols of the module: " << nm.output;
  Names names;
  std::istringstream lines(nm.output);
  for (std::string line; std::getline(lines, line);) {
    names.insert(Demangled(line.substr(0, line.find_first_of(" @"))));
  }
  return names;
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

TEST(TheModulesSymbols, ThatItExportsAreThoseOfTheList) {
  EXPECT_EQ(Symbols("--defined-only"), Listed("exports.txt"));
}

// Sanitizers and the run-time libraries differ from lane to lane, what the host has to offer does not.
TEST(TheModulesSymbols, ThatItTakesFromTheHostAreThoseOfTheList) {
  Names host;
  for (const std::string& name : Symbols("--undefined-only")) {
    if (BeginsWith(name, "H7") || BeginsWith(name, "h7::") || BeginsWith(name, "LogXMessage") ||
        BeginsWith(name, "IDriver")) {
      host.insert(name);
    }
  }
  EXPECT_EQ(host, Listed("imports.txt"));
}

TEST(TheModulesSymbols, NameNothingFromInsideTheDevelopmentHost) {
  for (const std::string& name : Symbols("")) {
    EXPECT_THAT(name, Not(HasSubstr("devhost")));
    EXPECT_THAT(name, Not(HasSubstr("pugi")));
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

TEST(TheModulesFactory, ReturnsTheDriverViewWhichIsNotTheFirstAddress) {
  Journal journal;
  const devhost::DriverModule module(AGENT_MODULE);
  RecordingHost host(journal);
  IDriver* const driver = module.CreateDriver(host.Instances());
  ASSERT_NE(driver, nullptr);
  const void* const first = dynamic_cast<void*>(driver);
  EXPECT_NE(first, static_cast<void*>(driver));
  EXPECT_EQ(first, static_cast<void*>(dynamic_cast<H7BaseDriver*>(driver)));
  EXPECT_TRUE(module.Contains(*static_cast<void* const*>(first)));
  delete driver;
  EXPECT_THAT(journal.Calls(), Contains("BaseDestroyed"));
  EXPECT_EQ(devhost::LiveXmlObjects(), 0U);
}

}  // namespace
