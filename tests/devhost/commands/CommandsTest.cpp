#include "devhost/commands/Commands.h"

#include <gmock/gmock.h>

#include <set>
#include <string>

#include "tests/devhost/commands/CommandsFixture.h"

namespace devhost {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

TEST(TheCommands, SayInOneLineWhatTheyAndTheirOptionsAreFor) {
  std::set<std::string> names;
  for (const Command& command : Commands()) {
    EXPECT_TRUE(names.insert(command.name).second) << command.name;
    EXPECT_THAT(command.meaning, testing::MatchesRegex("[^\n]+")) << command.name;
    EXPECT_NE(command.run, nullptr) << command.name;
    for (const CommandOption& option : command.options) {
      EXPECT_THAT(option.meaning, testing::MatchesRegex("[^\n]+")) << command.name << " " << option.name;
    }
  }
}

TEST(TheCommands, EndTheirHelpWithExitStatusesAndAnExample) {
  for (const Command& command : Commands()) {
    EXPECT_THAT(command.footer, testing::ContainsRegex("Exit status: 0 [^;]+; 1 [^;]+; 2 ")) << command.name;
    EXPECT_THAT(command.footer, HasSubstr("\nExample: ")) << command.name;
  }
}

TEST(AnOptionOfACommand, HasAWordForItsValueUnlessItTakesNothing) {
  for (const Command& command : Commands()) {
    for (const CommandOption& option : command.options) {
      const bool takesNothing = option.takes == CommandOption::Takes::Nothing;
      EXPECT_EQ(std::string(option.value).empty(), takesNothing || option.IsArgument()) << option.name;
      EXPECT_EQ(option.choices.empty(), option.takes != CommandOption::Takes::Choice) << option.name;
      EXPECT_FALSE(takesNothing && (option.IsArgument() || option.isRequired)) << option.name;
    }
  }
}

using TheProgram = CommandsFixture;

TEST_F(TheProgram, HelpsOnStandardOutput) {
  for (const Command& command : Commands()) {
    const Outcome outcome = Run({command.name, "--help"});
    EXPECT_EQ(outcome.status, ExitStatus::Good);
    EXPECT_THAT(outcome.out, StartsWith(command.meaning));
    EXPECT_THAT(outcome.out, HasSubstr("\n\n" + command.footer + "\n"));
    EXPECT_EQ(outcome.errors, "");
  }
}

TEST_F(TheProgram, AnswersWrongUsageOnStandardError) {
  const Outcome outcome = Run({"blub"});
  EXPECT_EQ(outcome.status, ExitStatus::Wrong);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(
      outcome.errors,
      StartsWith("devhost: there is no command \"blub\"; allowed: run, shell, replay, serve, check, advise, validate, "
                 "preview, adopt, "
                 "apply, history, undo, drift, probe, rotate, module, new-driver, conform, fleet, trust, completion\n"));
}

TEST_F(TheProgram, EndsWithTwoWhenAFileIsMissingOrWrong) {
  const std::string project = File("project.xml", "<project><driver id='1' name='a' module='/no/such.so'/></project>");
  const std::string wrong = File("script", "blub\n");
  const std::string modules = std::string("--module-dir=") + MODULE_FOLDER;
  for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
           {"advise", folder.Path("missing")},
           {"run", modules, folder.Path("missing")},
           {"run", modules, wrong},
           {"run", "--project", project},
           {"run", modules, "--state", wrong},
           {"preview", modules, "--project", project, "a", folder.Path("missing")},
       }) {
    const Outcome outcome = Run(arguments);
    EXPECT_EQ(outcome.status, ExitStatus::Wrong) << arguments.front();
    EXPECT_THAT(outcome.errors, testing::MatchesRegex("devhost: [^\n]+\n")) << arguments.front();
    EXPECT_EQ(outcome.out, "") << arguments.front();
  }
}

}  // namespace
}  // namespace devhost
