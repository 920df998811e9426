// The names that lead from one line about access to another.
#include "devhost/check/AccessNames.h"

#include <gmock/gmock.h>

namespace devhost {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

AccessNames Names(const std::vector<std::string>& lines) {
  AccessNames names;
  std::size_t number = 0;
  for (const std::string& line : lines) {
    names.Add(*ReadAccess(*ReadDirective(line)), ++number);
  }
  return names;
}

std::vector<std::size_t> LinesOf(const std::vector<AccessNames::Use>& uses) {
  std::vector<std::size_t> lines;
  lines.reserve(uses.size());
  for (const AccessNames::Use& use : uses) {
    lines.push_back(use.line);
  }
  return lines;
}

const char kAccess[] = "access  readers  \"\"  any  noauth  exact  all  none  _none_";

TEST(TheNamesOfViews, MayBeDefinedBelowTheLinesThatUseThem) {
  const AccessNames names =
      Names({"rocommunity  a  default  -V  sys", "rouser  bob  auth  -V  none", "view  sys  included  .1",
             "rocommunity  b  default  -V  sis", "rocommunity  c  default  -V  _all_"});
  EXPECT_THAT(LinesOf(names.MissingViews()), ElementsAre(4));
}

TEST(TheNamesOfViews, AreNotDefinedByALineThatTheDaemonRejects) {
  EXPECT_THAT(LinesOf(Names({"view  sys  include  .1", "rocommunity  a  default  -V  sys"}).MissingViews()), ElementsAre(2));
}

TEST(TheNamesOfGroups, HaveToHaveMembers) {
  EXPECT_THAT(LinesOf(Names({kAccess}).MissingGroups()), ElementsAre(1));
  EXPECT_THAT(Names({kAccess, "group  readers  usm  bob"}).MissingGroups(), IsEmpty());
}

TEST(ASecurityName, ComesFromACommunity) {
  EXPECT_THAT(LinesOf(Names({"group  readers  v1  sec", "group  readers  usm  bob"}).MissingNames()), ElementsAre(1));
  EXPECT_THAT(Names({"group  readers  v1  sec", "com2sec6  sec  default  c"}).MissingNames(), IsEmpty());
}

TEST(WhoeverHasNoRights, IsFoundByHisLine) {
  EXPECT_THAT(LinesOf(Names({"com2sec  sec  default  c", "com2sec  in  default  d", "group  readers  v2c  in", kAccess,
                             "group  others  usm  bob"})
                          .Powerless()),
              ElementsAre(1, 5));
}

TEST(SomebodyIsLetIn, WhenAllThreeLinesAreThere) {
  EXPECT_TRUE(Names({"com2sec  sec  default  c", "group  readers  v2c  sec", kAccess}).LetSomebodyIn());
  EXPECT_TRUE(Names({"group  readers  usm  bob", kAccess}).LetSomebodyIn());
  EXPECT_FALSE(Names({"group  readers  v2c  sec", kAccess}).LetSomebodyIn());
  EXPECT_FALSE(Names({"com2sec  sec  default  c", "group  readers  v2c  sec"}).LetSomebodyIn());
}

TEST(TooManyLines, MakeNothingSure) {
  AccessNames names = Names({kAccess});
  for (std::size_t line = 0; line <= AccessNames::kMostLines; ++line) {
    names.Add(*ReadAccess(*ReadDirective("com2sec  sec  default  c")), line);
  }
  EXPECT_THAT(names.MissingGroups(), IsEmpty());
  EXPECT_THAT(names.Powerless(), IsEmpty());
  EXPECT_TRUE(names.LetSomebodyIn());
}

}  // namespace
}  // namespace devhost
