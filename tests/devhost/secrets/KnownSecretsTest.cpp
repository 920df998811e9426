#include "devhost/secrets/KnownSecrets.h"

#include <gtest/gtest.h>

namespace devhost {
namespace {

TEST(AKnownSecret, IsMaskedAsAWordOfAnyText) {
  KnownSecrets known;
  known.Learn("kitchen");
  EXPECT_EQ(known.Mask("kitchen, \"kitchen\" kitchens _kitchen\nkitchen"), "*****, \"*****\" kitchens _kitchen\n*****");
}

TEST(AKnownSecret, IsMaskedWholeWhenItContainsAnother) {
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

TEST(AKnownSecret, IsMaskedHoweverManyThereAre) {
  KnownSecrets known;
  for (int number = 1000; number != 2000; ++number) {
    known.Learn("secret" + std::to_string(number));
  }
  EXPECT_EQ(known.Mask("secret1000 secret1999 secret2000 secret1"), "***** ***** secret2000 secret1");
}

TEST(AKnownSecret, ThatOverlapsAnotherIsMaskedWithIt) {
  KnownSecrets known;
  known.Learn("front door");
  known.Learn("door of the house");
  EXPECT_EQ(known.Mask("front door of the house"), "*****");
}

TEST(AKnownSecret, IsMaskedAsXmlWritesIt) {
  KnownSecrets known;
  known.Learn("a&b<c>\"d\"");
  EXPECT_EQ(known.Mask("<Fail>\"a&amp;b&lt;c&gt;\"d\"\" is wrong</Fail> a&amp;b&lt;c>\"d\" a&amp;b&lt;c&gt;&quot;d&quot;"),
            "<Fail>\"*****\" is wrong</Fail> ***** *****");
}

TEST(AKnownSecret, ComesFromAConfigurationWithOrWithoutItsQuotes) {
  KnownSecrets known;
  known.LearnFromConfig("sysName kitchen\nrocommunity \"my house\"\nrwcommunity cellar default\n # rwcommunity stairs\n");
  EXPECT_EQ(known.Mask("my house, \"my house\", cellar kitchen stairs"), "*****, *****, ***** kitchen stairs");
}

TEST(AKnownSecret, IsMaskedWithoutItsQuotesHoweverManyThereAre) {
  KnownSecrets known;
  known.Learn("\"\"\"\"\"\"'kitchen'\"\"\"\"\"\"");
  EXPECT_EQ(known.Mask("told kitchen"), "told *****");
}

TEST(AKnownSecret, DoesNotComeFromACommentOfAConfigurationInXml) {
  KnownSecrets known;
  known.LearnFromXml("<known>-\n# createUser NAME MD5 passphrase\nrocommunity public\n-</known>");
  EXPECT_EQ(known.Mask("a passphrase, public"), "a passphrase, *****");
}

TEST(AKnownSecret, IsMaskedEvenIfAPartOfItLooksLikeATag) {
  KnownSecrets known;
  known.Learn("house<door");
  EXPECT_EQ(known.Mask("trap2sink    house<door  162"), "trap2sink    *****  *****");
}

TEST(AKnownSecret, ComesFromXml) {
  KnownSecrets known;
  known.LearnFromXml("<config><setting name=\"communityRead\" value=\"kitchen\"/><community>a&amp;bcd</community></config>");
  EXPECT_EQ(known.Mask("kitchen a&bcd"), "***** *****");
}

TEST(ATextOfAnyKind, IsMaskedLikeXmlAndConfiguration) {
  const KnownSecrets known;
  EXPECT_EQ(known.Mask("found: <community>x</community>"), "found: <community>*****</community>");
  EXPECT_EQ(known.Mask("one\nrocommunity x\n"), "one\nrocommunity *****\n");
}

}  // namespace
}  // namespace devhost
