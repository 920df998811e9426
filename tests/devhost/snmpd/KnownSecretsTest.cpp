#include "devhost/snmpd/KnownSecrets.h"

#include <gmock/gmock.h>

namespace devhost {
namespace {

using testing::ElementsAre;

TEST(AKnownSecret, IsMaskedAsAWordOfAnyText) {
  KnownSecrets known;
  known.Learn("kitchen");
  EXPECT_EQ(known.Mask("kitchen, \"kitchen\" kitchens _kitchen\nkitchen"), "*****, \"*****\" kitchens _kitchen\n*****");
}

TEST(AKnownSecret, IsMaskedWholeWhenItHoldsAnother) {
  KnownSecrets known;
  known.Learn("house");
  known.Learn("my house");
  EXPECT_EQ(known.Mask("in my house, in the house"), "in *****, in the *****");
}

TEST(AKnownSecret, IsNotLearntWhenItIsVeryShort) {
  KnownSecrets known;
  known.Learn("");
  known.Learn("abc");
  EXPECT_EQ(known.Mask("abc a"), "abc a");
}

TEST(AKnownSecret, ComesFromXml) {
  KnownSecrets known;
  known.LearnFromXml("<config><setting name=\"communityRead\" value=\"kitchen\"/><community>a&amp;bcd</community></config>");
  EXPECT_EQ(known.Mask("kitchen a&bcd"), "***** *****");
}

TEST(ATextOfAnyKind, IsMaskedByWhatStandsInIt) {
  const KnownSecrets known;
  EXPECT_EQ(known.Mask("found: <community>x</community>"), "found: <community>*****</community>");
  EXPECT_EQ(known.Mask("one\nrocommunity x\n"), "one\nrocommunity *****\n");
}

TEST(TheSecretsOfXml, AreThoseOfElementsAndAttributesAndOfXmlInIt) {
  EXPECT_THAT(
      SecretsInXml("<a><community>x &lt;</community><t community='y'/><b>&lt;community&gt;z&lt;/community&gt;</b></a>"),
      ElementsAre("x <", "y", "z"));
}

}  // namespace
}  // namespace devhost
