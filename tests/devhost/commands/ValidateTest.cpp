#include <gmock/gmock.h>

#include <string>

#include "tests/devhost/commands/CommandsFixture.h"

namespace devhost {
namespace {

using testing::HasSubstr;

class ValidateCommand : public CommandsFixture {
 protected:
  static std::string Example(const std::string& name) { return SOURCE_FOLDER "/contract/examples/" + name; }
};

TEST_F(ValidateCommand, SaysThatARightFileHasNoFindings) {
  const Outcome outcome = Run({"validate", Example("settings.xml")});
  EXPECT_EQ(outcome.status, ExitStatus::Good);
  EXPECT_EQ(outcome.out, Example("settings.xml") + ": no findings\n");
}

TEST_F(ValidateCommand, NamesLineRuleAndWhatToDo) {
  const std::string file = Example("settings-capitals-invalid.xml");
  const Outcome outcome = Run({"validate", file});
  EXPECT_EQ(outcome.status, ExitStatus::Failed);
  EXPECT_EQ(outcome.out, file + ":4: error: <snmpEnabledSetting> has a value that is not allowed [value-wrong]\n" +
                             "    allowed: true or false\n" + file + ": 1 error, 0 warnings\n");
}

TEST_F(ValidateCommand, WritesJsonLinesAndNothingElse) {
  const std::string file = Example("success-invalid.xml");
  EXPECT_EQ(Run({"validate", "--json", file, Example("success.xml")}).out,
            "{\"file\":\"" + file +
                "\",\"line\":1,\"severity\":\"error\",\"rule\":\"text-misplaced\",\"reason\":\"<Success> is not empty\","
                "\"remedy\":\"write <Success/>\"}\n");
}

TEST_F(ValidateCommand, ReadsAReplyByTheOrderOfReplies) {
  const std::string settings = "<managedDevice><deviceId>1</deviceId><snmpTrapTargets/></managedDevice>";
  EXPECT_THAT(RunOn(settings, {"validate", "--reply", "-"}).out,
              HasSubstr("standard input:1: error: <snmpTrapTargets> stands"));
  EXPECT_THAT(RunOn(settings, {"validate", "-"}).out, testing::Not(HasSubstr("[element-order]")));
}

TEST_F(ValidateCommand, FindsThatAFileIsNotXml) {
  const Outcome outcome = Run({"validate", Example("markup-invalid.xml")});
  EXPECT_EQ(outcome.status, ExitStatus::Failed);
  EXPECT_THAT(outcome.out, HasSubstr("[not-xml]"));
}

TEST_F(ValidateCommand, GoesOnAfterAFileThatItCannotRead) {
  const Outcome outcome = Run({"validate", folder.Path("missing"), Example("success.xml")});
  EXPECT_EQ(outcome.status, ExitStatus::Wrong);
  EXPECT_THAT(outcome.errors, HasSubstr("devhost: cannot read "));
  EXPECT_THAT(outcome.out, HasSubstr("success.xml: no findings\n"));
}

}  // namespace
}  // namespace devhost
