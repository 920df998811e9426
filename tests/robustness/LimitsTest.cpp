// Tests the bounds, and the messages beyond them.
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "tests/robustness/Kitchen.h"
#include "tests/robustness/Measure.h"

namespace testsupport {
namespace {

using testing::HasSubstr;
using Words = std::vector<std::string>;

const Words kRun = {"run", "--project", "project.xml", "--state", "states", "script"};

void ExpectRefused(const Measured& run, const std::string& output) {
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.output, output);
#ifdef MEASURES_MEMORY
  EXPECT_LT(run.peak, std::size_t{200000000});
#endif
}

TEST(ALineOfAScript, HasTwoHundredThousandWordsAtMost) {
  const Kitchen kitchen;
  WriteRepeated(kitchen.Path("script"), "print ", "a ", 199999, "");
  EXPECT_EQ(Measure(kRun, kitchen.Path()).status, 0);
  WriteRepeated(kitchen.Path("script"), "print ", "a ", 2000000, "");
  ExpectRefused(Measure(kRun, kitchen.Path()),
                "devhost: script:1: the line has more than 200000 words; allowed: at most this many\n");
}

TEST(Xml, HasFourMillionElementsAtMost) {
  const Kitchen kitchen;
  kitchen.Write("script", "command SetDeviceState xml=@settings.xml\n");
  WriteRepeated(kitchen.Path("settings.xml"), "<a>\n", "<b/>", 5000000, "</a>");
  const std::string problem = "the settings are not well-formed XML: more than 4000000 elements; allowed: at most this many";
  ExpectRefused(Measure({"advise", "settings.xml"}, kitchen.Path()), "devhost: settings.xml:2:15999997: " + problem + "\n");
#ifdef MEASURES_MEMORY
  // The program first searches the file for secrets, which takes many seconds under sanitizers.
  EXPECT_THAT(Measure(kRun, kitchen.Path()).output, HasSubstr("reply agent <Fail/>\n"));
#endif

  kitchen.Write("states/lock", "");
  WriteRepeated(kitchen.Path("states/driver-1.xml"), "<a>\n", "<b/>", 5000000, "</a>");
  kitchen.Write("script", "print played\n");
  EXPECT_THAT(Measure(kRun, kitchen.Path()).output,
              testing::AllOf(HasSubstr("states/driver-1.xml:2:15999997: the state is damaged: more than 4000000 elements; "
                                       "allowed: at most this many; kept as driver-1.xml.damaged\n"),
                             HasSubstr("print played\n")));

  WriteRepeated(kitchen.Path("project.xml"), "<project>\n", "<b/>", 5000000, "</project>");
  ExpectRefused(
      Measure(kRun, kitchen.Path()),
      "devhost: project.xml:2:15999997: the project is not well-formed XML: more than 4000000 elements; allowed: at "
      "most this many\n");
}

// Elements inside a comment do not count, nor do closing tags.
TEST(Xml, MayHoldWhatOnlyLooksLikeElements) {
  const Kitchen kitchen;
  WriteRepeated(kitchen.Path("settings.xml"), "<a><!-- ", "<b/>", 5000000, " --></a>");
  EXPECT_EQ(Measure({"advise", "settings.xml"}, kitchen.Path()).status, 1);
}

// The program reads millions of attributes before it refuses the file, which takes seconds under sanitizers.
#ifdef MEASURES_MEMORY
TEST(Xml, HasTenMillionAttributesAtMost) {
  const Kitchen kitchen;
  WriteRepeated(kitchen.Path("settings.xml"), "<a>",
                "<b a=\"\" b=\"\" c=\"\" d=\"\" e=\"\" f=\"\" g=\"\" h=\"\" i=\"\" j=\"\"/>", 1000001, "</a>");
  const Measured run = Measure({"advise", "settings.xml"}, kitchen.Path());
  EXPECT_EQ(run.status, 2);
  EXPECT_THAT(run.output, HasSubstr("not well-formed XML: more than 10000000 attributes; allowed: at most this many\n"));
}
#endif

TEST(XmlOfAPerson, IsAThousandLevelsDeepAtMost) {
  const Kitchen kitchen;
  WriteRepeated(kitchen.Path("end"), "", "</a>", 1000000, "");
  WriteRepeated(kitchen.Path("settings.xml"), "", "<a>", 1000000, kitchen.Read("end"));
  ExpectRefused(
      Measure({"advise", "settings.xml"}, kitchen.Path()),
      "devhost: settings.xml:1:3001: the settings are not well-formed XML: elements are nested more than 1000 deep\n");
}

// XML for a driver has no such bound, and it does not overflow the stack either.
TEST(XmlForADriver, MayBeHundredsOfThousandsOfLevelsDeep) {
  const Kitchen kitchen;
  WriteRepeated(kitchen.Path("end"), "", "</a>", 300000, "");
  WriteRepeated(kitchen.Path("deep.xml"), "", "<a>", 300000, kitchen.Read("end"));
  kitchen.Write("script", "command SetDeviceState xml=@deep.xml\n");
  const Measured run = Measure(kRun, kitchen.Path());
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.output, HasSubstr("reply agent <Fail/>\n"));
}

TEST(ASecretOfMoreThanAKilobyte, IsHiddenWhole) {
  const Kitchen kitchen;
  const std::string secret(1500, 's');
  kitchen.Write("script", "device kitchen set communityRead " + secret + "\nprint go " + secret + " on\nprint short\n");
  EXPECT_THAT(Measure(kRun, kitchen.Path()).output, HasSubstr("print go ***** on\nprint short\n"));
}

TEST(ASecretInManyQuotes, IsHiddenWithoutThem) {
  const Kitchen kitchen;
  kitchen.Write("script", "device kitchen set communityRead '\"\"\"\"secret\"\"\"\"'\nprint a secret thing\n");
  EXPECT_THAT(Measure(kRun, kitchen.Path()).output, HasSubstr("print a ***** thing\n"));
}

}  // namespace
}  // namespace testsupport
