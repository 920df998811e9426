// Who checks the checks: for each of them there is a module that breaks it and nothing else.
#include <gmock/gmock.h>

#include <algorithm>

#include <string>

#include "tests/devhost/conform/Conforming.h"

namespace devhost {
namespace {

using Status = Outcome::Status;

bool IsFinding(const Outcome& outcome) {
  return outcome.status == Status::Fail || outcome.status == Status::Crash || outcome.status == Status::Hang;
}

std::string Said(const Outcome& outcome) {
  return std::string(outcome.check->id) + " " + NameOf(outcome.status) + ": " + outcome.message;
}

class ABrokenModule : public testing::TestWithParam<const Check*> {};

TEST_P(ABrokenModule, FailsItsCheckAndNoOther) {
  const std::string broken = GetParam()->id;
  for (const Outcome& outcome : OutcomesOf(SkeletonConformance(broken))) {
    if (outcome.check->id != broken) {
      EXPECT_FALSE(IsFinding(outcome)) << Said(outcome);
    } else {
      EXPECT_TRUE(outcome.check->severity == Severity::Practice ? outcome.status == Status::Warn : IsFinding(outcome))
          << Said(outcome);
      EXPECT_NE(outcome.message, "");
    }
  }
}

std::string TestName(const testing::TestParamInfo<const Check*>& check) {
  std::string name = check.param->id;
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(OfEachCheck, ABrokenModule, testing::ValuesIn(AllChecks()), TestName);

TEST(TheSkeletonWithoutAFault, PassesEveryCheck) {
  for (const Outcome& outcome : OutcomesOf(SkeletonConformance("none"))) {
    EXPECT_EQ(outcome.status, Status::Pass) << Said(outcome);
  }
}

void ExpectToConform(const std::string& module, const std::string& profile) {
  const std::vector<Outcome> outcomes = OutcomesOf(ConformanceOf(MODULE_FOLDER "/" + module, profile));
  for (const Outcome& outcome : outcomes) {
    EXPECT_TRUE(outcome.status == Status::Pass || outcome.status == Status::Skip) << Said(outcome);
  }
  EXPECT_EQ(VerdictOf(outcomes, true), Verdict::Conforms);
}

TEST(TheSimulatedDevice, Conforms) {
  ExpectToConform("simulated_device.so", "<conform><claim name=\"safe-actions\"/></conform>");
}

TEST(TheDeviceWithADaemon, Conforms) {
  ExpectToConform("local_snmpd.so", "<conform><claim name=\"keeps-state\"/></conform>");
}

}  // namespace
}  // namespace devhost
