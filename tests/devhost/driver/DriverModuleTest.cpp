#include "devhost/driver/DriverModule.h"

#include <dlfcn.h>
#include <gmock/gmock.h>

#include "tests/devhost/support/TestModules.h"

namespace devhost {
namespace {

using testing::AllOf;
using testing::HasSubstr;

std::string ErrorOf(const std::string& path) {
  try {
    const DriverModule module(path);
  } catch (const ModuleError& error) {
    return error.what();
  }
  return "";
}

TEST(ADriverModule, IsLoadedForAsLongAsItLives) {
  {
    const DriverModule module(TestModule("well_behaved"));
    EXPECT_STREQ(module.Version(), "1.2.3.4");
    EXPECT_TRUE(module.Contains(module.Version()));
    EXPECT_FALSE(module.Contains(reinterpret_cast<const void*>(&ErrorOf)));
    EXPECT_FALSE(module.Contains(nullptr));
    EXPECT_EQ(ModuleFileOf(module.Version()), TestModule("well_behaved"));
    EXPECT_TRUE(IsInProcess("well_behaved"));
  }
  EXPECT_FALSE(IsInProcess("well_behaved"));
}

TEST(ADriverModule, KeepsItsSymbolsToItself) {
  const DriverModule module(TestModule("well_behaved"));
  EXPECT_EQ(dlsym(RTLD_DEFAULT, "GetCreationFunc"), nullptr);
}

TEST(AMissingModule, IsNamed) {
  EXPECT_EQ(ErrorOf("/nowhere/x.so"), "module \"/nowhere/x.so\" cannot be loaded: No such file or directory");
}

TEST(AModuleWithoutAFolder, IsNotSearchedFor) {
  EXPECT_THAT(ErrorOf("libc.so.6"), HasSubstr("No such file"));
}

TEST(AFolder, IsNoModule) {
  EXPECT_THAT(ErrorOf("/tmp"), HasSubstr("it is not a file"));
}

TEST(ATextFile, IsNoModule) {
  EXPECT_THAT(ErrorOf("/etc/passwd"), AllOf(HasSubstr("\"/etc/passwd\" cannot be loaded"), HasSubstr("ELF")));
}

TEST(AModuleWithAnOpenSymbol, IsRefusedWithTheSymbolsName) {
  EXPECT_THAT(ErrorOf(TestModule("unresolved")), AllOf(HasSubstr("undefined symbol"), HasSubstr("NobodyOffersThis")));
  EXPECT_FALSE(IsInProcess("unresolved"));
}

TEST(AModuleWithoutAnExport, IsRefusedWithTheExportsName) {
  EXPECT_THAT(ErrorOf(TestModule("no_factory")),
              HasSubstr("is not a driver module: it does not export \"GetCreationFunc\""));
  EXPECT_THAT(ErrorOf(TestModule("no_version")), HasSubstr("is not a driver module: it does not export \"versionString\""));
  EXPECT_FALSE(IsInProcess("no_factory"));
  EXPECT_FALSE(IsInProcess("no_version"));
}

}  // namespace
}  // namespace devhost
