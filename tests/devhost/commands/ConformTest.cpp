#include <gmock/gmock.h>

#include <string>

#include "devhost/conform/Check.h"
#include "devhost/system/RunProgram.h"
#include "devhost/xml/XmlReader.h"
#include "tests/devhost/commands/CommandsFixture.h"

namespace devhost {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;

const std::string kDevice = MODULE_FOLDER "/simulated_device.so";

class ConformCommand : public CommandsFixture {
 protected:
  // The program itself, since it runs itself again for each check.
  static ProgramResult RunReal(std::vector<std::string> words) {
    words.insert(words.begin(), {DEVHOST_PROGRAM, "conform"});
    ProgramRun run;
    run.words = std::move(words);
    return RunProgram(run);
  }

  // A profile with which the simulated device fails one check: the file of that device cannot be there.
  std::string Failing() const { return File("failing.xml", "<conform><config folder=\"/nowhere\"/></conform>"); }
};

TEST_F(ConformCommand, JudgesADriverThatConforms) {
  const ProgramResult result = RunReal({"--level", "full", kDevice});
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_THAT(result.output, StartsWith("pass      module-needs\n"));
  EXPECT_THAT(result.output, HasSubstr("\nconforms: "));
  EXPECT_THAT(result.output, HasSubstr("skip      state-round: the profile does not claim keeps-state\n"));
}

TEST_F(ConformCommand, SaysWhatFailsAndHowToMakeTheCheckAgain) {
  const std::string profile = Failing();
  const ProgramResult result = RunReal({"--profile", profile, "--seed", "5", kDevice});
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_THAT(result.output, HasSubstr("fail      file-round: CopyTo returned -102 for an ordinary text (CopyTo)\n"));
  EXPECT_THAT(result.output, HasSubstr("why:   devhost conform --explain file-round\n"));
  EXPECT_THAT(result.output,
              HasSubstr("again: devhost conform --profile " + profile + " --only file-round --seed 5 " + kDevice + "\n"));
  EXPECT_THAT(result.output, HasSubstr("\ndoes not conform: "));
  EXPECT_THAT(result.output, EndsWith("(level basic, seed 5)\n"));
}

TEST_F(ConformCommand, KnowsNoVerdictWhenOnlySomeChecksAreMade) {
  const ProgramResult result = RunReal({"--only", "traps,file-round", kDevice});
  EXPECT_EQ(result.exitStatus, 2);
  EXPECT_THAT(result.output, MatchesRegex("(pass      traps-[a-z]+\n)+pass      file-round\nincomplete: 6 pass .*\n"));
}

TEST_F(ConformCommand, PrintsOneJsonObject) {
  const ProgramResult result = RunReal({"--profile", Failing(), "--only", "file-round", "--format", "json", kDevice});
  EXPECT_THAT(result.output, StartsWith(R"({"format":1,)"));
  EXPECT_THAT(result.output, HasSubstr(R"("verdict":"does not conform","tally":{"fail":1},)"));
  EXPECT_THAT(result.output, HasSubstr(R"("checks":[{"id":"file-round","group":"file","severity":"contract",)"
                                       R"("status":"fail","operation":"CopyTo",)"));
}

TEST_F(ConformCommand, PrintsXmlForJUnit) {
  const ProgramResult result = RunReal({"--profile", Failing(), "--only", "file", "--format", "junit", kDevice});
  const XmlElement suites = ReadXml(result.output);
  ASSERT_EQ(suites.children.size(), 1U);
  const XmlElement& suite = suites.children[0];
  EXPECT_EQ(*suite.FindAttribute("name"), "file");
  EXPECT_EQ(*suite.FindAttribute("tests"), "6");
  EXPECT_EQ(*suite.FindAttribute("failures"), "1");
  EXPECT_EQ(*suite.FindAttribute("errors"), "1");
  EXPECT_TRUE(suite.children[0].children.empty());
  EXPECT_EQ(*suite.children[1].FindAttribute("name"), "file-round");
  EXPECT_EQ(suite.children[1].children[0].name, "failure");
}

TEST_F(ConformCommand, WritesItsReportIntoAFileAndPrintsTheText) {
  const ProgramResult result =
      RunReal({"--only", "traps-add", "--format", "json", "--output", folder.Path("r.json"), kDevice});
  EXPECT_THAT(result.output, StartsWith("pass      traps-add\nincomplete: 1 pass"));
  EXPECT_THAT(folder.Read("r.json"), StartsWith(R"({"format":1,"module":)"));
  EXPECT_THAT(folder.Read("r.json"),
              testing::ContainsRegex(R"("sha256":"[0-9a-f]{64}","version":"[0-9.]+","contract":"1","seed")"));
  EXPECT_EQ(RunReal({"--only", "traps-add", "--output", "/nowhere/r.json", kDevice}).exitStatus, 2);
}

TEST_F(ConformCommand, StartsEachCheckByTheRunner) {
  const std::string script = File("runner", "echo \"$@\" >> " + folder.Path("started") + "\nexec \"$@\"\n");
  const ProgramResult result = RunReal({"--runner", "sh " + script, "--only", "traps-add,traps-set", kDevice});
  EXPECT_THAT(result.output, StartsWith("pass      traps-add\npass      traps-set\n"));
  EXPECT_THAT(folder.Read("started"), MatchesRegex(DEVHOST_PROGRAM " conform --run-check traps-add .*\n" DEVHOST_PROGRAM
                                                                   " conform --run-check traps-set .*\n"));
  const ProgramResult wrong = RunReal({"--runner", "false", "--only", "traps-add", "--seed", "5", kDevice});
  EXPECT_THAT(wrong.output, StartsWith("crash     traps-add: the process has ended with status 1"));
  EXPECT_THAT(wrong.output, HasSubstr("again: devhost conform --runner false --only traps-add --seed 5 "));
}

TEST_F(ConformCommand, MakesAnOutcomeOfAWaiver) {
  const std::string profile = File("waived.xml",
                                   "<conform><config folder=\"/nowhere\"/>"
                                   "<waive check=\"file-round\" reason=\"there is no folder\"/>"
                                   "<waive check=\"whole-agent\" reason=\"there is no folder\"/>"
                                   "<waive check=\"file-text-borrowed\" reason=\"there is no folder\"/></conform>");
  const ProgramResult result = RunReal({"--profile", profile, kDevice});
  EXPECT_EQ(result.exitStatus, 0);
  EXPECT_THAT(result.output, HasSubstr("; waived: there is no folder\n"));
  EXPECT_THAT(result.output, HasSubstr("\nconforms with waivers: "));
}

TEST_F(ConformCommand, MakesAChosenCheckInThisProcess) {
  const Outcome outcome = Run({"conform", "--in-process", "--only", "traps-add", "--seed", "1", kDevice});
  EXPECT_EQ(outcome.status, ExitStatus::Wrong);
  EXPECT_EQ(outcome.out, "pass      traps-add\nincomplete: 1 pass (level basic, seed 1)\n");
}

TEST_F(ConformCommand, ListsAllChecks) {
  const Outcome outcome = Run({"conform", "--list"});
  EXPECT_EQ(outcome.status, ExitStatus::Good);
  for (const Check& check : Checks()) {
    EXPECT_THAT(outcome.out, HasSubstr(std::string(check.id) + " ("));
    EXPECT_THAT(outcome.out, HasSubstr(check.sentence));
  }
  EXPECT_THAT(outcome.out, HasSubstr("state-round (basic, contract, claim keeps-state): "));
}

TEST_F(ConformCommand, ExplainsACheck) {
  const Outcome outcome = Run({"conform", "--explain", "erased-cleared"});
  EXPECT_EQ(outcome.status, ExitStatus::Good);
  EXPECT_THAT(outcome.out, StartsWith("erased-cleared: A setting that gets a value"));
  EXPECT_THAT(outcome.out, EndsWith("\n\nLevel basic, severity practice.\n"));
}

TEST_F(ConformCommand, RefusesWhatItCannotUse) {
  const std::string allowed = "; allowed: an id that devhost conform --list prints\n";
  EXPECT_EQ(Run({"conform", "--explain", "blue"}).errors, "devhost: there is no check \"blue\"" + allowed);
  EXPECT_EQ(Run({"conform", "--only", "traps,blue", kDevice}).errors, "devhost: there is no check \"blue\"" + allowed);
  EXPECT_EQ(Run({"conform", "--seed", "-1", kDevice}).errors,
            "devhost: the seed is \"-1\"; allowed: a number of at most 9 digits\n");
  EXPECT_EQ(Run({"conform"}).errors,
            "devhost: the argument \"module\" is missing; allowed: devhost conform [options] module\n");
  EXPECT_EQ(Run({"conform", "--profile", File("p.xml", "<a/>"), kDevice}).errors,
            "devhost: " + folder.Path("p.xml") + ":1: the root is \"a\"; allowed: <conform>\n");
  EXPECT_THAT(Run({"conform", folder.Path("missing.so")}).errors, HasSubstr("missing.so"));
  EXPECT_EQ(Run({"conform", folder.Path("missing.so")}).status, ExitStatus::Wrong);
}

TEST_F(ConformCommand, HasAnOptionForItselfThatNoHelpNames) {
  EXPECT_THAT(Run({"conform", "--help"}).out, Not(HasSubstr("--run-check")));
}

}  // namespace
}  // namespace devhost
