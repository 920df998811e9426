// What the program offers to a shell. tests/kit types into real shells.
#include "devhost/commands/Completion.h"

#include <gmock/gmock.h>

#include "devhost/conform/Check.h"
#include "tests/devhost/commands/CommandsFixture.h"

namespace devhost {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

using Words = std::vector<std::string>;

class TheShell : public CommandsFixture {
 protected:
  TheShell() {
    File("project.xml",
         "<project><driver id=\"1\" name=\"agent\" module=\"snmp_configuration_agent.so\"/>"
         "<driver id=\"12\" name=\"kitchen\" module=\"simulated_device.so\"><config/></driver></project>");
  }

  // The texts of what is offered for the last word.
  static Words Offers(const Words& words) {
    Words texts;
    for (const Candidate& candidate : Complete(words, Commands()).candidates) {
      texts.push_back(candidate.text);
    }
    return texts;
  }

  static Completion::Paths PathsFor(const Words& words) { return Complete(words, Commands()).paths; }

  const std::string project = folder.Path("project.xml");
};

TEST_F(TheShell, OffersAllCommandsAndNoOther) {
  Words commands;
  for (const Command& command : Commands()) {
    commands.emplace_back(command.name);
  }
  EXPECT_EQ(Offers({""}), commands);
  EXPECT_EQ(Offers({}), commands);
  EXPECT_THAT(Offers({"-"}), ElementsAre("--help", "--version"));
  EXPECT_THAT(Offers({"blub", ""}), IsEmpty());
}

TEST_F(TheShell, OffersEachOptionOfEachCommandThatIsNotHidden) {
  for (const Command& command : Commands()) {
    Words options;
    for (const CommandOption& option : command.options) {
      if (!option.IsArgument() && !option.isHidden) {
        options.emplace_back(option.name);
      }
    }
    options.emplace_back("--help");
    EXPECT_EQ(Offers({command.name, "--"}), options) << command.name;
  }
}

TEST_F(TheShell, OffersAnOptionOnce) {
  EXPECT_THAT(Offers({"run", "--project", "x", "--p"}), ElementsAre("--pretty"));
  EXPECT_THAT(Offers({"run", "--project=x", "--p"}), ElementsAre("--pretty"));
}

TEST_F(TheShell, OffersNoOptionBesideOneThatItCannotStandBeside) {
  const CommandOption first{"--first", "", ""};
  CommandOption second{"--second", "", ""};
  second.without = {"--first"};
  const std::vector<Command> commands = {{"command", "", {first, second}, "", nullptr}};
  EXPECT_THAT(Complete({"command", "--first", "--s"}, commands).candidates, IsEmpty());
  EXPECT_THAT(Complete({"command", "--second", "--f"}, commands).candidates, IsEmpty());
  EXPECT_EQ(Complete({"command", "--s"}, commands).candidates.size(), 1U);
}

TEST_F(TheShell, OffersTheValuesOfAnOptionInEachFormOfWriting) {
  EXPECT_THAT(Offers({"run", "--color", ""}), ElementsAre("auto", "always", "never"));
  EXPECT_THAT(Offers({"run", "--color", "al"}), ElementsAre("always"));
  EXPECT_THAT(Offers({"run", "--color=al"}), ElementsAre("--color=always"));
  EXPECT_THAT(Offers({"run", "--color", "=", "al"}), ElementsAre("always"));
  EXPECT_THAT(Offers({"run", "--color", "="}), ElementsAre("auto", "always", "never"));
  EXPECT_THAT(Offers({"completion", ""}), ElementsAre("bash", "zsh", "fish"));
}

TEST_F(TheShell, OffersFilesFoldersOrNoPaths) {
  EXPECT_EQ(PathsFor({"run", "--project", ""}), Completion::Paths::Files);
  EXPECT_EQ(PathsFor({"run", "--project="}), Completion::Paths::Files);
  EXPECT_EQ(PathsFor({"run", "--state", ""}), Completion::Paths::Folders);
  EXPECT_EQ(PathsFor({"run", "--color", ""}), Completion::Paths::None);
  EXPECT_EQ(PathsFor({"check", "a", "b", ""}), Completion::Paths::Files);
  EXPECT_EQ(PathsFor({"check", "-", ""}), Completion::Paths::Files);
  EXPECT_EQ(PathsFor({"new-driver", "kettle", ""}), Completion::Paths::Folders);
  EXPECT_EQ(PathsFor({"new-driver", "kettle", "folder", ""}), Completion::Paths::None);
  EXPECT_EQ(PathsFor({"check", "--", "--x"}), Completion::Paths::Files);
}

TEST_F(TheShell, OffersTheDevicesOfTheProjectButNotTheAgent) {
  EXPECT_THAT(Offers({"preview", "--project", project, ""}), ElementsAre("kitchen"));
  EXPECT_THAT(Offers({"preview", "--project=" + project, "k"}), ElementsAre("kitchen"));
  EXPECT_THAT(Offers({"preview", "--project", "=", project, "a"}), IsEmpty());
  EXPECT_THAT(Offers({"preview", ""}), IsEmpty());
}

TEST_F(TheShell, OffersAllChecks) {
  const Words ids = Offers({"conform", "--explain", ""});
  EXPECT_EQ(ids.size(), Checks().size());
  const Words only = Offers({"conform", "--only", "traps,module"});
  EXPECT_THAT(only, Contains("traps,module"));
  EXPECT_THAT(only, Contains("traps,module-loads"));
  EXPECT_THAT(only, Not(Contains("traps,life-create")));
}

TEST_F(TheShell, PrintsCandidatesAndPathsAsLines) {
  EXPECT_EQ(Run({"__complete", "module", ""}).out, ":files\n");
  EXPECT_EQ(Run({"__complete", "run", "--state="}).out, ":folders\n");
  EXPECT_EQ(Run({"__complete", "preview", "--project", project, "k"}).out, "kitchen\tdriver 12\n");
  EXPECT_EQ(Run({"__complete"}).status, ExitStatus::Good);
}

TEST_F(TheShell, OffersNothingAndSaysNothingForAProjectThatIsWrong) {
  const Outcome outcome = Run({"__complete", "preview", "--project", folder.Path("missing.xml"), ""});
  EXPECT_EQ(outcome.status, ExitStatus::Good);
  EXPECT_EQ(outcome.out + outcome.errors, "");
}

}  // namespace
}  // namespace devhost
