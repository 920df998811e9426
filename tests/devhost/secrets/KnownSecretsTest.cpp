#include "devhost/secrets/KnownSecrets.h"

#include <gtest/gtest.h>

#include "devhost/text/Words.h"

namespace devhost {
namespace {

TEST(AKnownSecret, IsMaskedInsideWordsToo) {
  KnownSecrets known;
  known.Learn("kitchen");
  EXPECT_EQ(known.Mask("kitchen, \"kitchen\" 0Dkitchens\nkitchen"), "*****, \"*****\" 0D*****s\n*****");
}

TEST(AKnownSecret, IsMaskedByEachOfItsWords) {
  KnownSecrets known;
  known.Learn("my old-house&<door>");
  EXPECT_EQ(known.Mask("house &lt;door&gt; my old-house&<door> old"), "***** &lt;*****&gt; ***** old");
}

TEST(AKnownSecret, IsMaskedWholeWhenItHoldsAnother) {
  KnownSecrets known;
  known.Learn("house");
  known.Learn("my house");
  EXPECT_EQ(known.Mask("in my house, in the house"), "in *****, in the *****");
}

TEST(AKnownSecret, ThatBeginsLikeALongerOneIsFound) {
  KnownSecrets known;
  for (const char* const secret : {"geheim", "geheima", "geheimnis"}) {
    known.Learn(secret);
  }
  EXPECT_EQ(known.Mask("geheimn geheimXY gehei"), "*****n *****XY gehei");
}

TEST(AKnownSecret, ThatOverlapsOrTouchesAnotherIsMaskedWithIt) {
  KnownSecrets known;
  known.Learn("frontdoor");
  known.Learn("doorstep");
  known.Learn("lamp");
  EXPECT_EQ(known.Mask("frontdoorsteplamp lamp"), "***** *****");
}

TEST(AKnownSecret, IsNotLearntWhenItIsVeryShortOrEverybodyWritesIt) {
  KnownSecrets known;
  for (const char* const text : {"", "abc", "true", "default", "localhost", "192.0.2.5", "*****", "   "}) {
    known.Learn(text);
  }
  EXPECT_EQ(known.Mask("abc true default localhost 192.0.2.5 *****   ."), "abc true default localhost 192.0.2.5 *****   .");
}

TEST(AKnownSecret, IsMaskedHoweverManyThereAre) {
  KnownSecrets known;
  for (int number = 1000; number != 2000; ++number) {
    known.Learn("x" + std::to_string(number));
  }
  EXPECT_EQ(known.Mask("x1000 x1999 x2000 x1"), "***** ***** x2000 x1");
}

TEST(AKnownSecret, IsMaskedWhereAMessageCutsItOff) {
  KnownSecrets known;
  const std::string secret = std::string(100, 's') + "\t" + std::string(300, 'u');
  known.Learn(secret);
  EXPECT_EQ(known.Mask(Quoted(secret)), "\"*****\\t*****...\" (401 bytes)");
  EXPECT_EQ(known.Mask(secret.substr(0, 9) + "!"), "*****!");
}

TEST(AKnownSecret, DoesNotHideAnAddressThatItBeginsWith) {
  KnownSecrets known;
  known.Learn("127.0.0.1  housetraps");
  EXPECT_EQ(known.Mask("udp:127.0.0.1:161, 127.0.0.1  housetraps"), "udp:127.0.0.1:161, *****");
}

TEST(AKnownSecret, LeavesTheNamesOfDirectivesReadable) {
  KnownSecrets known;
  known.Learn("[snmp] sysContact one\nsysLocation two2");
  EXPECT_EQ(known.Mask("snmpd.conf: sysContact, sysLocation two2"), "snmpd.conf: sysContact, sysLocation *****");
  known.Learn("view");
  EXPECT_EQ(known.Mask("view"), "*****");
}

TEST(AKnownSecret, IsMaskedThoughAStateWroteItInCodes) {
  KnownSecrets known;
  known.Learn("a%0Dhouse%C3%BC");
  EXPECT_EQ(known.Mask("0Dhouse house\xC3\xBC"), "***** *****");
}

TEST(TooManySecrets, HideEveryText) {
  KnownSecrets known;
  for (int number = 0; number != 250001; ++number) {
    known.Learn("x" + std::to_string(1000000 + number));
  }
  EXPECT_EQ(known.Mask("anything"), "*****");
  EXPECT_EQ(known.Mask(""), "");
}

TEST(APercentCode, IsDecodedWhenItIsWhole) {
  EXPECT_EQ(PercentDecoded("a%41%4a%4%zz%"), "aAJ%4%zz%");
}

}  // namespace
}  // namespace devhost
