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

TEST_P(ABrokenModule, FailsItsCheck) {
  const Outcome outcome = OutcomeOf(SkeletonConformance(GetParam()->id), GetParam()->id);
  EXPECT_TRUE(GetParam()->severity == Severity::Practice ? outcome.status == Status::Warn : IsFinding(outcome))
      << Said(outcome);
  EXPECT_NE(outcome.message, "");
}

// The outcomes of the other checks: in this process where the module can be loaded, since a process for each check of each
// module takes long.
std::vector<Outcome> OutcomesBut(const Check& broken) {
  const Conformance conformance = SkeletonConformance(broken.id);
  std::vector<Outcome> outcomes;
  if (OutcomeOf(conformance, "module-loads").status != Status::Pass) {
    outcomes = OutcomesOf(conformance);
    outcomes.erase(std::find_if(outcomes.begin(), outcomes.end(),
                                [&broken](const Outcome& outcome) { return outcome.check == &broken; }));
    return outcomes;
  }
  outcomes.reserve(Checks().size());
  for (const Check& check : Checks()) {
    if (&check != &broken) {
      outcomes.push_back(RunCheckInProcess(conformance, check));
    }
  }
  return outcomes;
}

TEST_P(ABrokenModule, FailsNoOtherCheck) {
  for (const Outcome& outcome : OutcomesBut(*GetParam())) {
    EXPECT_FALSE(IsFinding(outcome)) << Said(outcome);
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
