#include <gmock/gmock.h>

#include "devhost/xml/XmlObserver.h"
#include "devhost/xml/XmlReader.h"
#include "host/H7XML.h"

namespace devhost {
namespace {

using Node = h7::auto_com<H7XML::INode>;

std::string Compact(const Node& node) {
  return XmlText(*node, XmlStyle::Compact);
}

TEST(XmlWriter, WritesOneLineOrIndentedLines) {
  const Node node = ReadXmlNode("<a x='1'>\n <b/><c>t</c> <d><e/></d><f>text<g/></f></a>");
  EXPECT_EQ(Compact(node), "<a x=\"1\"><b/><c>t</c><d><e/></d><f>text<g/></f></a>");
  EXPECT_EQ(XmlText(*node, XmlStyle::Indented),
            "<a x=\"1\">\n  <b/>\n  <c>t</c>\n  <d>\n    <e/>\n  </d>\n  <f>text<g/></f>\n</a>");
}

TEST(XmlWriter, BreaksLinesAgainBehindAnElementWithTextAndChildren) {
  const std::string text = "<a>\n  <f>t<g><h/></g><g/></f>\n  <b>\n    <c/>\n  </b>\n</a>";
  EXPECT_EQ(XmlText(*ReadXmlNode(text), XmlStyle::Indented), text);
}

TEST(XmlWriter, WritesAPlainElementLikeANode) {
  const std::string text = "<a x='1'>\n <b>t</b><c> <d/><d/></c><e>text<f/></e><g>&#32;<h/></g></a>";
  const XmlElement element = ReadXml(text);
  const Node node = ReadXmlNode(text);
  for (const XmlStyle style : {XmlStyle::Compact, XmlStyle::Indented}) {
    EXPECT_EQ(XmlText(element, style), XmlText(*node, style));
    EXPECT_EQ(XmlText(*MakeXmlNode(element), style), XmlText(*node, style));
  }
}

class AText : public testing::TestWithParam<std::string> {};

TEST_P(AText, ComesBackAsItWas) {
  const Node node = H7XML::CreateXmlNode("n", GetParam());
  node->SetNamedString("a", GetParam());
  node->AddChildString("c", GetParam());
  for (const XmlStyle style : {XmlStyle::Compact, XmlStyle::Indented}) {
    const Node back = ReadXmlNode(XmlText(*node, style));
    EXPECT_EQ(back->GetValue(), GetParam());
    EXPECT_EQ(back->GetNamedString("a"), GetParam());
    EXPECT_EQ(back->GetChildString("c"), GetParam());
  }
}

INSTANTIATE_TEST_SUITE_P(XmlWriter, AText,
                         testing::Values("", " ", "\n", "\r\n", "\r", "\t \t", " x ", "a\r\nb\tc\n", "<&>\"'", "]]>",
                                         "&amp;", "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80", "-->", "\x7F"));

TEST(XmlWriter, ReplacesWhatXmlCannotCarry) {
  const Node node = H7XML::CreateXmlNode("n", std::string("a\x01\0b\xFF\xC3", 6));
  EXPECT_EQ(Compact(node),
            "<n>a\xEF\xBF\xBD\xEF\xBF\xBD"
            "b\xEF\xBF\xBD\xEF\xBF\xBD</n>");
  EXPECT_EQ(node->GetValue(), std::string("a\x01\0b\xFF\xC3", 6));
}

TEST(XmlWriter, ReplacesWhatANameCannotCarry) {
  const Node node = H7XML::CreateXmlNode("1 a<", "");
  node->SetNamedString("", "x");
  EXPECT_EQ(Compact(node), "<__a_ _=\"x\"/>");
  Node nameless;
  H7XML::Create(nameless.Receive());
  EXPECT_EQ(Compact(nameless), "<_/>");
  EXPECT_EQ(Compact(H7XML::CreateXmlNode("gr\xC3\xB6\xC3\x9F"
                                         "e",
                                         "")),
            "<gr\xC3\xB6\xC3\x9F"
            "e/>");
}

TEST(XmlWriter, WritesASubtreeAlone) {
  const Node node = ReadXmlNode("<a><b><c/></b><d/></a>");
  EXPECT_EQ(Compact(node->GetChild("b")), "<b><c/></b>");
}

}  // namespace
}  // namespace devhost
