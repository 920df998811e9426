#include "devhost/conform/Conform.h"

#include <gmock/gmock.h>

#include <stdlib.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>

#include "tests/devhost/conform/Conforming.h"

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
}

TEST(ADriverThatThrows, IsAFindingThatNamesTheOperation) {
  const Outcome outcome = OutcomeOf(SkeletonConformance("throws"), "settings-kept");
  EXPECT_EQ(outcome.status, Status::Fail);
  EXPECT_EQ(outcome.slot, "SetUseProjectOwnerAddressSetting");
  EXPECT_THAT(outcome.message, HasSubstr("something that is not a std::exception came out of"));
}

TEST(AModuleThatDoesNotLoad, IsJudgedByNothingElse) {
  const std::vector<Outcome> outcomes = OutcomesOf(SkeletonConformance("module-loads"));
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

}  // namespace
}  // namespace devhost
