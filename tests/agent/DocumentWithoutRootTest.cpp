#include "host/H7XML.h"
#include "tests/support/AgentFixture.h"
#include "tests/support/RecordingDevice.h"

// This is a program of its own. Its host's parser makes documents without a root element; the development host never does.
namespace {

class Rootless final : public H7XML::IDocument {
 public:
  void AddRef() const override { ++references; }
  void Release() const override { --references; }
  h7::auto_com<H7XML::INode> GetRootElement() const override {
    ++asked;
    return {};
  }

  mutable int references = 0;
  mutable int asked = 0;
};

Rootless s_document;

}  // namespace

namespace H7XML {

// The program's definition takes precedence over the one in the host's library.
h7::auto_com<IDocument> CreateXmlDocument(const std::string&) {
  s_document.AddRef();
  return h7::auto_com<IDocument>(&s_document);
}

}  // namespace H7XML

namespace {

class ADocumentWithoutARoot : public AgentTest {
 protected:
  void SetUp() override {
    s_document.asked = 0;
    agent.Driver().RegisterCommands();
    agent->AddSNMPDevice(0, &zero);
    journal.Take();
  }
  void TearDown() override {
    AgentTest::TearDown();
    EXPECT_EQ(s_document.references, 0);
  }

  testsupport::RecordingDevice zero{0, journal};
};

TEST_F(ADocumentWithoutARoot, FailsARequestBeforeAnyDeviceIsTouched) {
  EXPECT_EQ(host.CommandText("SetDeviceState", {{"xml", "<managedDevice/>"}}), "<Fail/>");
  EXPECT_EQ(s_document.asked, 1);
  EXPECT_THAT(journal.Calls(), testing::IsEmpty());
}

TEST_F(ADocumentWithoutARoot, LeavesTheVariableMapsEmpty) {
  State().deviceVariables[VariableKey(1, 2)] = nullptr;
  State().userVariables[VariableKey(1, 3)] = nullptr;
  host.SendEvent("OnProjectLoaded");
  EXPECT_EQ(s_document.asked, 2);
  EXPECT_TRUE(State().deviceVariables.empty());
  EXPECT_TRUE(State().userVariables.empty());
}

}  // namespace
