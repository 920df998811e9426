#include "devhost/operations/Overridden.h"

#include <gmock/gmock.h>

#include "tests/support/ScratchFolder.h"

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
  EXPECT_THAT(OverridingLines(kSection + "sysname elsewhere\nview all included .1\n", "", "f.conf", false),
              ElementsAre(AllOf(Field(&Finding::rule, "overrides-section"), Field(&Finding::line, 9U),
                                Field(&Finding::file, "f.conf"))));
}

// Line 4 of the included file has the number of a line in the section.
TEST(ALineThatOverridesTheSection, IsFoundInAnIncludedFile) {
  const testsupport::ScratchFolder folder;
  const std::string part = folder.Write("part.conf", "#\n#\n#\nsysName elsewhere\nrocommunity hidden 192.0.2.0/24\n");
  const std::string text = kSection + "includeFile part.conf\n";
  EXPECT_THAT(
      OverridingLines(text, folder.Path("snmpd.conf"), "f.conf", false),
      ElementsAre(
          AllOf(Field(&Finding::rule, "overrides-section"), Field(&Finding::line, 4U), Field(&Finding::file, part)),
          AllOf(Field(&Finding::rule, "first-community-wins"), Field(&Finding::line, 5U), Field(&Finding::file, part))));
  EXPECT_THAT(OverridingLines(text, "", "f.conf", false), IsEmpty());
}

TEST(ALineThatOverridesTheSection, IsNotOneOfTheSection) {
  EXPECT_THAT(OverridingLines(kSection, "", "f.conf", false), IsEmpty());
}

TEST(ALineThatOverridesTheSection, MayLoseItsOwnRestriction) {
  EXPECT_THAT(OverridingLines(kSection + "rocommunity hidden 192.0.2.0/24\n", "", "f.conf", false),
              ElementsAre(AllOf(Field(&Finding::rule, "first-community-wins"), Field(&Finding::line, 9U),
                                Field(&Finding::reason, Not(HasSubstr("hidden"))))));
}

TEST(ALineThatOverridesTheSection, MayBeOneThatLosesToIt) {
  std::string text = kSection;
  text.insert(text.find("sysName"), "includeAllDisks  10%\n");
  EXPECT_THAT(OverridingLines(text + "includeAllDisks  10%\nincludeAllDisks 5%\n", "", "f.conf", false),
              ElementsAre(AllOf(Field(&Finding::rule, "first-disk-line-wins"), Field(&Finding::line, 11U),
                                Field(&Finding::reason, HasSubstr("that of line 4")))));
}

}  // namespace
}  // namespace devhost
