#include <gmock/gmock.h>

#include "tests/devhost/check/Examples.h"

namespace devhost {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(ALineAboutAccess, IsNotJudgedAsOneInTheSection) {
  const std::string line = "rocommunity  two\twords\n";
  EXPECT_THAT(LinesFound("access-rejected", line), IsEmpty());
  EXPECT_THAT(LinesFound("source-by-name", line), ElementsAre(1));
  const std::string inside = "# Halvoren Section Start\n" + line + "# Halvoren Section End\n\n";
  EXPECT_THAT(LinesFound("source-by-name", inside), IsEmpty());
  EXPECT_THAT(LinesFound("community-of-several-words", inside), ElementsAre(2));
}

TEST(ALineAboutAccess, CountsWhereTheDaemonTakesItWithAComplaint) {
  const std::string users = "createUser  ada  SHA  \"some words\"\ngroup  g  usm  ada\nview  all  included  .1\n";
  const std::string file = users + "access  g  \"\"  any  auth  0  all  none  none\n";
  EXPECT_THAT(LinesFound("access-rejected", file), ElementsAre(4));
  EXPECT_THAT(LinesFound("no-rights", file), IsEmpty());
  EXPECT_THAT(LinesFound("no-access", file), IsEmpty());
  EXPECT_THAT(LinesFound("no-rights", users + "access  g  \"\"  any  auth  1  all  none  none\n"), ElementsAre(2));
}

TEST(NamesForCommunities, MayComeFromAnAddressOfThisMachine) {
  const std::string use =
      "group  g  v2c  reader\nview  all  included  .1\naccess  g  \"\"  any  noauth  exact  all  none  none\n";
  EXPECT_THAT(LinesFound("name-not-defined", use), ElementsAre(1));
  EXPECT_THAT(LinesFound("name-not-defined", use + "com2secunix  reader  default  community\n"), IsEmpty());
}

TEST(NamesOfViews, AreNotJudgedWhenAFileThatIsNotKnownMayDefineThem) {
  const std::string use = "rocommunity  reader  default  -V  mine\n";
  EXPECT_THAT(LinesFound("name-not-defined", use), ElementsAre(1));
  EXPECT_THAT(LinesFound("name-not-defined", use + "includeFile  /nonexistent/views.conf\n"), IsEmpty());
}

TEST(NamesOfViews, MayBeDefinedInAnIncludedFile) {
  const testsupport::ScratchFolder folder;
  const std::string path = folder.Path("snmpd.conf");
  folder.Write("views.conf", "view  mine  included  .1\nrocommunity  other  default  -V  missing\n");
  Circumstances circumstances;
  circumstances.path = path;
  std::vector<std::string> places;
  for (const Finding& finding :
       Judged("rocommunity  reader  default  -V  mine\nincludeFile  views.conf\n", path, false, circumstances)) {
    if (finding.rule == "name-not-defined") {
      places.push_back(finding.file + ":" + std::to_string(finding.line));
    }
  }
  EXPECT_THAT(places, ElementsAre(folder.Path("views.conf") + ":2"));
}

TEST(NobodyHasAccess, WhenComToSecLeadsToNoRights) {
  EXPECT_THAT(LinesFound("no-access", "com2sec  sec  default  reader\n"), ElementsAre(0));
  EXPECT_THAT(LinesFound("no-access", "rocommunity  reader  10.0.0.1/8\n"), ElementsAre(0));
  EXPECT_THAT(LinesFound("no-access", NearMiss("no-rights")), IsEmpty());
  // The daemon complains of the model, and answers.
  const std::string rights =
      "com2sec  sec  default  reader\nview  all  included  .1\naccess  g  \"\"  any  noauth  exact  all  all  none\n";
  EXPECT_THAT(LinesFound("no-access", rights + "group  g  any  sec\n"), IsEmpty());
  EXPECT_THAT(LinesFound("name-not-defined", rights + "group  g  any  sec\n"), IsEmpty());
  EXPECT_THAT(LinesFound("no-access", rights + "group  g  foo  sec\n"), ElementsAre(0));
}

}  // namespace
}  // namespace devhost
