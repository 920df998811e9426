#include "devhost/engine/DriverCode.h"

#include <gtest/gtest.h>

#include <optional>

#include "tests/devhost/support/TestModules.h"

namespace devhost {
namespace {

std::string NameOf(const void* code, std::size_t size = 300) {
  std::string name(size, 'x');
  DriverCode::Name(code, name.data(), name.size());
  return name.c_str();
}

TEST(TheCodeOfADriver, IsFoundByItsAddress) {
  EXPECT_FALSE(DriverCode::IsLoaded());
  const DriverModule module(TestModule("well_behaved"));
  const DriverModule other(TestModule("rude"));
  const void* const inside = module.Version();
  {
    const DriverCode code(module, "driver 7 \"kitchen\"");
    const DriverCode otherCode(other, "driver 8 \"cellar\"");
    EXPECT_TRUE(DriverCode::IsLoaded());
    EXPECT_EQ(NameOf(inside), "driver 7 \"kitchen\"");
    EXPECT_EQ(NameOf(other.Version()), "driver 8 \"cellar\"");
    EXPECT_EQ(NameOf(reinterpret_cast<const void*>(&NameOf)), "");
    EXPECT_EQ(NameOf(nullptr), "");
  }
  EXPECT_EQ(NameOf(inside), "");
  EXPECT_FALSE(DriverCode::IsLoaded());
}

TEST(TheCodeOfADriver, IsNamedByItsModuleWhenDriversShareIt) {
  const DriverModule module(TestModule("well_behaved"));
  const DriverCode code(module, "driver 7 \"kitchen\"");
  std::optional<DriverCode> second(std::in_place, module, "driver 8 \"cellar\"");
  EXPECT_EQ(NameOf(module.Version()), "one of the drivers of module \"" + TestModule("well_behaved") + "\"");
  second.reset();
  EXPECT_EQ(NameOf(module.Version()), "driver 7 \"kitchen\"");
}

TEST(TheCodeOfADriver, HasANameThatIsCutToItsRoom) {
  const DriverModule module(TestModule("well_behaved"));
  const DriverCode code(module, "driver 7 \"kitchen\"");
  EXPECT_EQ(NameOf(module.Version(), 7), "driver");
}

TEST(TheCodeOfADriver, IsNoneForADriverOfTheProgram) {
  const DriverModule module([](IInstanceManager&) { return nullptr; });
  const DriverCode code(module, "driver 7 \"kitchen\"");
  EXPECT_FALSE(DriverCode::IsLoaded());
  EXPECT_EQ(NameOf(nullptr), "");
}

}  // namespace
}  // namespace devhost
