#include "devhost/session/Conversation.h"

#include "tests/devhost/session/SessionFixture.h"

namespace devhost {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;

using AConversation = SessionFixture;

TEST_F(AConversation, ListsWhatCanBeSaid) {
  Start();
  const Json known = Ask("GET", "/commands").body;
  ASSERT_THAT(known.at("drivers"), SizeIs(2));
  EXPECT_EQ(known.at("drivers")[0].at("commands")[0], "GetDeviceList");
  EXPECT_THAT(known.at("events").dump(), HasSubstr("OnVariableRemoved"));
}

TEST_F(AConversation, PassesCommandAndReplyOnAsTheyAre) {
  Start();
  const Reply reply = Tell(1, "AddManagedDevice", {{"deviceId", "12"}});
  EXPECT_EQ(reply.body, Json::parse(R"({"reply":"<deviceId>12</deviceId>"})"));
  EXPECT_THAT(Events("notification").back().at("xml").get<std::string>(), HasSubstr("ManagedDeviceAdded"));
}

TEST_F(AConversation, LearnsWhatIsTypedBeforeItSaysAnything) {
  Start();
  // Neither the driver nor the command exists, and yet the value must not come back, now or later.
  EXPECT_EQ(Tell(99, "SetSetting", {{"name", "communityRead"}, {"value", "hidden1"}}).status, 404);
  EXPECT_EQ(Tell(12, "hidden2", {{"community", "hidden1"}}).status, 404);
  Tell(12, "SetSetting", {{"name", "sysName"}, {"value", "of hidden1 fame"}});
  Tell(12, "GetSettings");
  EXPECT_THAT(Said(), Not(HasSubstr("hidden")));
}

TEST_F(AConversation, RefusesAWrongBody) {
  Start();
  const Json good = {{"driver", 1}, {"name", "GetDeviceList"}, {"parameters", Json::object()}};
  for (const auto& [member, value] : std::vector<std::pair<std::string, Json>>{{"driver", "1"},
                                                                               {"driver", -1},
                                                                               {"driver", 4294967297},
                                                                               {"name", 1},
                                                                               {"parameters", Json::array()},
                                                                               {"parameters", {{"a", 1}}},
                                                                               {"parameters", {{"a", {1}}}},
                                                                               {"other", 1}}) {
    Json wrong = good;
    wrong[member] = value;
    EXPECT_EQ(Ask("POST", "/command", wrong).ErrorCode(), "wrong-body") << wrong;
  }
  EXPECT_EQ(Ask("POST", "/command", good).status, 200);
}

TEST_F(AConversation, SendsSystemEvents) {
  project.variables = {{5, 7, "lamp"}};
  Start();
  EXPECT_EQ(Ask("POST", "/event", {{"name", "OnItemRemoved"}, {"parameters", {{"iditem", {"5", "6"}}}}}).status, 200);
  EXPECT_EQ(Events("event").back().at("parameters"), Json::parse(R"({"iditem":["5","6"]})"));
  const Reply unknown = Ask("POST", "/event", {{"name", "OnHidden"}, {"parameters", Json::object()}});
  EXPECT_EQ(unknown.status, 422);
  EXPECT_THAT(unknown.ErrorText(), AllOf(HasSubstr("OnProjectLoaded"), Not(HasSubstr("OnHidden"))));
}

TEST_F(AConversation, SetsTheFlagOfAVariable) {
  project.variables = {{5, 7, "lamp"}, {6, 1, "scene", true}};
  Start();
  EXPECT_EQ(Ask("PUT", "/variables/6/1", {{"trapEnabled", true}}).status, 200);
  EXPECT_EQ(Ask("PUT", "/variables/6/2", {{"trapEnabled", true}}).status, 404);
  EXPECT_EQ(Ask("PUT", "/variables/6/1", {{"trapEnabled", "true"}}).status, 422);
  const Json variables = Ask("GET", "/variables").body.at("variables");
  ASSERT_THAT(variables, SizeIs(2));
  EXPECT_EQ(variables[0].at("trapEnabled"), false);
  EXPECT_EQ(variables[1].at("trapEnabled"), true);
  EXPECT_EQ(variables[1].at("kind"), "userVariable");
  EXPECT_EQ(Events("flag").size(), 1U);
}

}  // namespace
}  // namespace devhost
