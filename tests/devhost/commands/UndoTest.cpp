#include <gmock/gmock.h>

#include "tests/devhost/commands/DeviceFixture.h"

namespace devhost {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

using UndoCommand = DeviceFixture;

TEST_F(UndoCommand, PutsTheLastChangeBack) {
  const Outcome outcome = Do("undo", {"--yes"});
  EXPECT_EQ(outcome.status, ExitStatus::Good);
  EXPECT_EQ(outcome.out,
            "snmpSysNameSetting: \"attic\" -> \"kitchen\"\n"
            "kitchen is changed; snapshot 3 has what was there before\n");
  EXPECT_THAT(Conf(), AllOf(HasSubstr("\nsysName  kitchen\n"), HasSubstr("\nrocommunity  hidden\n")));
  EXPECT_THAT(Do("history").out, HasSubstr("  undo 2  snmpSysNameSetting\n"));
}

TEST_F(UndoCommand, SaysWhatTheAgentDoesNotPutBack) {
  const Outcome outcome = Do("undo", {"1", "--yes"});
  EXPECT_EQ(outcome.status, ExitStatus::Good);
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("\nthe agent does not put this back:\n--- snmpd.conf of kitchen after the undo\n"
                                           "+++ snmpd.conf of kitchen in snapshot 1\n"),
                                 HasSubstr("\n-# Halvoren Section Start\n"), Not(HasSubstr("hidden"))));
  EXPECT_THAT(Conf(), AllOf(HasSubstr("# Halvoren Section Start"), Not(HasSubstr("sysName"))));
}

TEST_F(UndoCommand, HasTheGuardsOfApply) {
  EXPECT_THAT(Do("undo").errors, HasSubstr("allowed: --yes, --dry-run, or a terminal"));
  const Outcome dry = Do("undo", {"--dry-run", "--diff"});
  EXPECT_EQ(dry.status, ExitStatus::Failed);
  EXPECT_THAT(dry.out, HasSubstr("\n-sysName  attic\n+sysName  kitchen\n"));
  EXPECT_THAT(Conf(), HasSubstr("\nsysName  attic\n"));
}

TEST_F(UndoCommand, SaysThatThereIsNothingToPutBack) {
  const Outcome none = Do("undo", {"--yes", "--snapshots", folder.Path("nowhere")});
  EXPECT_EQ(none.status, ExitStatus::Wrong);
  EXPECT_THAT(none.errors, HasSubstr("there is no snapshot of this device"));
}

}  // namespace
}  // namespace devhost
