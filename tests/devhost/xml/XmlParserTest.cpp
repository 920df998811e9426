#include "devhost/xml/XmlParser.h"

#include <gmock/gmock.h>

#include <string>

#include "devhost/xml/XmlObserver.h"
#include "devhost/xml/XmlReader.h"
#include "host/H7XML.h"

namespace devhost {
namespace {

using testing::HasSubstr;

TEST(TheParser, ResolvesReferencesAndCharacterData) {
  EXPECT_EQ(ReadXml("<a>&lt;&#13;&#x20AC;<![CDATA[<&>]]>&amp;</a>").text, "<\r\xE2\x82\xAC<&>&");
  EXPECT_EQ(*ReadXml("<a b='&quot;&#10;&apos;'/>").FindAttribute("b"), "\"\n'");
}

TEST(TheParser, SkipsAByteOrderMarkAndCountsIt) {
  const XmlElement root = ReadXml("\xEF\xBB\xBF<a>\n<b/></a>");
  EXPECT_EQ(root.name, "a");
  EXPECT_EQ(root.line, 1U);
  EXPECT_EQ(root.children.at(0).line, 2U);
}

TEST(TheParser, TakesWhiteSpaceForTextOnlyWhereItIsAllThereIs) {
  EXPECT_EQ(ReadXml("<a> \n</a>").text, " \n");
  EXPECT_EQ(ReadXml("<a> <b/> </a>").text, "");
  EXPECT_EQ(ReadXml("<a> x<b/> </a>").text, " x");
  EXPECT_EQ(ReadXml("<a>&#32;<b/></a>").text, " ");
}

struct BadText {
  const char* text;
  std::size_t line;
  std::size_t column;
  const char* problem;
};

class ABadText : public testing::TestWithParam<BadText> {};

TEST_P(ABadText, IsRefusedWithItsPlace) {
  try {
    ReadXml(GetParam().text);
    FAIL() << "accepted";
  } catch (const XmlError& error) {
    EXPECT_THAT(error.what(), HasSubstr(GetParam().problem));
    EXPECT_EQ(error.Line(), GetParam().line);
    EXPECT_EQ(error.Column(), GetParam().column);
  }
  const std::size_t before = LiveXmlObjects();
  EXPECT_FALSE(H7XML::CreateXmlDocument(GetParam().text));
  EXPECT_EQ(LiveXmlObjects(), before);
}

INSTANTIATE_TEST_SUITE_P(
    TheParser, ABadText,
    testing::Values(BadText{"", 1, 1, "no root element"}, BadText{"  \n<!-- -->", 2, 9, "no root element"},
                    BadText{"just text", 1, 1, "outside of the root"},
                    BadText{"<a/>\n<b/>", 2, 1, "second root element <b>"}, BadText{"<a/>tail", 1, 1, "outside of the root"},
                    BadText{"<a>\n<b>\n</a>", 3, 3, "mismatch"}, BadText{"<a b='1' b='2'/>", 1, 1, "one attribute twice"},
                    BadText{"<a>\n&foo;</a>", 2, 1, "no known reference"},
                    BadText{"<a>a & b</a>", 1, 6, "no known reference"}, BadText{"<a>&#1;</a>", 1, 4, "no known reference"},
                    BadText{"<a>&#0;</a>", 1, 4, "no known reference"}, BadText{"<a b='&'/>", 1, 7, "no known reference"},
                    BadText{"<a>\x01</a>", 1, 4, "does not allow"}, BadText{"<a>\xFF</a>", 1, 4, "not UTF-8"},
                    BadText{"<a", 1, 2, ""}, BadText{"<a b=1/>", 1, 6, ""}));

TEST(TheParser, RefusesATextWithANulCharacter) {
  EXPECT_THROW(ReadXml(std::string("<a/>\0", 5)), XmlError);
  EXPECT_THROW(ReadXml(std::string("<a>\0</a>", 8)), XmlError);
}

TEST(TheParser, LetsEverythingStandInCommentsAndTheLike) {
  EXPECT_EQ(ReadXml("<!DOCTYPE a [<!ENTITY e \"&b;\">]><!-- & --><?p & ?><a><![CDATA[&]]><!-- & --></a>").text, "&");
}

}  // namespace
}  // namespace devhost
