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

TEST(AKnownSecret, IsMaskedWholeAndNotByItsWords) {
  KnownSecrets known;
  known.Learn(" my old-house&<door> ");
  EXPECT_EQ(known.Mask("in my old-house&<door> of the house"), "in ***** of the house");
}

TEST(AKnownSecret, IsMaskedByItsWordsWhenALineFeedMadeTextsOfThem) {
  KnownSecrets known;
  known.Learn("one1\nsysContact two2");
  EXPECT_EQ(known.Mask("one1, sysContact two2"), "*****, sysContact *****");
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

TEST(AShortSecret, IsMaskedAsAWordOnly) {
  KnownSecrets known;
  for (const char* const text : {"ab", "\"x\"", "a!", "***", ""}) {
    known.LearnShort(text);
  }
  EXPECT_EQ(known.Mask("ab abc cab ab_c (ab)=ab: x xx 'x' \"x\" a! *** a"),
            "***** abc cab *****_c (*****)=*****: ***** xx '*****' \"*****\" ***** *** a");
}

TEST(AShortSecret, IsMaskedInASentenceOnlyWhereThatQuotesIt) {
  KnownSecrets known;
  known.LearnShort("is");
  EXPECT_EQ(known.Mask("it is \"is\", which is \"not is, this\"", KnownSecrets::Short::InQuotes),
            "it is \"*****\", which is \"not *****, this\"");
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
  EXPECT_EQ(known.Mask(Quoted(secret)), "\"*****...\" (401 bytes)");
  EXPECT_EQ(known.Mask(secret.substr(0, 9) + "!"), "*****!");
}

TEST(AKnownSecret, DoesNotHideAnAddressThatItBeginsWith) {
  KnownSecrets known;
  known.Learn("127.0.0.1  housetraps");
  EXPECT_EQ(known.Mask("udp:127.0.0.1:161, 127.0.0.1  housetraps"), "udp:127.0.0.1:161, *****");
}

TEST(AKnownSecret, IsMaskedInAWordThatBeginsLikeItOnlyWhenTheWordIsCutOff) {
  KnownSecrets known;
  known.Learn("communityRaed");
  EXPECT_EQ(known.Mask("communityRead communityRa communityRa..."), "communityRead ***** *****...");
}

class AnEncodedSecret : public testing::TestWithParam<const char*> {};

TEST_P(AnEncodedSecret, IsMasked) {
  KnownSecrets known;
  known.Learn("my \"house\" & \xC3\xBC");
  EXPECT_EQ(known.Mask("<" + std::string(GetParam()) + ">"), "<*****>") << GetParam();
}

INSTANTIATE_TEST_SUITE_P(Texts, AnEncodedSecret,
                         testing::Values("my \"house\" & \xC3\xBC", "my &quot;house&quot; &amp; \xC3\xBC",
                                         "my \\\"house\\\" & \\xC3\\xBC", "my%20%22house%22%20%26%20%C3%BC",
                                         "my &amp;quot;house\\\" %26amp; &#xC3;&#188;", "6d792022686f757365222026 20c3bc",
                                         "6D 79 20 22 68 6F 75 73 65 22 20 26 20 C3 BC",
                                         "6d:79:20:22:68:6f:75:73:65:22:20:26:20:c3:bc",
                                         "6d, 0x79, 0x20, 0x22, 0x68, 0x6f, 0x75, 0x73, "
                                         "0x65, 0x22, 0x20, 0x26, 0x20, 0xc3, 0xbc",
                                         "bXkgImhvdXNlIiAmIMO8"));

TEST(AKnownSecret, ThatHasEscapesItselfIsMaskedWithAndWithoutThem) {
  KnownSecrets known;
  known.Learn("a%0Dhouse%C3%BC");
  EXPECT_EQ(known.Mask("a%0Dhouse%C3%BC <a&#13;house\xC3\xBC> house"), "***** <*****> *****");
}

TEST(AKnownSecret, IsMaskedInALongerTextInBase64) {
  KnownSecrets known;
  known.Learn("hidden-11");
  // "rocommunity hidden-11 default", "+rocommunity hidden-11 default", "++rocommunity hidden-11 default"
  for (const char* const text :
       {"cm9jb21tdW5pdHkgaGlkZGVuLTExIGRlZmF1bHQ=", "K3JvY29tbXVuaXR5IGhpZGRlbi0xMSBkZWZhdWx0",
        "Kytyb2NvbW11bml0eSBoaWRkZW4tMTEgZGVmYXVsdA==", "Kytyb2NvbW11bml0eSBo\naWRkZW4tMTEgZGVmYXVsdA=="}) {
    EXPECT_NE(known.Mask(text).find("*****"), std::string::npos) << text;
  }
  EXPECT_EQ(known.Mask("an ordinary text\nof two lines"), "an ordinary text\nof two lines");
}

TEST(TooManySecrets, HideEveryText) {
  KnownSecrets known;
  for (int number = 0; number != 250001; ++number) {
    known.Learn("x" + std::to_string(1000000 + number));
  }
  EXPECT_EQ(known.Mask("anything"), "*****");
  EXPECT_EQ(known.Mask(""), "");
}

}  // namespace
}  // namespace devhost
