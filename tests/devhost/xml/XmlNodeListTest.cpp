#include "devhost/xml/XmlNodeList.h"

#include <gmock/gmock.h>

#include <vector>

#include "devhost/xml/XmlObserver.h"
#include "devhost/xml/XmlReader.h"
#include "host/H7XML.h"

namespace devhost {
namespace {

using testing::ElementsAre;
using Node = h7::auto_com<H7XML::INode>;

class AListOfChildren : public testing::Test {
 protected:
  void TearDown() override { EXPECT_EQ(LiveXmlObjects(), before); }
  const std::size_t before = LiveXmlObjects();
};

TEST_F(AListOfChildren, IsWalkedInDocumentOrder) {
  const Node node = ReadXmlNode("<n>text<a/><!-- no --><b/>more<c/></n>");
  std::vector<std::string> names;
  const h7::auto_com<H7XML::INodeList> list = node->GetChildren();
  EXPECT_FALSE(list->Next());
  for (Node child = list->First(); child; child = list->Next()) {
    names.push_back(child->GetName());
  }
  EXPECT_FALSE(list->Next());
  EXPECT_THAT(names, ElementsAre("a", "b", "c"));
  EXPECT_EQ(list->First()->GetName(), "a");
}

TEST_F(AListOfChildren, KeepsTheirParentAlive) {
  h7::auto_com<H7XML::INodeList> list = ReadXmlNode("<n><a/><b/></n>")->GetChildren();
  EXPECT_EQ(list->First()->GetName(), "a");
  EXPECT_EQ(list->Next()->GetName(), "b");
}

TEST_F(AListOfChildren, EndsWhenTheNodeItStandsOnLeaves) {
  const Node node = ReadXmlNode("<n><a/><b/></n>");
  const Node other = H7XML::CreateXmlNode("o", "");
  const h7::auto_com<H7XML::INodeList> list = node->GetChildren();
  other->AppendChild(*list->First());
  other->AddChildString("c", "");
  EXPECT_FALSE(list->Next());
  EXPECT_EQ(list->First()->GetName(), "b");
}

TEST_F(AListOfChildren, ShowsANewLastChildWhileItIsWalked) {
  const Node node = ReadXmlNode("<n><a/></n>");
  const h7::auto_com<H7XML::INodeList> list = node->GetChildren();
  list->First();
  node->AddChildString("b", "");
  EXPECT_EQ(list->Next()->GetName(), "b");
}

}  // namespace
}  // namespace devhost
