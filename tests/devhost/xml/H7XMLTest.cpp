#include "host/H7XML.h"

#include <gmock/gmock.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "devhost/xml/XmlMisuse.h"
#include "devhost/xml/XmlObserver.h"
#include "host/ToString.h"

namespace devhost {
namespace {

using testing::ElementsAre;
using Node = h7::auto_com<H7XML::INode>;

class ANewObject : public testing::Test {
 protected:
  void TearDown() override { EXPECT_EQ(LiveXmlObjects(), before); }
  const std::size_t before = LiveXmlObjects();
};

TEST_F(ANewObject, MadeOfANumberHasItsDigits) {
  const Node node = H7XML::CreateXmlNode("id", 4294967295UL);
  EXPECT_EQ(node->GetValue(), "4294967295");
  EXPECT_EQ(node->GetValueULong(), 4294967295UL);
}

TEST_F(ANewObject, MayBeEmptyAndCarriesOneReference) {
  Node node;
  H7XML::Create(node.Receive());
  EXPECT_EQ(node->GetName(), "");
  EXPECT_EQ(node->GetValue(), "");
  EXPECT_EQ(LiveXmlObjects(), before + 1);
}

class FailingObserver : public XmlObserver {
 public:
  FailingObserver() { SetXmlObserver(this); }
  ~FailingObserver() override { SetXmlObserver(nullptr); }
  void OnXmlCall(const char* operation, const char* name) override {
    calls.push_back(std::string(operation) + "(" + name + ")");
    if (calls.size() == failing) {
      throw std::runtime_error("refused");
    }
  }
  std::vector<std::string> calls;
  std::size_t failing = 0;
};

TEST_F(ANewObject, IsSeenByTheObserverAtEveryCall) {
  FailingObserver observer;
  const Node node = H7XML::CreateXmlNode("n", "v");
  node->AddChildInt("id", 1);
  node->SetNamedString("a", "b");
  node->GetChildren()->First();
  Node empty;
  H7XML::Create(empty.Receive());
  empty->SetName("x");
  node->AppendChild(*empty);
  H7XML::CreateXmlDocument("<d/>")->GetRootElement();
  EXPECT_THAT(observer.calls,
              ElementsAre("CreateXmlNode(n)", "AddChildInt(id)", "SetNamedString(a)", "GetChildren()", "First()", "Create()",
                          "SetName(x)", "AppendChild()", "CreateXmlDocument(<d/>)", "GetRootElement()"));
}

TEST_F(ANewObject, IsUnchangedByACallThatTheObserverRefuses) {
  FailingObserver observer;
  const Node node = H7XML::CreateXmlNode("n", "v");
  observer.failing = observer.calls.size() + 1;
  EXPECT_THROW(node->SetValue("w"), std::runtime_error);
  EXPECT_EQ(node->GetValue(), "v");
}

TEST_F(ANewObject, MayBeADocumentThatKeepsItsRoot) {
  const h7::auto_com<H7XML::IDocument> document = H7XML::CreateXmlDocument("<a><b/></a>");
  EXPECT_EQ(LiveXmlObjects(), before + 1);
  EXPECT_EQ(LiveXmlObjectsSince(0).front().description, "document \"a\"");
  document->GetRootElement()->SetValue("kept");
  EXPECT_EQ(document->GetRootElement()->GetValue(), "kept");
}

TEST(TheTextsOfTypes, AreReadBack) {
  EXPECT_EQ(h7::ToString(true), "true");
  EXPECT_EQ(h7::ToString(false), "false");
  EXPECT_EQ(h7::ToString(0UL), "0");
  EXPECT_EQ(h7::ToString(4294967295UL), "4294967295");
}

}  // namespace
}  // namespace devhost
