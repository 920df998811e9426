#include "devhost/xml/XmlReader.h"

#include <gmock/gmock.h>

#include "host/H7XML.h"

namespace devhost {
namespace {

TEST(XmlReader, GivesElementsWithTheirPlaces) {
  const XmlElement root =
      ReadXml("<?xml version='1.0'?>\n<project>\n  <driver id='1' name=\"a\"/>\r\n  <driver>\n text</driver>\n</project>\n");
  EXPECT_EQ(root.name, "project");
  EXPECT_EQ(root.line, 2U);
  EXPECT_EQ(root.column, 1U);
  EXPECT_EQ(root.text, "");
  ASSERT_EQ(root.children.size(), 2U);
  EXPECT_EQ(root.children[0].line, 3U);
  EXPECT_EQ(root.children[0].column, 3U);
  ASSERT_EQ(root.children[0].attributes.size(), 2U);
  EXPECT_EQ(root.children[0].attributes[0].name, "id");
  EXPECT_EQ(*root.children[0].FindAttribute("name"), "a");
  EXPECT_EQ(root.children[0].FindAttribute("none"), nullptr);
  EXPECT_EQ(root.children[1].line, 4U);
  EXPECT_EQ(root.children[1].text, "\n text");
}

TEST(XmlReader, BoundsTheDepthOfPlainValuesOnly) {
  std::string text;
  for (int i = 0; i != 1001; ++i) {
    text += "<a>";
  }
  for (int i = 0; i != 1001; ++i) {
    text += "</a>";
  }
  EXPECT_THROW(ReadXml(text), XmlError);
  EXPECT_TRUE(ReadXmlNode(text));
  EXPECT_TRUE(H7XML::CreateXmlDocument(text));
  EXPECT_NO_THROW(ReadXml(text.substr(3, text.size() - 7)));
}

TEST(XmlReader, ThrowsForANodeThatCannotBeRead) {
  EXPECT_THROW(ReadXmlNode("<a>"), XmlError);
}

}  // namespace
}  // namespace devhost
