// What the rules of CommunityRules.cpp find beside their examples.
#include <gtest/gtest.h>

#include "tests/devhost/check/Examples.h"

namespace devhost {
namespace {

TEST(Communities, AreMaskedUnlessAskedFor) {
  const std::string text = "rocommunity  it's-secret\n";
  ASSERT_EQ(Judged(text).size(), 1u);
  EXPECT_EQ(Judged(text)[0].reason, "a quote or a backslash in the community: the daemon answers to ***** instead of *****");
  EXPECT_EQ(Judged(text, "snmpd.conf", true)[0].reason,
            "a quote or a backslash in the community: the daemon answers to \"it\" instead of \"it's-secret\"");
}

TEST(AnEmptyText, LetsNobodyIn) {
  ASSERT_EQ(Judged("").size(), 1u);
  EXPECT_EQ(Judged("")[0].rule, "no-access");
}

TEST(AGrant, GoesToASourceAndMayBeLimited) {
  const auto read = [](const std::string& text) {
    ConfigLine line;
    line.setting = ReadDirective(text);
    const Grant grant = ReadGrant(line);
    return std::string(grant.writes ? "writes" : "reads") + "|" + grant.source + "|" + grant.limit;
  };
  EXPECT_EQ(read("rocommunity  c"), "reads||");
  EXPECT_EQ(read("rwcommunity6  c default -V view"), "writes||-V view");
  EXPECT_EQ(read("rocommunity  c 10.0.0.0/8 .1.3"), "reads|10.0.0.0/8|.1.3");
}

TEST(TheSameCommunity, IsOneOfEachFamilyOfAddresses) {
  EXPECT_EQ(GrantKey(*ReadDirective("rocommunity  it's")), "4 it");
  EXPECT_EQ(GrantKey(*ReadDirective("rwcommunity6  it")), "6 it");
  EXPECT_EQ(GrantKey(*ReadDirective("rocommunity")), "");
  EXPECT_EQ(GrantKey(*ReadDirective("sysName  it")), "");
}
}  // namespace
}  // namespace devhost
