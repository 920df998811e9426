#include "devhost/commands/CommandLine.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "devhost/commands/Commands.h"

namespace devhost {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

CommandLine Parse(std::vector<const char*> arguments) {
  arguments.insert(arguments.begin(), "devhost");
  return ParseCommandLine(static_cast<int>(arguments.size()), arguments.data(), Commands());
}

// The command that a line asks for, and what it was given: "run --pretty script=a".
std::string Asked(const std::vector<const char*>& arguments) {
  const CommandLine line = Parse(arguments);
  if (line.command == nullptr) {
    return "";
  }
  std::string asked = line.command->name;
  for (const CommandOption& option : line.command->options) {
    if (line.arguments.Has(option)) {
      asked += std::string(" ") + option.name;
      for (const std::string& text : line.arguments.Texts(option)) {
        asked += (option.takes == CommandOption::Takes::Nothing ? ":" : "=") + text;
      }
    }
  }
  return asked;
}

TEST(NoArguments, AreWrongUsageAndShowTheHelp) {
  const CommandLine line = Parse({});
  EXPECT_EQ(line.command, nullptr);
  EXPECT_EQ(line.status, ExitStatus::Wrong);
  EXPECT_EQ(line.text, Parse({"--help"}).text);
}

TEST(ACommandLine, NamesACommandOfTheTable) {
  const CommandLine line = Parse({"run"});
  EXPECT_EQ(line.command, Commands().data());
  EXPECT_EQ(line.text, "");
}

TEST(Run, TakesItsOptions) {
  EXPECT_EQ(Asked({"run"}), "run");
  EXPECT_EQ(Asked({"run", "--project", "p.xml", "--module-dir=lib", "--pretty", "--color", "never", "--state", "s",
                   "--show-secrets", "-"}),
            "run script=- --project=p.xml --module-dir=lib --state=s --pretty:true --color=never --show-secrets:true");
}

TEST(Check, TakesFilesAndItsOptions) {
  EXPECT_EQ(Asked({"check", "a"}), "check files=a");
  EXPECT_EQ(Asked({"check", "a", "--json", "-", "--daemon", "--show-secrets"}),
            "check files=a=- --json:true --daemon:true --show-secrets:true");
}

TEST(Check, TakesFilesWithTheNamesOfCommandsAndOptions) {
  EXPECT_EQ(Asked({"check", "a", "run"}), "check files=a=run");
  EXPECT_EQ(Asked({"check", "--", "--json"}), "check files=--json");
}

TEST(Check, WithoutAFileIsWrongUsage) {
  EXPECT_EQ(Parse({"check"}).text, "devhost: the argument \"files\" is missing\nTry \"devhost check --help\".\n");
  EXPECT_THAT(Parse({"check", ""}).text, StartsWith("devhost: files: the name is empty; allowed: a path\n"));
}

TEST(Advise, TakesAFileAndItsOptions) {
  EXPECT_EQ(Asked({"advise", "-"}), "advise settings=-");
  EXPECT_EQ(Asked({"advise", "k.xml", "--json", "--show-secrets"}), "advise settings=k.xml --json:true --show-secrets:true");
  EXPECT_EQ(Parse({"advise"}).text, "devhost: the argument \"settings\" is missing\nTry \"devhost advise --help\".\n");
}

TEST(Preview, TakesADeviceAFileAndItsOptions) {
  EXPECT_EQ(Asked({"preview", "--project", "p.xml", "kitchen", "--state", "s", "k.xml", "--json", "--show-secrets"}),
            "preview device=kitchen settings=k.xml --project=p.xml --state=s --json:true --show-secrets:true");
}

TEST(Preview, SaysWhatIsMissing) {
  EXPECT_EQ(Parse({"preview", "--project", "p.xml"}).text,
            "devhost: the argument \"device\" is missing\nTry \"devhost preview --help\".\n");
  EXPECT_EQ(Parse({"preview", "kitchen", "k.xml"}).text,
            "devhost: --project FILE is missing\nTry \"devhost preview --help\".\n");
  EXPECT_THAT(Parse({"preview", "--project", "p.xml", "a", "b", "c"}).text,
              StartsWith("devhost: The following argument was not expected: c; allowed: devhost preview [options] device "
                         "settings\n"));
}

TEST(Fleet, TakesTheInventoryFirstAsWell) {
  const std::string apply = "fleet operation=apply inventory=fleet.xml";
  EXPECT_EQ(Asked({"fleet", "apply", "fleet.xml"}), apply);
  EXPECT_EQ(Asked({"fleet", "fleet.xml", "apply"}), apply);
  EXPECT_EQ(Asked({"fleet", "fleet.xml", "apply", "--jobs", "2", "--yes"}), apply + " --jobs=2 --yes:true");
  const CommandLine help = Parse({"fleet", "fleet.xml", "apply", "--help"});
  EXPECT_EQ(help.status, ExitStatus::Good);
  EXPECT_EQ(help.text, Parse({"fleet", "--help"}).text);
}

TEST(Fleet, TakesAnInventoryWithTheNameOfAnOperation) {
  EXPECT_EQ(Asked({"fleet", "apply", "drift"}), "fleet operation=apply inventory=drift");
  EXPECT_EQ(Asked({"fleet", "drift", "apply"}), "fleet operation=drift inventory=apply");
  EXPECT_EQ(Asked({"fleet", "check", "check"}), "fleet operation=check inventory=check");
}

TEST(Fleet, LeavesTheValueOfAnOptionWhereItStands) {
  EXPECT_EQ(Asked({"fleet", "--record", "drift", "apply", "fleet.xml"}),
            "fleet operation=apply inventory=fleet.xml --record=drift");
  EXPECT_EQ(Asked({"fleet", "fleet.xml", "--record", "apply"}), "");
}

TEST(Fleet, NamesTheOperationsWhenNoneIsWrittenRightly) {
  const std::string unknown =
      " is unknown; allowed: apply, preview, drift, probe, check, rotate\nTry \"devhost fleet --help\".\n";
  EXPECT_EQ(Parse({"fleet", "aply", "fleet.xml"}).text, "devhost: operation: \"aply\"" + unknown);
  EXPECT_EQ(Parse({"fleet", "fleet.xml", "aply"}).text, "devhost: operation: \"fleet.xml\"" + unknown);
  EXPECT_EQ(Parse({"fleet", "fleet.xml"}).text, "devhost: operation: \"fleet.xml\"" + unknown);
}

TEST(Help, ShowsUsageActionsExitStatusAndAnExample) {
  EXPECT_THAT(Parse({"--help"}).text,
              AllOf(HasSubstr("Usage: devhost"), HasSubstr("  run "), HasSubstr("Exit status: 0"), HasSubstr("Example:")));
  const CommandLine run = Parse({"run", "--help"});
  EXPECT_EQ(run.status, ExitStatus::Good);
  EXPECT_THAT(run.text,
              AllOf(HasSubstr("Usage: devhost run [options] [script]"), HasSubstr("Actions of a script"),
                    HasSubstr("  device DRIVER set NAME VALUE  "), HasSubstr("Exit status: 0"), HasSubstr("Example:"),
                    testing::EndsWith("More: \"man devhost\" (docs/man/devhost.1) and docs/scripts.md.\n")));
}

TEST(Version, IsOneLine) {
  EXPECT_EQ(Parse({"--version"}).text, "devhost 1.0.0\n");
}

TEST(WrongUsage, SaysWhatIsWrongAndWhatIsAllowed) {
  EXPECT_EQ(Parse({"blub"}).text,
            "devhost: there is no command \"blub\"; allowed: run, shell, replay, serve, check, advise, validate, preview, "
            "adopt, apply, "
            "history, undo, drift, "
            "probe, rotate, module, new-driver, conform, fleet, trust, completion\nTry \"devhost --help\".\n");
  EXPECT_EQ(Parse({"run", "a", "b"}).text,
            "devhost: The following argument was not expected: b; allowed: devhost run [options] [script]\n"
            "Try \"devhost run --help\".\n");
  EXPECT_THAT(Parse({"run", "--color", "x"}).text,
              StartsWith("devhost: --color: \"x\" is unknown; allowed: auto, always, never\n"));
  EXPECT_EQ(Parse({"run", "--project"}).text,
            "devhost: --project has no value; allowed: --project FILE\nTry \"devhost run --help\".\n");
  EXPECT_EQ(Parse({"run", "--color", "never", "--color"}).text,
            "devhost: --color has no value; allowed: --color WHEN\nTry \"devhost run --help\".\n");
  EXPECT_EQ(Parse({"run", "--project", "a", "--project", "b"}).text,
            "devhost: --project is given 2 times; allowed: once\nTry \"devhost run --help\".\n");
  for (const char* const pretty : {"--pretty=maybe", "--pretty=false"}) {
    EXPECT_EQ(Parse({"run", pretty}).text,
              "devhost: --pretty has a value; allowed: --pretty alone\nTry \"devhost run --help\".\n");
  }
  for (const auto& [option, line] : {std::pair{"--pretty", Parse({"run", "--json", "--pretty"})},
                                     std::pair{"--color", Parse({"run", "--color=never", "--json"})}}) {
    EXPECT_EQ(line.text, std::string("devhost: --json and ") + option +
                             " cannot stand together; allowed: one of the two\n"
                             "Try \"devhost run --help\".\n");
  }
  EXPECT_THAT(Parse({"run", "--project", ""}).text, StartsWith("devhost: --project: the name is empty; allowed: a path\n"));
  EXPECT_THAT(Parse({"--blub"}).text,
              testing::StrEq("devhost: there is no option \"--blub\"; allowed: --help, --version, or a command\n"
                             "Try \"devhost --help\".\n"));
  for (const CommandLine& line :
       {Parse({"blub"}), Parse({"run", "a", "b"}), Parse({"--blub"}), Parse({"run", "--color", "x"})}) {
    EXPECT_EQ(line.command, nullptr);
    EXPECT_EQ(line.status, ExitStatus::Wrong);
  }
}

}  // namespace
}  // namespace devhost
