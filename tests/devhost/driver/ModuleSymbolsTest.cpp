#include "devhost/driver/ModuleSymbols.h"

#include <dlfcn.h>
#include <gmock/gmock.h>

#include "devhost/driver/DriverModule.h"
#include "tests/devhost/support/TestModules.h"

namespace devhost {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

constexpr char kOldAppend[] = "_ZNSs6appendEPKcm";
constexpr char kOldDestructor[] = "_ZNSsD1Ev";
constexpr char kOldList[] = "_ZN5H7XML13CreateXmlNodeERKSsS1_";
constexpr char kNewAppend[] = "_ZNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEE9_M_appendEPKcm";
[[maybe_unused]] constexpr char kChecked[] = "_ZN11__gnu_debug19_Safe_sequence_base13_M_detach_allEv";
constexpr char kOtherLibrary[] = "_ZNSt3__112basic_stringIcNS_11char_traitsIcEENS_9allocatorIcEEE6appendEPKc";

// What keeps a module from being loaded; "" for nothing.
std::string ErrorOf(const std::string& module) {
  try {
    const DriverModule loaded(TestModule(module));
  } catch (const ModuleError& error) {
    return error.what();
  }
  return "";
}

TEST(TheSymbolsThatAModuleTakes, AreThoseThatItDoesNotHold) {
  void* const handle = dlopen(TestModule("well_behaved").c_str(), RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(handle, nullptr);
  const std::vector<std::string> taken = SymbolsTaken(handle);
  EXPECT_THAT(taken, Contains(HasSubstr("LogXMessage")));
  EXPECT_THAT(taken, Not(Contains("GetCreationFunc")));
  EXPECT_EQ(LibraryMismatch(taken), "");
  dlclose(handle);
}

TEST(TheSymbolsOfAModule, ProveTheOldString) {
  EXPECT_THAT(LibraryMismatch({"memcpy", kOldAppend}), HasSubstr("_GLIBCXX_USE_CXX11_ABI=0"));
  EXPECT_THAT(LibraryMismatch({kOldDestructor}), HasSubstr("_GLIBCXX_USE_CXX11_ABI=0"));
}

TEST(TheSymbolsOfAModule, ProveNothingWhenThereAreBothStrings) {
  EXPECT_EQ(LibraryMismatch({kOldAppend, kNewAppend}), "");
}

TEST(TheSymbolsOfAModule, ProveNothingWithoutStrings) {
  EXPECT_EQ(LibraryMismatch({"memcpy", "_ZNSt9basic_iosIcSt11char_traitsIcEE4initEPSt15basic_streambufIcS1_E",
                             "_ZNSt15basic_streambufIcSt11char_traitsIcEE4syncEv", "GetCreationFunc", ""}),
            "");
}

TEST(TheSymbolsOfAModule, ProveAnotherLibrary) {
  EXPECT_THAT(LibraryMismatch({kOtherLibrary}), HasSubstr("libc++"));
  EXPECT_EQ(LibraryMismatch({kOtherLibrary, kNewAppend}), "");
}

#ifndef _GLIBCXX_DEBUG
TEST(TheSymbolsOfAModule, ProveTheCheckedLibrary) {
  EXPECT_THAT(LibraryMismatch({kNewAppend, kChecked}), HasSubstr("-D_GLIBCXX_DEBUG"));
}

TEST(AModuleOfTheCheckedLibrary, IsRefused) {
  EXPECT_THAT(ErrorOf("checked_library"), HasSubstr("cannot be loaded: it was built with the checked standard library"));
  EXPECT_FALSE(IsInProcess("checked_library"));
}
#endif

TEST(TheSymbolThatTheLoaderMisses, ProvesTheOldString) {
  EXPECT_THAT(LibraryMismatchIn(std::string("undefined symbol: ") + kOldList), HasSubstr("_GLIBCXX_USE_CXX11_ABI=0"));
  EXPECT_THAT(LibraryMismatchIn(std::string("undefined symbol: ") + kOldList + ", version X"),
              HasSubstr("_GLIBCXX_USE_CXX11_ABI=0"));
  EXPECT_EQ(LibraryMismatchIn("undefined symbol: NobodyOffersThis"), "");
  EXPECT_EQ(LibraryMismatchIn("invalid ELF header"), "");
}

TEST(AModuleOfTheOldString, IsRefusedThoughTheLoaderTakesIt) {
  EXPECT_THAT(ErrorOf("old_string"), HasSubstr("cannot be loaded: it was built with the old std::string"));
  EXPECT_FALSE(IsInProcess("old_string"));
}

TEST(AModuleOfTheOldString, IsRefusedInWordsWhenItPassesATextToTheHost) {
  EXPECT_THAT(ErrorOf("old_border"), testing::AllOf(HasSubstr("it was built with the old std::string"),
                                                    HasSubstr("(undefined symbol: _ZN5H7XML13CreateXmlNode")));
}

}  // namespace
}  // namespace devhost
