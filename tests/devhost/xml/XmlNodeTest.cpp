#include "devhost/xml/XmlNode.h"

#include <gmock/gmock.h>

#include <ctime>
#include <string>
#include <vector>

#include "devhost/xml/XmlMisuse.h"
#include "devhost/xml/XmlObserver.h"
#include "devhost/xml/XmlReader.h"
#include "host/H7XML.h"

namespace devhost {
namespace {

using Node = h7::auto_com<H7XML::INode>;

std::string Text(const Node& node) {
  return XmlText(*node, XmlStyle::Compact);
}

class ANode : public testing::Test {
 protected:
  void TearDown() override { EXPECT_EQ(LiveXmlObjects(), before); }
  const std::size_t before = LiveXmlObjects();
};

TEST_F(ANode, HasNameAndValue) {
  const Node node = H7XML::CreateXmlNode("name", "value");
  EXPECT_EQ(node->GetName(), "name");
  EXPECT_EQ(node->GetValue(), "value");
  node->SetName("other");
  node->SetValue("text");
  EXPECT_EQ(Text(node), "<other>text</other>");
}

TEST_F(ANode, KeepsNamedValuesAndNamedChildrenApart) {
  const Node node = H7XML::CreateXmlNode("n", "");
  node->SetNamedString("x", "attribute");
  node->AddChildString("x", "child");
  EXPECT_EQ(node->GetNamedString("x"), "attribute");
  EXPECT_EQ(node->GetChildString("x"), "child");
  EXPECT_EQ(node->GetNamedString("y"), "");
  EXPECT_EQ(node->GetChildString("y"), "");
  EXPECT_EQ(Text(node), "<n x=\"attribute\"><x>child</x></n>");
}

TEST_F(ANode, ReplacesANamedValueInPlaceAndAppendsANewOne) {
  const Node node = H7XML::CreateXmlNode("n", "");
  node->SetNamedULong("a", 1);
  node->SetNamedString("b", "2");
  node->SetNamedULong("a", 3);
  EXPECT_EQ(Text(node), "<n a=\"3\" b=\"2\"/>");
}

TEST_F(ANode, ReadsTypesAndNeverFails) {
  const Node node = ReadXmlNode("<n a='12' b='true' c='1' d='no'> 7 <k>8</k><k>9</k><t>true</t></n>");
  EXPECT_EQ(node->GetValueULong(), 7U);
  EXPECT_EQ(node->GetNamedULong("a"), 12U);
  EXPECT_EQ(node->GetNamedULong("d"), 0U);
  EXPECT_EQ(node->GetNamedULong("none"), 0U);
  EXPECT_TRUE(node->GetNamedBool("b"));
  EXPECT_TRUE(node->GetNamedBool("c"));
  EXPECT_FALSE(node->GetNamedBool("d"));
  EXPECT_FALSE(node->GetNamedBool("none"));
  EXPECT_EQ(node->GetChildULong("k"), 8U);
  EXPECT_EQ(node->GetChildULong("none"), 0U);
  EXPECT_TRUE(node->GetChildBool("t"));
  EXPECT_FALSE(node->GetChildBool("k"));
}

TEST_F(ANode, TakesANullNameForAnEmptyOne) {
  const Node node = H7XML::CreateXmlNode("n", "");
  EXPECT_EQ(node->GetNamedString(nullptr), "");
  EXPECT_FALSE(node->GetChild(nullptr));
}

TEST_F(ANode, AddsChildrenAtTheEnd) {
  const Node node = H7XML::CreateXmlNode("n", "");
  node->AddChildString("a", "x");
  node->AddChildInt("b", -5);
  node->AddChildString("a", "y");
  EXPECT_EQ(Text(node), "<n><a>x</a><b>-5</b><a>y</a></n>");
  EXPECT_EQ(node->GetChild("a")->GetValue(), "x");
  EXPECT_FALSE(node->GetChild("c"));
}

TEST_F(ANode, IsTheSameElementThroughEveryHandle) {
  const Node node = ReadXmlNode("<n><a/></n>");
  const Node first = node->GetChild("a");
  const Node second = node->GetChild("a");
  first->SetValue("x");
  EXPECT_EQ(second->GetValue(), "x");
  EXPECT_EQ(Text(node), "<n><a>x</a></n>");
}

TEST_F(ANode, StaysTheSameElementWhenItIsAppended) {
  const Node parent = H7XML::CreateXmlNode("p", "");
  const Node child = H7XML::CreateXmlNode("c", "");
  parent->AppendChild(*child);
  child->SetValue("later");
  EXPECT_EQ(Text(parent), "<p><c>later</c></p>");
}

TEST_F(ANode, IsMovedFromAParsedDocumentWithAllItsHandles) {
  const Node source = ReadXmlNode("<s><a/><m x='1'><in>t</in></m><b/></s>");
  const Node moved = source->GetChild("m");
  const Node inside = moved->GetChild("in");
  const Node target = H7XML::CreateXmlNode("t", "");
  target->AddChildString("first", "");
  target->AppendChild(*moved);
  moved->SetNamedString("y", "2");
  inside->SetValue("changed");
  EXPECT_EQ(Text(source), "<s><a/><b/></s>");
  EXPECT_EQ(Text(target), "<t><first/><m x=\"1\" y=\"2\"><in>changed</in></m></t>");
}

TEST_F(ANode, BecomesTheLastChildWhenItIsAppendedToItsParentAgain) {
  const Node node = ReadXmlNode("<n><a/><b/><c/></n>");
  node->AppendChild(*node->GetChild("a"));
  EXPECT_EQ(Text(node), "<n><b/><c/><a/></n>");
  node->AppendChild(*node->GetChild("a"));
  EXPECT_EQ(Text(node), "<n><b/><c/><a/></n>");
}

TEST_F(ANode, OutlivesTheTreeAroundIt) {
  Node inner;
  {
    const h7::auto_com<H7XML::IDocument> document = H7XML::CreateXmlDocument("<a><b><c>t</c></b><d/></a>");
    inner = document->GetRootElement()->GetChild("b");
  }
  EXPECT_EQ(LiveXmlObjects(), before + 1);
  EXPECT_EQ(Text(inner), "<b><c>t</c></b>");
  const Node other = H7XML::CreateXmlNode("n", "");
  other->AppendChild(*inner);
  EXPECT_EQ(Text(other), "<n><b><c>t</c></b></n>");
}

TEST_F(ANode, OutlivesItsParentThatWasHeldAndAppended) {
  Node child = H7XML::CreateXmlNode("c", "t");
  {
    const Node parent = H7XML::CreateXmlNode("p", "");
    parent->AppendChild(*child);
  }
  EXPECT_EQ(Text(child), "<c>t</c>");
}

class CountingSink : public XmlMisuseSink {
 public:
  CountingSink() : m_outer(SetXmlMisuseSink(this)) {}
  ~CountingSink() override { SetXmlMisuseSink(m_outer); }
  void OnXmlMisuse(const std::string& what, const void*) override { reports.push_back(what); }
  std::vector<std::string> reports;

 private:
  XmlMisuseSink* m_outer;
};

TEST_F(ANode, IsNotAppendedToItselfOrToADescendant) {
  CountingSink sink;
  const Node node = ReadXmlNode("<a><b><c/></b></a>");
  node->AppendChild(*node);
  node->GetChild("b")->GetChild("c")->AppendChild(*node);
  EXPECT_EQ(Text(node), "<a><b><c/></b></a>");
  EXPECT_EQ(sink.reports.size(), 2U);
}

// The time of this program alone, because others may keep a busy machine from it.
double SecondsOf(std::clock_t start) {
  return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

TEST_F(ANode, TakesAMillionChildrenOneByOne) {
  const std::clock_t start = std::clock();
  {
    const Node root = H7XML::CreateXmlNode("root", "");
    for (unsigned long i = 0; i != 1000000; ++i) {
      const Node child = H7XML::CreateXmlNode("v", "");
      child->SetNamedULong("id", i);
      root->AppendChild(*child);
    }
    EXPECT_EQ(LiveXmlObjects(), before + 1);
  }
  EXPECT_LT(SecondsOf(start), 30.0);
}

TEST_F(ANode, MayStandDeeperThanTheStack) {
  const std::clock_t start = std::clock();
  Node top = H7XML::CreateXmlNode("n", "");
  for (int i = 0; i != 300000; ++i) {
    Node above = H7XML::CreateXmlNode("n", "");
    above->AppendChild(*top);
    top = above;
  }
  const std::string text = Text(top);
  EXPECT_EQ(ReadXmlNode(text)->GetName(), "n");
  top.Reset();
  EXPECT_EQ(LiveXmlObjects(), before);
  EXPECT_LT(SecondsOf(start), 30.0);
}

}  // namespace
}  // namespace devhost
