#include "devhost/xml/XmlCharacters.h"

#include <gmock/gmock.h>

#include <string>

namespace devhost {
namespace {

TEST(ACharacter, IsAsLongAsItsUtf8) {
  EXPECT_EQ(XmlCharacterLength("az"), 1U);
  EXPECT_EQ(XmlCharacterLength("\t"), 1U);
  EXPECT_EQ(XmlCharacterLength("\u00e4z"), 2U);
  EXPECT_EQ(XmlCharacterLength("\u20acz"), 3U);
  EXPECT_EQ(XmlCharacterLength("\U0001F600z"), 4U);
}

TEST(ACharacter, HasNoLengthWhenItIsNotUtf8) {
  for (const char* const text : {"", "\x80", "\xC0\x80", "\xC0\xAF", "\xC3", "\xC3z", "\xE0\x80\xAF", "\xE2\x82",
                                 "\xF0\x80\x80\xAF", "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80", "\xFF"}) {
    EXPECT_EQ(XmlCharacterLength(text), 0U) << testing::PrintToString(text);
  }
}

TEST(ACharacter, HasNoLengthWhenXmlCannotCarryIt) {
  EXPECT_EQ(XmlCharacterLength(std::string(1, '\0')), 0U);
  EXPECT_EQ(XmlCharacterLength("\x1f"), 0U);
  EXPECT_EQ(XmlCharacterLength("\xED\xA0\x80"), 0U);  // half of a pair of surrogates
  EXPECT_EQ(XmlCharacterLength("\xEF\xBF\xBF"), 0U);  // U+FFFF
  EXPECT_EQ(XmlCharacterLength("\xEF\xBF\xBD"), 3U);  // U+FFFD
}

TEST(AName, BeginsWithALetterAndGoesOnWithDigitsToo) {
  for (const char byte : {'a', 'Z', '_', ':', '\xC3'}) {
    EXPECT_TRUE(IsXmlNameByte(byte, true)) << byte;
    EXPECT_TRUE(IsXmlNameByte(byte, false)) << byte;
  }
  for (const char byte : {'0', '9', '-', '.'}) {
    EXPECT_FALSE(IsXmlNameByte(byte, true)) << byte;
    EXPECT_TRUE(IsXmlNameByte(byte, false)) << byte;
  }
  for (const char byte : {' ', '<', '"', '/', '\0'}) {
    EXPECT_FALSE(IsXmlNameByte(byte, false)) << byte;
  }
}

TEST(AProblemOfXml, IsFoundWhereItStands) {
  std::string problem;
  EXPECT_EQ(FindXmlProblem("<a>\xE4</a>", problem), 3U);
  EXPECT_EQ(problem, "a character that XML does not allow, or that is not UTF-8");
  EXPECT_EQ(FindXmlProblem("<a>&#x110000;</a>", problem), 3U);
  EXPECT_EQ(problem, "\"&\" begins no known reference; write \"&amp;\" for the character itself");
  EXPECT_EQ(FindXmlProblem("<a>&lt&gt;</a>", problem), 3U);
}

TEST(AProblemOfXml, IsNothingInReferencesCommentsAndTheLike) {
  std::string problem;
  EXPECT_EQ(FindXmlProblem("<a>&lt;&#65;&#x0000041;&apos;</a>", problem), std::string::npos);
  EXPECT_EQ(FindXmlProblem("<!DOCTYPE a [<!ENTITY e \"&b;\">]><!-- & --><?p & ?><a><![CDATA[&]]></a>", problem),
            std::string::npos);
  EXPECT_EQ(FindXmlProblem("<!-->&--><!--->&--><a/>", problem), std::string::npos);
  EXPECT_EQ(FindXmlProblem("<!----><?p?>& ", problem), 12U);
  EXPECT_EQ(FindXmlProblem("<!-- & --> & ", problem), 11U);
  EXPECT_EQ(problem, "\"&\" begins no known reference; write \"&amp;\" for the character itself");
}

}  // namespace
}  // namespace devhost
