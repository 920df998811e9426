#include <gmock/gmock.h>

#include "tests/devhost/commands/CommandsFixture.h"

namespace devhost {
namespace {

class TheCommandCompletion : public CommandsFixture {};

TEST_F(TheCommandCompletion, PrintsTheScriptOfTheShell) {
  for (const std::string shell : {"bash", "zsh", "fish"}) {
    const Outcome outcome = Run({"completion", shell});
    EXPECT_EQ(outcome.status, ExitStatus::Good);
    EXPECT_EQ(outcome.out, testsupport::ScratchFolder::ReadFile(SOURCE_FOLDER "/devhost/commands/shells/devhost." + shell));
  }
}

TEST_F(TheCommandCompletion, SaysWhichShellsThereAre) {
  const Outcome outcome = Run({"completion", "tcsh"});
  EXPECT_EQ(outcome.status, ExitStatus::Wrong);
  EXPECT_THAT(outcome.errors, testing::HasSubstr("\"tcsh\" is unknown; allowed: bash, zsh, fish"));
}

}  // namespace
}  // namespace devhost
