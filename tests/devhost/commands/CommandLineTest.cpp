#include "devhost/commands/CommandLine.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace devhost {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;
using Kind = CommandLine::Kind;

CommandLine Parse(std::vector<const char*> arguments) {
  arguments.insert(arguments.begin(), "devhost");
  return ParseCommandLine(static_cast<int>(arguments.size()), arguments.data(), "/usr/lib/x");
}

TEST(NoArguments, AreWrongUsageAndShowTheHelp) {
  const CommandLine line = Parse({});
  EXPECT_EQ(line.kind, Kind::Wrong);
  EXPECT_EQ(line.text, Parse({"--help"}).text);
}

TEST(Run, HasDefaults) {
  const CommandLine line = Parse({"run"});
  EXPECT_EQ(line.kind, Kind::Run);
  EXPECT_EQ(line.run.project, "");
  EXPECT_EQ(line.run.script, "");
  EXPECT_EQ(line.run.moduleFolder, "/usr/lib/x");
  EXPECT_EQ(line.run.color, "auto");
  EXPECT_EQ(line.run.state, "");
  EXPECT_FALSE(line.run.pretty);
  EXPECT_FALSE(line.run.showSecrets);
}

TEST(Run, TakesItsOptions) {
  const CommandLine line = Parse({"run", "--project", "p.xml", "--module-dir=lib", "--pretty", "--color", "never", "--state",
                                  "s", "--show-secrets", "-"});
  EXPECT_EQ(line.kind, Kind::Run);
  EXPECT_EQ(line.run.project, "p.xml");
  EXPECT_EQ(line.run.state, "s");
  EXPECT_EQ(line.run.moduleFolder, "lib");
  EXPECT_TRUE(line.run.pretty);
  EXPECT_TRUE(line.run.showSecrets);
  EXPECT_EQ(line.run.color, "never");
  EXPECT_EQ(line.run.script, "-");
}

TEST(Check, TakesFilesAndItsOptions) {
  const CommandLine line = Parse({"check", "a", "--json", "-", "--daemon", "--show-secrets"});
  EXPECT_EQ(line.kind, Kind::Check);
  EXPECT_EQ(line.check.files, (std::vector<std::string>{"a", "-"}));
  EXPECT_TRUE(line.check.json);
  EXPECT_TRUE(line.check.daemon);
  EXPECT_TRUE(line.check.showSecrets);
  const CommandLine plain = Parse({"check", "a"});
  EXPECT_FALSE(plain.check.json || plain.check.daemon || plain.check.showSecrets);
}

TEST(Check, WithoutAFileIsWrongUsage) {
  EXPECT_EQ(Parse({"check"}).text, "devhost: the argument \"files\" is missing\nTry \"devhost check --help\".\n");
  EXPECT_THAT(Parse({"check", ""}).text, StartsWith("devhost: files: the name is empty; allowed: a path\n"));
}

TEST(Advise, TakesAFileAndItsOptions) {
  const CommandLine line = Parse({"advise", "k.xml", "--json", "--show-secrets"});
  EXPECT_EQ(line.kind, Kind::Advise);
  EXPECT_EQ(line.advise.settings, "k.xml");
  EXPECT_TRUE(line.advise.json);
  EXPECT_TRUE(line.advise.showSecrets);
  EXPECT_FALSE(Parse({"advise", "-"}).advise.json);
  EXPECT_EQ(Parse({"advise"}).text, "devhost: the argument \"settings\" is missing\nTry \"devhost advise --help\".\n");
}

TEST(Preview, TakesADeviceAFileAndItsOptions) {
  const CommandLine line = Parse({"preview", "--project", "p.xml", "kitchen", "--state", "s", "k.xml", "--show-secrets"});
  EXPECT_EQ(line.kind, Kind::Preview);
  EXPECT_EQ(line.preview.project, "p.xml");
  EXPECT_EQ(line.preview.moduleFolder, "/usr/lib/x");
  EXPECT_EQ(line.preview.device, "kitchen");
  EXPECT_EQ(line.preview.settings, "k.xml");
  EXPECT_EQ(line.preview.state, "s");
  EXPECT_TRUE(line.preview.showSecrets);
  EXPECT_FALSE(Parse({"preview", "--project", "p.xml", "kitchen", "-"}).preview.showSecrets);
}

TEST(Preview, SaysWhatIsMissing) {
  EXPECT_EQ(Parse({"preview", "--project", "p.xml"}).text,
            "devhost: the argument \"device\" is missing\nTry \"devhost preview --help\".\n");
  EXPECT_EQ(Parse({"preview", "kitchen", "k.xml"}).text,
            "devhost: --project FILE is missing\nTry \"devhost preview --help\".\n");
  EXPECT_THAT(
      Parse({"preview", "--project", "p.xml", "a", "b", "c"}).text,
      StartsWith("devhost: The following argument was not expected: c; allowed: a device, a file of settings and the "
                 "options of preview\n"));
}

TEST(Help, TellsUsageActionsExitStatusAndAnExample) {
  EXPECT_THAT(Parse({"--help"}).text,
              AllOf(HasSubstr("Usage: devhost"), HasSubstr("  run "), HasSubstr("Exit status: 0"), HasSubstr("Example:")));
  const CommandLine run = Parse({"run", "--help"});
  EXPECT_EQ(run.kind, Kind::Answer);
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
            "devhost: there is no command \"blub\"; allowed: run, check, advise, preview\nTry \"devhost --help\".\n");
  EXPECT_EQ(Parse({"run", "a", "b"}).text,
            "devhost: The following argument was not expected: b; allowed: one script and the options of run\n"
            "Try \"devhost run --help\".\n");
  EXPECT_THAT(Parse({"run", "--color", "x"}).text,
              StartsWith("devhost: --color: \"x\" is no such time; allowed: auto, always, never\n"));
  EXPECT_EQ(Parse({"run", "--project"}).text,
            "devhost: --project has no value; allowed: --project FILE\nTry \"devhost run --help\".\n");
  EXPECT_EQ(Parse({"run", "--color", "never", "--color"}).text,
            "devhost: --color has no value; allowed: --color WHEN\nTry \"devhost run --help\".\n");
  EXPECT_EQ(Parse({"run", "--project", "a", "--project", "b"}).text,
            "devhost: --project is given 2 times; allowed: once\nTry \"devhost run --help\".\n");
  for (const char* const pretty : {"--pretty=maybe", "--pretty=false"}) {
    EXPECT_EQ(Parse({"run", pretty}).text,
              "devhost: --pretty has a value; allowed: --pretty alone\nTry \"devhost run --help\".\n");
    EXPECT_EQ(Parse({"run", pretty}).kind, Kind::Wrong);
  }
  EXPECT_THAT(Parse({"run", "--project", ""}).text, StartsWith("devhost: --project: the name is empty; allowed: a path\n"));
  EXPECT_THAT(Parse({"--blub"}).text,
              testing::StrEq("devhost: there is no option \"--blub\"; allowed: --help, --version, or a command\n"
                             "Try \"devhost --help\".\n"));
  for (const CommandLine& line :
       {Parse({"blub"}), Parse({"run", "a", "b"}), Parse({"--blub"}), Parse({"run", "--color", "x"})}) {
    EXPECT_EQ(line.kind, Kind::Wrong);
  }
}

}  // namespace
}  // namespace devhost
