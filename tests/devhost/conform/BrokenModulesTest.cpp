// Who checks the checks: for each of them there is a module that breaks it and nothing else.
#include <gmock/gmock.h>

#include <algorithm>
#include <cstdio>
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

// The sanitizer has an allocator of its own, which does not say what it has given out.
constexpr bool CountsMemory() {
#ifdef __has_feature
#if __has_feature(address_sanitizer)
  return false;
#endif
#endif
  return true;
}

TEST_P(ABrokenModule, FailsItsCheck) {
  if (!CountsMemory() && std::string(GetParam()->id) == "settings-memory") {
    GTEST_SKIP() << "the memory in use is not known here";
  }
  const Outcome outcome = OutcomeOf(UntilAFinding(GetParam()->id), GetParam()->id);
  EXPECT_TRUE(GetParam()->severity == Severity::Practice ? outcome.status == Status::Warn : IsFinding(outcome))
      << Said(outcome);
  EXPECT_NE(outcome.message, "");
}

// The outcomes of the other checks, but for random sessions, which meet the faults of all: in this process where the module
// can be loaded, since a process for each check of each module takes long.
std::vector<Outcome> OutcomesBut(const Check& broken) {
  const Conformance conformance = SkeletonConformance(broken.id);
  std::vector<Outcome> outcomes;
  if (OutcomesOf(conformance, {FindCheck("module-needs"), FindCheck("module-loads")}).back().status != Status::Pass) {
    outcomes = OutcomesOf(conformance);
    outcomes.erase(std::find_if(outcomes.begin(), outcomes.end(),
                                [&broken](const Outcome& outcome) { return outcome.check == &broken; }));
    return outcomes;
  }
  std::vector<const Check*> others;
  others.reserve(Checks().size());
  for (const Check& check : Checks()) {
    if (&check != &broken && GroupOf(check) != "fuzz") {
      others.push_back(&check);
    }
  }
  if (broken.id == std::string("process-descriptors")) {
    // It would close descriptors of this process, which all checks share.
    return OutcomesOf(conformance, others);
  }
  outcomes.reserve(others.size());
  for (const Check* const check : others) {
    outcomes.push_back(RunCheckInProcess(conformance, *check));
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

// Mistakes that authors make, and the checks that name them.
struct Mistake {
  const char* what;
  const char* module;
  const char* check;
};

const Mistake kMistakes[] = {
    {"keeps the pointer to the agent", "life-agent-gone", "life-agent-gone"},
    {"calls the host from a thread", "threads-host", "threads-host"},
    {"calls the host from a thread while nobody calls it", "calls-from-a-thread-later", "threads-host"},
    {"writes to the log from a thread", "logs-from-a-thread", "threads-host"},
    {"withdraws twice", "withdraws-twice", "life-withdraws"},
    {"throws from CopyFrom", "throws-from-copy-from", "file-round"},
    {"forgets DeleteSNMPDevice", "life-withdraws", "life-withdraws"},
    {"publishes another pointer than that to the interface", "life-publish", "life-publish"},
    {"has an erased flag the wrong way round", "inverted-flags", "erased-cleared"},
    {"clears an erased flag in CopyFrom", "forgets-what-was-erased", "erased-own"},
    {"has one file for all devices", "shares-a-file", "whole-two"},
    {"keeps 16 bits of its id", "has-short-ids", "life-agent-first"},
    {"removes its file in the destructor", "file-kept", "file-kept"},
    {"empties its file in Initialize", "empties-its-file", "file-kept"},
    {"gives a copy of its file that it has kept", "caches-its-file", "file-kept"},
    {"ignores a setter", "ignored-setters", "settings-kept"},
    {"leaves the text of CopyFrom as it is", "unfilled-copy-from", "file-round"},
    {"has the old std::string", "old-string", "module-needs"},
    {"exports symbols of its own", "module-exports", "module-exports"},
#ifndef _GLIBCXX_DEBUG
    {"has the checked standard library", "checked-library", "module-needs"},
#endif
};

class ADriverThat : public testing::TestWithParam<Mistake> {};

TEST_P(ADriverThat, MakesAMistakeIsToldSoByTheCheckForIt) {
  const Outcome outcome = OutcomeOf(SkeletonConformance(GetParam().module), GetParam().check);
  EXPECT_TRUE(IsFinding(outcome) || outcome.status == Status::Warn) << GetParam().what << ": " << Said(outcome);
  // A line for each, for whoever wants to see what authors read.
  std::printf("%s | %s\n", GetParam().what, Said(outcome).c_str());
}

INSTANTIATE_TEST_SUITE_P(Each, ADriverThat, testing::ValuesIn(kMistakes), [](const auto& mistake) {
  std::string name = mistake.param.module;
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
});

TEST(TheSkeletonWithoutAFault, PassesEveryCheck) {
  for (const Outcome& outcome : OutcomesOf(SkeletonConformance("none"))) {
    EXPECT_EQ(outcome.status, Status::Pass) << Said(outcome);
  }
}

TEST(ADeviceWithoutAFileAtFirst, PassesEveryCheck) {
  for (const Outcome& outcome : OutcomesOf(SkeletonConformance("has-no-file-at-first"))) {
    EXPECT_EQ(outcome.status, Status::Pass) << Said(outcome);
  }
}

// The tool's users may leave contact, place and name to the project.
TEST(ADeviceThatFollowsItsSwitches, PassesEveryCheck) {
  for (const Outcome& outcome : OutcomesOf(SkeletonConformance("follows-its-switches"))) {
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
  ExpectToConform("simulated_device.so",
                  "<conform><claim name='safe-actions'/><claim name='local-file'/>"
                  "<claim name='withdraws' out='Withdraw' back='Announce'/></conform>");
}

TEST(TheDeviceWithADaemon, Conforms) {
  ExpectToConform("local_snmpd.so",
                  "<conform><claim name='keeps-state'/><claim name='local-file'/>"
                  "<claim name='withdraws' out='Withdraw' back='Announce'/>"
                  "<claim name='goes-off-line' out='SetOnline online=false' back='SetOnline online=true'/></conform>");
}

}  // namespace
}  // namespace devhost
