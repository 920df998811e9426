#include "devhost/conform/ToolSession.h"

#include <gmock/gmock.h>

#include <string>

#include "devhost/conform/Check.h"
#include "devhost/system/RunProgram.h"
#include "tests/devhost/conform/Conforming.h"

namespace devhost {
namespace {

using testing::HasSubstr;

class AToolSession : public testing::Test {
 protected:
  Trial MakeTrial(const std::string& fault) const {
    Trial trial(SkeletonModule(fault), folder.Path(), {}, 7);
    trial.agent = MODULE_FOLDER "/snmp_configuration_agent.so";
    return trial;
  }

  const testsupport::ScratchFolder folder;
};

TEST_F(AToolSession, FindsWhatItHasSetInTheList) {
  Trial trial = MakeTrial("none");
  Bench bench(trial);
  ToolSession session(bench);
  session.ExpectList();
  session.Set(RandomToolSettings(trial, 3));
  session.ExpectList();
  session.Manage(false);
  session.ExpectList();
}

TEST_F(AToolSession, SaysWhatTheListHasInstead) {
  Trial trial = MakeTrial("ignored-setters");
  Bench bench(trial);
  ToolSession session(bench);
  session.Set(RandomToolSettings(trial, 1));
  try {
    session.ExpectList();
    FAIL();
  } catch (const Violation& violation) {
    EXPECT_THAT(violation.what(), HasSubstr("the list of devices has \"snmpSysContactSetting=\" instead of \""));
  }
}

TEST_F(AToolSession, NamesAWrongCommunityAndDoesNotShowIt) {
  Trial trial = MakeTrial("changes-communities");
  Bench bench(trial);
  ToolSession session(bench);
  session.Set(RandomToolSettings(trial, 1));
  try {
    session.ExpectList();
    FAIL();
  } catch (const Violation& violation) {
    EXPECT_STREQ(violation.what(), "the list of devices has in snmpTrapTargets another community");
  }
}

TEST_F(AToolSession, SaysWhatTheAgentHasAnswered) {
  Trial trial = MakeTrial("whole-agent");
  Bench bench(trial);
  ToolSession session(bench);
  try {
    session.Set(RandomToolSettings(trial, 1));
    FAIL();
  } catch (const Violation& violation) {
    EXPECT_THAT(violation.what(), HasSubstr("answered SetDeviceState with \"<WriteFail/>\" instead of \"<Success/>\""));
  }
}

TEST_F(AToolSession, NeedsADeviceThatTheAgentKnows) {
  Trial trial = MakeTrial("life-agent-first");
  Bench bench(trial);
  EXPECT_THROW(ToolSession session(bench), Blocked);
}

// What a random session is cut down to, as a script with its project.
class AScriptOfARandomSession : public AToolSession {
 protected:
  ProgramResult PlayWith(const std::string& fault, const std::string& script) const {
    folder.Write("device/empty", "");
    const std::string project =
        folder.Write("project.xml",
                     "<project><driver id='1' name='agent' module='snmp_configuration_agent.so'/><driver id='12' "
                     "name='device' module='" +
                         SkeletonModule(fault) + "'><config folder='{project}/device'/></driver></project>");
    ProgramRun run;
    run.words = SkeletonConformance("none").runner;
    run.words.insert(run.words.end(),
                     {DEVHOST_PROGRAM, "run", "--project", project, folder.Write("session.devhost", script)});
    return RunProgram(run);
  }
};

std::size_t CountOf(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++count;
  }
  return count;
}

TEST_F(AScriptOfARandomSession, FailsAsTheSessionDidAndHasNothingElse) {
  const Outcome outcome = OutcomeOf(UntilAFinding("fuzz-session"), "fuzz-session");
  ASSERT_EQ(outcome.status, Outcome::Status::Fail) << outcome.message;
  // The skeleton ignores the twelfth name.
  EXPECT_EQ(CountOf(outcome.script, "command SetDeviceState "), 12U);
  EXPECT_EQ(CountOf(outcome.script, "command GetDeviceList\n"), 1U);
  EXPECT_EQ(CountOf(outcome.script, "ManagedDevice deviceId=12"), 1U);
  EXPECT_EQ(PlayWith("fuzz-session", outcome.script).exitStatus, 1);
  const ProgramResult good = PlayWith("none", outcome.script);
  EXPECT_EQ(good.exitStatus, 0) << good.output;
}

TEST_F(AScriptOfARandomSession, IsThereForADeviceThatCrashes) {
  const Outcome outcome = OutcomeOf(UntilAFinding("crashes"), "fuzz-session");
  EXPECT_EQ(outcome.status, Outcome::Status::Fail);
  EXPECT_THAT(outcome.message, HasSubstr("ended by signal 6"));
  EXPECT_THAT(outcome.message, HasSubstr(", after 1 step"));
  EXPECT_THAT(outcome.script, HasSubstr("command SetDeviceState xml="));
}

}  // namespace
}  // namespace devhost
