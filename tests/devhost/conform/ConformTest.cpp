#include "devhost/conform/Conform.h"

#include <gmock/gmock.h>

#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "tests/devhost/conform/Conforming.h"
#include "tests/devhost/support/TemporaryFiles.h"

namespace devhost {
namespace {

using testing::HasSubstr;
using Status = Outcome::Status;

TEST(ADriverThatCrashes, IsAFindingThatNamesTheOperationAndTheDriver) {
  const Outcome outcome = OutcomeOf(SkeletonConformance("crashes"), "settings-kept");
  EXPECT_EQ(outcome.status, Status::Crash);
  EXPECT_EQ(outcome.slot, "SetUseProjectOwnerAddressSetting");
  EXPECT_THAT(outcome.message, HasSubstr("SIGABRT"));
  EXPECT_THAT(outcome.message, HasSubstr("SetUseProjectOwnerAddressSetting of driver 12 \"device12\""));
}

TEST(ADriverThatCrashes, DoesNotKeepTheNextCheckFromBeingMade) {
  const std::vector<Outcome> outcomes =
      OutcomesOf(SkeletonConformance("crashes"), {FindCheck("settings-kept"), FindCheck("traps-add")});
  EXPECT_EQ(outcomes[1].status, Status::Pass);
}

TEST(ADriverThatHangs, IsKilledAtTheDeadlineAndNamed) {
  Conformance conformance = SkeletonConformance("hangs");
  conformance.deadline = std::chrono::seconds(3);
  const Outcome outcome = OutcomeOf(conformance, "settings-kept");
  EXPECT_EQ(outcome.status, Status::Hang);
  EXPECT_EQ(outcome.slot, "SetUseProjectOwnerAddressSetting");
  EXPECT_THAT(outcome.message, testing::MatchesRegex("the call has not come back for [0-9]+ seconds"));
}

TEST(ADriverThatIsSlow, DoesNotHangAsLongAsEachCallComesBack) {
  Conformance conformance = SkeletonConformance("is-slow");
  // Each of about 40 calls takes 0.1 seconds.
  conformance.deadline = std::chrono::seconds(3);
  const Outcome outcome = OutcomeOf(conformance, "settings-kept");
  EXPECT_EQ(outcome.status, Status::Pass) << outcome.message;
  EXPECT_GT(outcome.milliseconds, 3000);
}

TEST(ADriverThatIsSlow, IsUnjudgedWhereTheCheckTakesTooLong) {
  Conformance conformance = SkeletonConformance("is-slow");
  conformance.longest = std::chrono::seconds(3);
  const Outcome outcome = OutcomeOf(conformance, "settings-kept");
  EXPECT_EQ(outcome.status, Status::Unjudged);
  EXPECT_THAT(outcome.message, testing::StartsWith("the check was not over after 3 seconds; the last call was "));
}

// Every check that needs a driver says the same, and nothing waits for what hangs or crashes again.
void ExpectOneFindingInInitialize(const Conformance& conformance, Status status) {
  const std::vector<Outcome> outcomes = OutcomesOf(conformance);
  std::size_t unjudged = 0;
  for (const Outcome& outcome : outcomes) {
    if (std::string(outcome.check->id) == "life-initialize") {
      EXPECT_EQ(outcome.status, status);
      EXPECT_EQ(outcome.slot, "Initialize");
    } else if (outcome.status != Status::Pass) {
      EXPECT_EQ(outcome.status, Status::Unjudged) << outcome.check->id;
      EXPECT_EQ(outcome.message, "no driver can be initialised: see life-initialize");
      ++unjudged;
    }
  }
  EXPECT_EQ(outcomes.size(), Checks().size());
  EXPECT_EQ(unjudged, Checks().size() - 4);  // without life-initialize and those of the file
}

TEST(ADriverThatEndsTheProcessInInitialize, IsOneFinding) {
  ExpectOneFindingInInitialize(SkeletonConformance("ends-in-initialize"), Status::Crash);
}

TEST(ADriverThatHangsInInitialize, IsOneFinding) {
  Conformance conformance = SkeletonConformance("hangs-in-initialize");
  conformance.deadline = std::chrono::seconds(5);
  ExpectOneFindingInInitialize(conformance, Status::Hang);
}

TEST(ADriverThatGoesToAnotherFolder, IsJudgedByTheOtherChecksAsBefore) {
  const Outcome outcome = OutcomeOf(SkeletonConformance("process-folder"), "traps-add");
  EXPECT_EQ(outcome.status, Status::Pass) << outcome.message;
}

TEST(ADeviceWhoseFileCannotBeReadBack, IsNotJudgedByWhatIsBuiltOnAFile) {
  for (const char* const check : {"file-text-borrowed", "file-failure", "whole-agent", "fuzz-session"}) {
    const Outcome outcome = OutcomeOf(SkeletonConformance("unfilled-copy-from"), check);
    EXPECT_EQ(outcome.status, Status::Unjudged) << check;
    EXPECT_THAT(outcome.message, HasSubstr("file-round")) << check;
  }
}

TEST(AModuleThatPublishesSomethingElse, IsNotCalled) {
  for (const char* const check : {"life-device-first", "calls-nested", "throw-service", "whole-two", "whole-agent"}) {
    const Outcome outcome = OutcomeOf(SkeletonConformance("publishes-a-text"), check);
    EXPECT_EQ(outcome.status, Status::Unjudged) << check << ": " << outcome.message;
  }
}

TEST(AMessageAboutACommunity, IsNotTorn) {
  EXPECT_EQ(OutcomeOf(SkeletonConformance("changes-communities"), "whole-agent").message,
            "the list of devices has in snmpTrapTargets another community");
}

TEST(ADriverThatNeverEndsItsWords, FillsNoReport) {
  const Outcome outcome = OutcomeOf(SkeletonConformance("talks-at-length"), "settings-kept");
  EXPECT_EQ(outcome.status, Status::Fail);
  EXPECT_THAT(outcome.message, HasSubstr("bytes) ... "));
  EXPECT_LT(outcome.message.size(), 1100U);
  for (const std::string& line : outcome.log) {
    EXPECT_LT(line.size(), 1100U);
  }
}

TEST(ADriverThatThrows, IsAFindingThatNamesTheOperation) {
  const Outcome outcome = OutcomeOf(SkeletonConformance("throws"), "settings-kept");
  EXPECT_EQ(outcome.status, Status::Fail);
  EXPECT_EQ(outcome.slot, "SetUseProjectOwnerAddressSetting");
  EXPECT_THAT(outcome.message, HasSubstr("something that is not a std::exception came out of"));
}

TEST(AModuleThatDoesNotLoad, IsJudgedByNothingElse) {
  const std::vector<Outcome> outcomes = OutcomesOf(SkeletonConformance("module-loads"));
  EXPECT_EQ(outcomes[0].status, Status::Pass);
  EXPECT_EQ(outcomes[2].status, Status::Pass);
  for (std::size_t i = 3; i != outcomes.size(); ++i) {
    EXPECT_NE(outcomes[i].status, Status::Pass);
    EXPECT_THAT(outcomes[i].message, HasSubstr("module-loads"));
  }
}

TEST(AModuleThatNothingIsKnownOf, IsNotJudgedByWhatIsBuiltOnADevice) {
  const Outcome outcome = OutcomeOf(SkeletonConformance("life-publish"), "settings-kept");
  EXPECT_EQ(outcome.status, Status::Unjudged);
  EXPECT_THAT(outcome.message, HasSubstr("life-publish"));
}

TEST(AWaiver, GivesAFailureItsReason) {
  const Outcome outcome =
      OutcomeOf(ConformanceOf(SkeletonModule("traps-many"),
                              "<conform><waive check=\"traps-many\" reason=\"it holds 100\"/></conform>"),
                "traps-many");
  EXPECT_EQ(outcome.status, Status::Waived);
  EXPECT_EQ(outcome.waiver, "it holds 100");
}

TEST(AWaiver, EndsWithItsLastDay) {
  const auto outcome = [](const std::string& day) {
    return OutcomeOf(
        ConformanceOf(SkeletonModule("traps-many"),
                      "<conform><waive check='traps-many' reason='it holds 100' until='" + day + "'/></conform>"),
        "traps-many");
  };
  EXPECT_EQ(outcome("2999-12-31").status, Status::Waived);
  EXPECT_EQ(outcome("2001-01-31").status, Status::Fail);
  EXPECT_THAT(outcome("2001-01-31").message, HasSubstr("; it was waived until 2001-01-31"));
}

TEST(AWaiver, LeavesAPassedCheckAlone) {
  const Outcome outcome = OutcomeOf(
      ConformanceOf(SkeletonModule("none"), "<conform><waive check=\"traps-many\" reason=\"it holds 100\"/></conform>"),
      "traps-many");
  EXPECT_EQ(outcome.status, Status::Pass);
}

TEST(WhatTheProfileDoesNotClaim, IsSkippedWithTheNameOfTheClaim) {
  const Outcome outcome = OutcomeOf(ConformanceOf(SkeletonModule("none"), "<conform/>"), "state-round");
  EXPECT_EQ(outcome.status, Status::Skip);
  EXPECT_THAT(outcome.message, HasSubstr("keeps-state"));
}

TEST(AProgramThatCannotBeStarted, SaysNothingAboutTheDriver) {
  Conformance conformance = SkeletonConformance("none");
  conformance.program = "/nowhere/devhost";
  conformance.runner.clear();
  EXPECT_EQ(OutcomeOf(conformance, "traps-add").status, Status::Broken);
}

TEST(ACheck, LeavesNoFolderBehindEvenWhenItCrashes) {
  // Of its own, since other tests have folders in that of all.
  const testsupport::ScratchFolder folder;
  const char* const usual = std::getenv("TMPDIR");
  const std::string before = usual != nullptr ? usual : "/tmp";
  ::setenv("TMPDIR", folder.Path().c_str(), 1);
  EXPECT_EQ(OutcomeOf(SkeletonConformance("crashes"), "settings-kept").status, Status::Crash);
  ::setenv("TMPDIR", before.c_str(), 1);
  EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

TEST(ACheckInThisProcess, HasTheSameOutcome) {
  const Outcome outcome = RunCheckInProcess(SkeletonConformance("traps-add"), *FindCheck("traps-add"));
  EXPECT_EQ(outcome.status, Status::Fail);
  EXPECT_EQ(outcome.slot, "AddTrapTargetSetting");
  EXPECT_EQ(RunCheckInProcess(SkeletonConformance("none"), *FindCheck("traps-add")).status, Status::Pass);
}

TEST(Secrets, OfTheConfigurationAreMaskedInWhatIsSaid) {
  const std::string module = SkeletonModule("life-wrong-config");
  const Outcome outcome = OutcomeOf(
      ConformanceOf(module, "<conform><config folder=\"\" community=\"kX7secret\"/></conform>"), "life-wrong-config");
  EXPECT_EQ(outcome.status, Status::Fail);
  EXPECT_THAT(outcome.message, testing::Not(HasSubstr("kX7secret")));
}

class ASignal : public testing::TestWithParam<int> {};

TEST_P(ASignal, ThatEndsTheProgramLeavesNoFolder) {
  const TemporaryFiles files;
  const std::string module = SkeletonModule("hangs");
  const pid_t program = ::fork();
  ASSERT_GE(program, 0);
  if (program == 0) {
#ifdef CONFORM_EMULATOR
    ::execlp(CONFORM_EMULATOR, CONFORM_EMULATOR, DEVHOST_PROGRAM, "conform", "--runner", CONFORM_EMULATOR, "--only",
             "settings-kept", "--output", "/dev/null", module.c_str(), static_cast<char*>(nullptr));
#else
    ::execl(DEVHOST_PROGRAM, DEVHOST_PROGRAM, "conform", "--only", "settings-kept", "--output", "/dev/null", module.c_str(),
            static_cast<char*>(nullptr));
#endif
    ::_exit(127);
  }
  const bool hasFolder = files.Become(false);
  // Some time, so that there is a driver at work.
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  ::kill(program, GetParam());
  int status = 0;
  ::waitpid(program, &status, 0);
  EXPECT_TRUE(hasFolder);
  EXPECT_EQ(WTERMSIG(status), GetParam());
  EXPECT_TRUE(files.Become(true));
}

INSTANTIATE_TEST_SUITE_P(OfEachKind, ASignal, testing::Values(SIGINT, SIGTERM, SIGHUP, SIGKILL));

}  // namespace
}  // namespace devhost
