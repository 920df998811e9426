// Tests that memory stays within a few times the input. Under sanitizers memory cannot be measured, so there are no tests.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/robustness/Kitchen.h"
#include "tests/robustness/Measure.h"

#ifdef MEASURES_MEMORY

namespace testsupport {
namespace {

constexpr std::size_t kMegabyte = 1000000;
constexpr std::size_t kProgram = 80 * kMegabyte;  // a generous limit for the program before it has read anything

using Words = std::vector<std::string>;

const Words kPreview = {"preview", "--project", "project.xml", "kitchen", "settings.xml"};

// The hundred megabytes are read once, which takes a fraction of a second.
TEST(AHundredMegabytesInOneLine, AreCheckedInNotMuchMoreMemory) {
  const Kitchen kitchen;
  WriteRepeated(kitchen.Path("snmpd.conf"), "", "rocommunity ", 100 * kMegabyte / 12, "");
  const Measured run = Measure({"check", "snmpd.conf"}, kitchen.Path());
  EXPECT_LE(run.status, 1) << run.output;
  EXPECT_LT(run.peak, kProgram + 150 * kMegabyte);
}

TEST(TwentyMegabytesOfSettings, AreJudgedInAFewTimesTheirMemory) {
  const Kitchen kitchen;
  WriteRepeated(kitchen.Path("settings.xml"), std::string(Kitchen::kSettingsHead) + "<snmpSysNameSetting>", "x",
                20 * kMegabyte, std::string("</snmpSysNameSetting>") + Kitchen::kSettingsTail);
  const Measured run = Measure({"advise", "settings.xml"}, kitchen.Path());
  EXPECT_EQ(run.status, 1) << run.output.substr(0, 1000);
  EXPECT_LT(run.peak, kProgram + 120 * kMegabyte);
}

TEST(AHundredMegabytesOfAScript, ArePlayedInAFewTimesTheirMemory) {
  const Kitchen kitchen;
  WriteRepeated(kitchen.Path("script"), "print ", "x", 100 * kMegabyte, "");
  const Measured run = Measure({"run", "script"}, kitchen.Path());
  EXPECT_EQ(run.status, 0);
  EXPECT_LT(run.peak, kProgram + 600 * kMegabyte);
}

TEST(AHundredMegabytesThatAreNotAState, AreRefusedInNotMuchMoreMemory) {
  const Kitchen kitchen;
  kitchen.Write("states/lock", "");
  WriteRepeated(kitchen.Path("states/driver-1.xml"), "", std::string("\0", 1), 100 * kMegabyte, "");
  const Measured run = Measure({"run", "--state", "states"}, kitchen.Path());
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.output.find("driver-1.xml:1:1: the state is damaged"), std::string::npos) << run.output;
  EXPECT_LT(run.peak, kProgram + 150 * kMegabyte);
}

TEST(LineFeedsInASetting, TakeAFewTimesTheirMemory) {
  const Kitchen kitchen;
  WriteRepeated(kitchen.Path("settings.xml"), std::string(Kitchen::kSettingsHead) + "<snmpSysNameSetting>", "\n",
                2 * kMegabyte, std::string("</snmpSysNameSetting>") + Kitchen::kSettingsTail);
  EXPECT_LT(Measure({"advise", "settings.xml"}, kitchen.Path()).peak, kProgram + 30 * kMegabyte);
}

TEST(OptionsInOneLine, TakeAFewTimesTheirMemoryWhereTheyAreMasked) {
  const Kitchen kitchen;
  WriteRepeated(kitchen.Conf(), "trapsess ", "-a x ", kMegabyte, Kitchen::kSection);
  EXPECT_LT(Measure(kPreview, kitchen.Path()).peak, kProgram);
}

TEST(UsersInOneLine, TakeAFewTimesTheirMemoryWhereTheyAreMasked) {
  const Kitchen kitchen;
  WriteRepeated(kitchen.Conf(), "", "createUser ", kMegabyte / 2, Kitchen::kSection);
  EXPECT_LT(Measure(kPreview, kitchen.Path()).peak, kProgram);
}

}  // namespace
}  // namespace testsupport

#endif
