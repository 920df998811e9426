#include "devhost/xml/XmlCounted.h"

#include <gmock/gmock.h>
#include <malloc.h>

#include <thread>
#include <vector>

#include "devhost/driver/DriverModule.h"
#include "devhost/xml/XmlMisuse.h"
#include "devhost/xml/XmlObserver.h"
#include "devhost/xml/XmlReader.h"
#include "host/H7XML.h"

namespace devhost {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Node = h7::auto_com<H7XML::INode>;

class MisusedXml : public testing::Test, public XmlMisuseSink {
 protected:
  MisusedXml() { SetXmlMisuseSink(this); }
  ~MisusedXml() override { SetXmlMisuseSink(nullptr); }
  void OnXmlMisuse(const std::string& what, const void* code) override {
    reports.push_back(what);
    culprits.push_back(ModuleFileOf(code));
  }
  void TearDown() override {
    EXPECT_EQ(LiveXmlObjects(), before);
    for (const std::string& culprit : culprits) {
      EXPECT_THAT(culprit, HasSubstr("devhost_xml_test"));
    }
  }

  const std::size_t before = LiveXmlObjects();
  std::vector<std::string> reports;
  std::vector<std::string> culprits;
};

TEST_F(MisusedXml, ReportsASecondReleaseOfAnElementThatIsGone) {
  H7XML::INode* const node = H7XML::CreateXmlNode("n", "").Detach();
  node->Release();
  node->Release();
  EXPECT_THAT(reports, ElementsAre("an XML object was released once more than it was referenced"));
}

TEST_F(MisusedXml, ReportsASecondReleaseOfAnElementInATree) {
  const Node root = ReadXmlNode("<a><b/></a>");
  H7XML::INode* const child = root->GetChild("b").Detach();
  child->Release();
  child->Release();
  EXPECT_THAT(reports, ElementsAre("the XML node \"b\" was released once more than it was referenced"));
  EXPECT_EQ(XmlText(*root, XmlStyle::Compact), "<a><b/></a>");
}

TEST_F(MisusedXml, ReportsASecondReleaseOfAChildWhoseTreeIsGone) {
  Node root = ReadXmlNode("<a><b/></a>");
  H7XML::INode* const child = root->GetChild("b").Detach();
  child->Release();
  root.Reset();
  child->Release();
  EXPECT_THAT(reports, ElementsAre(HasSubstr("released once more")));
}

TEST_F(MisusedXml, ReportsASecondReleaseOfListsAndDocuments) {
  H7XML::INodeList* const list = ReadXmlNode("<a/>")->GetChildren().Detach();
  list->Release();
  list->Release();
  H7XML::IDocument* const document = H7XML::CreateXmlDocument("<a/>").Detach();
  document->Release();
  document->Release();
  EXPECT_EQ(reports.size(), 2U);
}

TEST_F(MisusedXml, AnswersWithNothingWhenItIsUsedAfterTheLastRelease) {
  H7XML::INode* const node = H7XML::CreateXmlNode("n", "v").Detach();
  H7XML::IDocument* const document = H7XML::CreateXmlDocument("<a/>").Detach();
  H7XML::INodeList* const list = ReadXmlNode("<a><b/></a>")->GetChildren().Detach();
  node->Release();
  document->Release();
  list->Release();
  EXPECT_EQ(node->GetName(), "");
  EXPECT_EQ(node->GetNamedULong("x"), 0U);
  node->AddChildString("a", "b");
  EXPECT_FALSE(node->GetChild("a"));
  EXPECT_FALSE(node->GetChildren()->First());
  EXPECT_FALSE(document->GetRootElement());
  EXPECT_FALSE(list->First());
  EXPECT_FALSE(list->Next());
  node->AddRef();
  const Node other = H7XML::CreateXmlNode("o", "");
  other->AppendChild(*node);
  EXPECT_EQ(XmlText(*other, XmlStyle::Compact), "<o/>");
  EXPECT_THAT(reports.front(), HasSubstr("used (GetName) after its last reference was released"));
  EXPECT_EQ(reports.size(), 10U);
}

TEST_F(MisusedXml, HoldsOnlySoManyReleasedObjectsBack) {
  const std::size_t used = mallinfo2().uordblks;
  for (int i = 0; i != 100000; ++i) {
    H7XML::CreateXmlNode("n", std::string(1000, 'x'));
  }
  // A thousand empty objects or so, not a hundred thousand.
  EXPECT_LT(mallinfo2().uordblks, used + 1000000);
  EXPECT_THAT(reports, IsEmpty());
}

TEST_F(MisusedXml, IsCountedRightWhenSeveralThreadsTakeAndReleaseHandles) {
  const Node shared = H7XML::CreateXmlNode("shared", "");
  std::vector<std::thread> threads;
  for (int i = 0; i != 4; ++i) {
    threads.emplace_back([&shared] {
      for (int round = 0; round != 20000; ++round) {
        const Node own = H7XML::CreateXmlNode("own", "");
        const Node copy = shared;
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(LiveXmlObjects(), before + 1);
  EXPECT_THAT(reports, IsEmpty());
}

TEST_F(MisusedXml, KnowsWhatIsAliveAndWhoHoldsIt) {
  const Node old = H7XML::CreateXmlNode("old", "");
  const std::uint64_t mark = XmlMark();
  const Node node = H7XML::CreateXmlNode("new", "");
  const Node copy = node;
  const std::vector<LiveXmlObject> alive = LiveXmlObjectsSince(mark);
  ASSERT_EQ(alive.size(), 1U);
  EXPECT_EQ(alive[0].description, "node \"new\"");
  EXPECT_THAT(ModuleFileOf(alive[0].creator), HasSubstr("devhost_xml_test"));
  EXPECT_THAT(ModuleFileOf(alive[0].lastHolder), HasSubstr("devhost_xml_test"));
}

TEST_F(MisusedXml, HasNoSinkInTheBeginning) {
  EXPECT_EQ(SetXmlMisuseSink(nullptr), static_cast<XmlMisuseSink*>(this));
  testing::internal::CaptureStderr();
  H7XML::INode* const node = H7XML::CreateXmlNode("n", "").Detach();
  node->Release();
  node->Release();
  EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("released once more"));
}

}  // namespace
}  // namespace devhost
