#include <gmock/gmock.h>

#include <string>

#include "tests/devhost/commands/CommandsFixture.h"

namespace devhost {
namespace {

using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

using ModuleCommand = CommandsFixture;

TEST_F(ModuleCommand, PrintsWhatTheAgentStates) {
  const Outcome outcome = Run({"module", MODULE_FOLDER "/snmp_configuration_agent.so"});
  EXPECT_EQ(outcome.status, ExitStatus::Good);
  EXPECT_THAT(outcome.out, MatchesRegex("version [0-9.]+\ncontract [0-9]+\nenterprise [0-9]+\nprocessor [a-z0-9]+\n"));
}

TEST_F(ModuleCommand, PrintsNoEnterpriseNumberOfADriver) {
  const Outcome outcome = Run({"module", MODULE_FOLDER "/simulated_device.so"});
  EXPECT_EQ(outcome.status, ExitStatus::Good);
  EXPECT_THAT(outcome.out, Not(HasSubstr("enterprise")));
}

TEST_F(ModuleCommand, RefusesWhatIsNotAModule) {
  const Outcome outcome = Run({"module", File("a.so", "text")});
  EXPECT_EQ(outcome.status, ExitStatus::Wrong);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.errors, "devhost: \"" + folder.Path("a.so") + "\" is not a module: it is not an ELF file\n");
}

TEST_F(ModuleCommand, RefusesAFileThatIsMissing) {
  const Outcome outcome = Run({"module", folder.Path("missing")});
  EXPECT_EQ(outcome.status, ExitStatus::Wrong);
  EXPECT_THAT(outcome.errors, HasSubstr("devhost: cannot read "));
}

}  // namespace
}  // namespace devhost
