#include <gmock/gmock.h>

#include <filesystem>
#include <string>

#include "tests/devhost/commands/CommandsFixture.h"

namespace devhost {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

class ReplayCommand : public CommandsFixture {
 protected:
  Outcome Replay(const std::vector<std::string>& words) const {
    std::vector<std::string> all = {"replay", "--module-dir", MODULE_FOLDER};
    all.insert(all.end(), words.begin(), words.end());
    return Run(all);
  }

  static std::string Recorded(const std::string& name) { return SOURCE_FOLDER "/contract/conversations/" + name; }
};

TEST_F(ReplayCommand, SaysThatThereIsNoDifference) {
  const Outcome outcome = Replay({Recorded("empty-project"), Recorded("large-id") + "/conversation.ndjson"});
  EXPECT_EQ(outcome.status, ExitStatus::Good) << outcome.errors;
  EXPECT_EQ(outcome.out, Recorded("empty-project") + "/conversation.ndjson: 4 lines, no difference\n" +
                             Recorded("large-id") + "/conversation.ndjson: 18 lines, no difference\n");
}

TEST_F(ReplayCommand, ShowsTheFirstDifferenceAndGoesOnWithTheNextConversation) {
  std::filesystem::copy(Recorded("empty-project"), folder.Path("a"));
  std::filesystem::copy(Recorded("empty-project"), folder.Path("b"));
  std::string text = folder.Read("a/conversation.ndjson");
  text.replace(text.find("<managedDevices/>"), 17, "<Fail/>");
  const std::string file = File("a/conversation.ndjson", text);
  const Outcome outcome = Replay({folder.Path()});
  EXPECT_EQ(outcome.status, ExitStatus::Failed);
  EXPECT_EQ(outcome.out, file +
                             ":3: the member \"xml\" of the reply of agent differs\n"
                             "    expected: <Fail/>\n"
                             "    found:    <managedDevices/>\n" +
                             folder.Path("b/conversation.ndjson") + ": 4 lines, no difference\n");
}

TEST_F(ReplayCommand, EndsWithTwoWhenAConversationIsWrong) {
  File("project.xml", "<project><driver id='1' name='agent' module='snmp_configuration_agent.so'/></project>");
  const Outcome outcome = Replay({File("conversation.ndjson", "{}\n")});
  EXPECT_EQ(outcome.status, ExitStatus::Wrong);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.errors, EndsWith("conversation.ndjson:1: there is no text \"kind\"\n"));
  EXPECT_EQ(Replay({folder.Path("missing")}).status, ExitStatus::Wrong);
  std::filesystem::create_directory(folder.Path("empty"));
  EXPECT_EQ(Replay({folder.Path("empty")}).status, ExitStatus::Wrong);
}

TEST_F(ReplayCommand, EndsWithTwoWhenAModuleCannotBeLoaded) {
  File("project.xml", "<project><driver id='1' name='agent' module='./no.so'/></project>");
  File("no.so", "no module");
  const Outcome outcome = Replay({File("conversation.ndjson", "")});
  EXPECT_EQ(outcome.status, ExitStatus::Wrong);
  EXPECT_THAT(outcome.errors, StartsWith("devhost: "));
  EXPECT_THAT(outcome.errors, HasSubstr("no.so"));
}

}  // namespace
}  // namespace devhost
