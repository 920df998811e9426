#include "devhost/commands/ConformReport.h"

#include <gmock/gmock.h>

namespace devhost {
namespace {

using testing::HasSubstr;
using testing::Not;
using Status = Outcome::Status;

Outcome MakeOutcome(Status status) {
  Outcome outcome;
  outcome.check = FindCheck("traps-many");
  outcome.status = status;
  outcome.milliseconds = 1234;
  if (status != Status::Pass) {
    outcome.message = "it is\nblue";
    outcome.slot = "CopyTo";
  }
  return outcome;
}

const ConformRun kRun{"a b.so", "--profile p.xml ", "5", "basic", Verdict::DoesNotConform};

TEST(AnOutcomeAsText, IsOneLineWhenThereIsNothingToSay) {
  EXPECT_EQ(OutcomeText(MakeOutcome(Status::Pass), kRun), "pass      traps-many\n");
  EXPECT_EQ(OutcomeText(MakeOutcome(Status::Skip), kRun), "skip      traps-many: it is\\nblue (CopyTo)\n");
}

TEST(AnOutcomeAsText, SaysWhatIsWrongAndHowToMakeItAgain) {
  EXPECT_EQ(OutcomeText(MakeOutcome(Status::Crash), kRun),
            "crash     traps-many: it is\\nblue (CopyTo)\n"
            "          A list may have 1000 targets.\n"
            "          why:   devhost conform --explain traps-many\n"
            "          again: devhost conform --profile p.xml --only traps-many --seed 5 'a b.so'\n");
}

TEST(AnOutcomeAsText, ShowsTheEndOfTheLog) {
  Outcome outcome = MakeOutcome(Status::Fail);
  for (int i = 1; i <= 11; ++i) {
    outcome.log.push_back("line " + std::to_string(i));
  }
  const std::string text = OutcomeText(outcome, kRun);
  EXPECT_THAT(text, HasSubstr("          | line 11\n"));
  EXPECT_THAT(text, HasSubstr("          | line 2\n"));
  EXPECT_THAT(text, Not(HasSubstr("| line 1\n")));
}

TEST(TheVerdict, CountsTheOutcomes) {
  EXPECT_EQ(VerdictText({MakeOutcome(Status::Hang), MakeOutcome(Status::Pass), MakeOutcome(Status::Pass)}, kRun),
            "does not conform: 2 pass, 1 hang (level basic, seed 5)\n");
}

TEST(TheVerdict, HasALineForEachReasonThatChecksAreUnjudged) {
  Outcome other = MakeOutcome(Status::Unjudged);
  other.check = FindCheck("file-round");
  other.message = "it is red";
  const Outcome outcome = MakeOutcome(Status::Unjudged);
  EXPECT_EQ(OutcomeText(outcome, kRun), "");
  EXPECT_EQ(VerdictText({outcome, outcome, other}, kRun),
            "unjudged  2 checks: it is\\nblue (CopyTo)\n"
            "unjudged  file-round: it is red (CopyTo)\n"
            "does not conform: 3 unjudged (level basic, seed 5)\n");
}

TEST(TheJsonReport, HasTheLogAndTheWayToMakeACheckAgain) {
  const std::string json = ConformJson({MakeOutcome(Status::Fail)}, kRun);
  EXPECT_THAT(json, HasSubstr(R"("replay":"devhost conform --profile p.xml --only traps-many --seed 5 'a b.so'","log":[])"));
  EXPECT_THAT(json, HasSubstr(R"("ms":1234)"));
}

TEST(TheJUnitReport, CountsAndTimesTheTestsOfAGroup) {
  const std::string xml = ConformJUnit(
      {MakeOutcome(Status::Pass), MakeOutcome(Status::Hang), MakeOutcome(Status::Broken), MakeOutcome(Status::Warn)}, kRun);
  EXPECT_THAT(xml, HasSubstr(R"(<testsuite name="traps" tests="4" failures="1" errors="1" skipped="1">)"));
  EXPECT_THAT(xml, HasSubstr(R"(<testcase classname="traps" name="traps-many" time="1.234"/>)"));
  EXPECT_THAT(xml, HasSubstr(R"x(<failure message="hang: it is\nblue (CopyTo)">)x"));
}

}  // namespace
}  // namespace devhost
