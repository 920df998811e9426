// What a line about access says. That the real daemon agrees is held in AccessAgreesTest.cpp.
#include "devhost/check/AccessLine.h"

#include <gmock/gmock.h>

namespace devhost {
namespace {

using testing::ElementsAre;
using Kind = AccessLine::Kind;

AccessLine Read(const std::string& line) {
  return *ReadAccess(*ReadDirective(line));
}

TEST(ALineAboutAccess, IsOneOfTheseKinds) {
  EXPECT_EQ(Read("rocommunity  reader").kind, Kind::Community);
  EXPECT_EQ(Read("authuser  read  bob").kind, Kind::User);
  EXPECT_EQ(Read("com2sec6  sec  ::1  reader").kind, Kind::Name);
  EXPECT_EQ(Read("group  readers  v1  sec").kind, Kind::Member);
  EXPECT_EQ(Read("authgroup  read  readers").kind, Kind::Rights);
  EXPECT_EQ(Read("view  all  included  .1").kind, Kind::View);
  EXPECT_FALSE(ReadAccess(*ReadDirective("sysName  box")));
  EXPECT_FALSE(ReadAccess(*ReadDirective("group")));
}

TEST(ALineAboutAccess, NamesItsViews) {
  EXPECT_THAT(Read("rocommunity  reader  default  -V  one").views, ElementsAre("one"));
  EXPECT_THAT(Read("rwuser  -s  usm  bob  auth  -V  two").views, ElementsAre("two"));
  EXPECT_THAT(Read("access  g  \"\"  any  noauth  exact  three  four  five").views, ElementsAre("three", "four", "five"));
  EXPECT_THAT(Read("setaccess  g  \"\"  any  noauth  exact  read  six").views, ElementsAre("six"));
  EXPECT_THAT(Read("authaccess  read  g  seven").views, ElementsAre("seven"));
  EXPECT_THAT(Read("rocommunity  reader  default  .1").views, ElementsAre());
}

TEST(ALineAboutAccess, NamesItsGroupAndWhoIsInIt) {
  const AccessLine community = Read("group  readers  v2c  sec");
  EXPECT_EQ(community.group, "readers");
  EXPECT_EQ(community.name, "sec");
  EXPECT_TRUE(community.isOfCommunities);
  EXPECT_FALSE(Read("group  readers  usm  bob").isOfCommunities);
  EXPECT_EQ(Read("com2sec  -Cn  context  sec  default  reader").name, "sec");
  EXPECT_EQ(Read("authgroup  read  -s  usm  readers").group, "readers");
}

TEST(ALineAboutAccess, HasTheFirstOfItsProblems) {
  EXPECT_EQ(Read("rocommunity  reader  10.0.0.0/33  bad").problem, "the length of the mask is not a number from 0 to 32");
  EXPECT_EQ(Read("view  all").problem, "included or excluded is missing");
  EXPECT_EQ(Read("view  all  included  .1").problem, "");
}

TEST(ALineAboutAccess, MayHaveTheNameOfAnObject) {
  EXPECT_TRUE(Read("view  all  included  system").hasObjectName);
  EXPECT_FALSE(Read("view  all  included  iso.3").hasObjectName);
}

}  // namespace
}  // namespace devhost
