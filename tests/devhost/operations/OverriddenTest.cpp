#include "devhost/operations/Overridden.h"

#include <gmock/gmock.h>

namespace devhost {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

const std::string kSection =
    "# Halvoren Section Start\n"
    "rocommunity  hidden\n"
    "rocommunity  hidden 192.0.2.0/24\n"
    "sysName  kitchen\n"
    "# Halvoren Section End\n"
    "#\n"
    "###########################################################################\n"
    "\n";

TEST(ALineThatOverridesTheSection, IsFoundBelowIt) {
  EXPECT_THAT(OverridingLines(kSection + "sysname elsewhere\nview all included .1\n", "f.conf", false),
              ElementsAre(AllOf(Field(&Finding::rule, "overrides-section"), Field(&Finding::line, 9U),
                                Field(&Finding::file, "f.conf"))));
}

TEST(ALineThatOverridesTheSection, IsNotOneOfTheSection) {
  EXPECT_THAT(OverridingLines(kSection, "f.conf", false), IsEmpty());
}

TEST(ALineThatOverridesTheSection, MayLoseItsOwnRestriction) {
  EXPECT_THAT(OverridingLines(kSection + "rocommunity hidden 192.0.2.0/24\n", "f.conf", false),
              ElementsAre(AllOf(Field(&Finding::rule, "first-community-wins"), Field(&Finding::line, 9U),
                                Field(&Finding::reason, Not(HasSubstr("hidden"))))));
}

}  // namespace
}  // namespace devhost
