#include "devhost/replay/Conversation.h"

#include <gmock/gmock.h>

namespace devhost {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

const DriverNames& Names() {
  static const DriverNames names({{1, "agent", "", "", ""}, {12, "kitchen", "", "", ""}});
  return names;
}

Conversation Read(const std::string& text) {
  return ReadConversation("talk", text, Names(), "/home/house");
}

// What is wrong with a conversation.
std::string ProblemOf(const std::string& text) {
  try {
    Read(text);
  } catch (const ConversationError& error) {
    return error.what();
  }
  return "";
}

TEST(ACommand, IsPlayedToItsDriverAndComparedToo) {
  const Conversation read = Read(
      "{\"n\":1,\"line\":4,\"kind\":\"command\",\"driver\":\"kitchen\",\"driverId\":12,\"name\":\"SetSetting\","
      "\"parameters\":{\"name\":\"sysName\",\"value\":\"@x\"}}\n");
  ASSERT_EQ(read.lines.size(), 1U);
  EXPECT_EQ(read.lines[0].number, 1U);
  EXPECT_EQ(read.lines[0].json,
            "{\"kind\":\"command\",\"driver\":\"kitchen\",\"driverId\":12,\"name\":\"SetSetting\","
            "\"parameters\":{\"name\":\"sysName\",\"value\":\"@x\"}}");
  const CommandAction& command = std::get<CommandAction>(read.lines[0].action.value());
  EXPECT_EQ(command.driverId, 12U);
  EXPECT_EQ(command.name, "SetSetting");
  ASSERT_EQ(command.parameters.size(), 2U);
  EXPECT_EQ(command.parameters[1].value, "@x");
  EXPECT_FALSE(command.parameters[1].isFile);
}

TEST(AnAnswer, IsComparedAndNotPlayed) {
  for (const char* const kind :
       {"load", "unload", "reply", "notification", "log", "invalidate", "status", "manners", "error"}) {
    const Conversation read = Read(std::string("{\"kind\":\"") + kind + "\",\"driver\":\"agent\"}");
    ASSERT_EQ(read.lines.size(), 1U) << kind;
    EXPECT_FALSE(read.lines[0].action) << kind;
  }
}

TEST(WhatAScriptSays, IsNeitherPlayedNorCompared) {
  EXPECT_THAT(Read("{\"kind\":\"print\",\"line\":1,\"text\":\"a\"}\n{\"kind\":\"expect\",\"line\":2}\n"
                   "{\"kind\":\"error\",\"line\":3,\"text\":\"a\"}\n{\"kind\":\"done\",\"good\":true}\n")
                  .lines,
              IsEmpty());
}

TEST(WhatIsShown, IsAskedForAgain) {
  const Conversation read = Read(
      "{\"kind\":\"file\",\"driver\":\"kitchen\",\"text\":\"\"}\n{\"kind\":\"state\",\"driver\":\"agent\",\"xml\":\"\"}\n"
      "{\"kind\":\"variables\",\"variables\":[]}\n{\"kind\":\"restart\"}\n"
      "{\"kind\":\"flag\",\"deviceId\":5,\"variableId\":7,\"trapEnabled\":true}\n"
      "{\"kind\":\"event\",\"name\":\"OnProjectLoaded\",\"parameters\":{\"a\":[\"1\",\"2\"]}}\n");
  ASSERT_EQ(read.lines.size(), 6U);
  EXPECT_EQ(std::get<ShowAction>(*read.lines[0].action).what, ScriptOccurrence::Kind::File);
  EXPECT_EQ(std::get<ShowAction>(*read.lines[0].action).driverId, 12U);
  EXPECT_EQ(std::get<ShowAction>(*read.lines[1].action).what, ScriptOccurrence::Kind::State);
  EXPECT_EQ(std::get<ShowAction>(*read.lines[2].action).what, ScriptOccurrence::Kind::Variables);
  EXPECT_TRUE(std::holds_alternative<RestartAction>(*read.lines[3].action));
  EXPECT_EQ(std::get<FlagAction>(*read.lines[4].action).variableId, 7U);
  EXPECT_EQ(std::get<EventAction>(*read.lines[5].action).parameters.size(), 2U);
}

TEST(WhatDiffersFromRunToRun, IsNotCompared) {
  EXPECT_EQ(
      ComparedLine("{\"n\":3,\"line\":2,\"kind\":\"daemon\",\"running\":true,\"pid\":7,\"address\":\"udp:127.0.0.1:4\"}",
                   "/home/house"),
      "{\"kind\":\"daemon\",\"running\":true}");
  EXPECT_EQ(ComparedLine("{\"kind\":\"load\",\"module\":\"/x/y.so\"}", "/home/house"), "{\"kind\":\"load\"}");
  EXPECT_EQ(
      ComparedLine("{\"kind\":\"log\",\"text\":\"/home/house/a on Sunday, November, 22 2026 at 15:09:18\"}", "/home/house"),
      "{\"kind\":\"log\",\"text\":\"{project}/a on {time}\"}");
}

TEST(AnErrorOfAReplay, IsComparedWhereverItComesFrom) {
  EXPECT_NE(ComparedLine("{\"line\":3,\"kind\":\"error\",\"text\":\"a\"}", "/x"), "");
  EXPECT_EQ(ComparedLine("{\"line\":3,\"kind\":\"done\",\"good\":true}", "/x"), "");
}

TEST(AConversation, IsRefusedWithItsLine) {
  const std::string good = "{\"kind\":\"restart\"}\n";
  EXPECT_EQ(ProblemOf(good + "nothing"), "talk:2: the line is not JSON");
  EXPECT_EQ(ProblemOf(good + "\n" + good), "talk:2: the line is not JSON");
  EXPECT_EQ(ProblemOf("[1]"), "talk:1: the line is not a JSON object");
  EXPECT_EQ(ProblemOf("{}"), "talk:1: there is no text \"kind\"");
  EXPECT_EQ(ProblemOf("{\"kind\":7}"), "talk:1: there is no text \"kind\"");
  EXPECT_EQ(ProblemOf("{\"kind\":\"x\"}"), "talk:1: the kind \"x\" is not known");
  EXPECT_EQ(ProblemOf("{\"kind\":\"run\",\"text\":\"rm\"}"), "talk:1: a replay runs no programs; remove the line");
  EXPECT_THAT(ProblemOf("{\"kind\":\"command\",\"driver\":\"cellar\",\"name\":\"x\",\"parameters\":{}}"),
              HasSubstr("talk:1: "));
  EXPECT_EQ(ProblemOf("{\"kind\":\"command\",\"driver\":\"agent\",\"name\":\"x\"}"),
            "talk:1: there is no object \"parameters\"");
  EXPECT_EQ(ProblemOf("{\"kind\":\"command\",\"driver\":\"agent\",\"name\":\"x\",\"parameters\":{\"a\":1}}"),
            "talk:1: the parameter \"a\" is not a text");
  EXPECT_EQ(ProblemOf("{\"kind\":\"event\",\"name\":\"OnVariableAdded\",\"parameters\":{}}"),
            "talk:1: a replay does not add or remove variables; allowed: the project's own variables");
  EXPECT_EQ(ProblemOf("{\"kind\":\"flag\",\"deviceId\":-5,\"variableId\":7,\"trapEnabled\":true}"),
            "talk:1: there is no \"deviceId\"; allowed: a whole number from 0 to 4294967295");
  EXPECT_EQ(ProblemOf("{\"kind\":\"reply\",\"x\":" + std::string(100000, '[')), "talk:1: the line is nested too deeply");
}

// It would be sent as it stands, and become the community.
TEST(AMaskedValue, IsRefused) {
  for (const char* const value : {"*****", "<a><b>*****</b></a>"}) {
    EXPECT_EQ(ProblemOf("{\"kind\":\"command\",\"driver\":\"agent\",\"name\":\"x\",\"parameters\":{\"a\":\"" +
                        std::string(value) + "\"}}"),
              "talk:1: a value is *****; allowed: what is recorded with --show-secrets");
  }
}

}  // namespace
}  // namespace devhost
