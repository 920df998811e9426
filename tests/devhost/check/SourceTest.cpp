// Who may use a community. That the real daemon agrees is held in AccessAgreesTest.cpp.
#include "devhost/check/Source.h"

#include <gtest/gtest.h>

namespace devhost {
namespace {

std::optional<Source> SourceOf(const std::string& line) {
  return ReadSource(*ReadDirective(line));
}

TEST(ASource, StandsBehindTheCommunityOrInFrontOfIt) {
  EXPECT_EQ(SourceOf("rocommunity  reader  10.0.0.1  .1")->text, "10.0.0.1");
  EXPECT_EQ(SourceOf("com2sec  sec  10.0.0.2  reader")->text, "10.0.0.2");
  EXPECT_EQ(SourceOf("com2sec  -Cn  context  sec  10.0.0.3  reader")->text, "10.0.0.3");
  EXPECT_EQ(SourceOf("authcommunity  read  reader  10.0.0.4")->text, "10.0.0.4");
  EXPECT_FALSE(SourceOf("rocommunity  reader"));
  EXPECT_FALSE(SourceOf("rouser  bob  auth"));
}

TEST(ASource, IsOfTheFamilyOfItsDirective) {
  EXPECT_FALSE(SourceOf("rwcommunity  writer  10.0.0.1")->isV6);
  EXPECT_TRUE(SourceOf("rwcommunity6  writer  ::1")->isV6);
  EXPECT_TRUE(SourceOf("com2sec6  sec  ::1  reader")->isV6);
}

TEST(ASource, IsLookedUpWhenItIsAHostsName) {
  EXPECT_TRUE(IsLookedUp({"host.example", false}));
  EXPECT_TRUE(IsLookedUp({"!host.example/24", false}));
  EXPECT_TRUE(IsLookedUp({"host", true}));
  for (const char* const other : {"default", "localhost", "10.0.0.1", "10", "=", "*", "10.0.0.300", "::1", ""}) {
    EXPECT_FALSE(IsLookedUp({other, false})) << other;
  }
}

}  // namespace
}  // namespace devhost
