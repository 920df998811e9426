#include "devhost/commands/FleetOutput.h"

#include <gtest/gtest.h>
#include <signal.h>

namespace devhost {
namespace {

using Kind = FleetResult::Kind;

const FleetOperation kApply{"apply", true, true};
const FleetOperation kDrift{"drift", false, false};
const FleetOperation kCheck{"check", false, false};

FleetEnd EndWith(int status, const std::string& output) {
  FleetEnd end;
  end.exitStatus = status;
  end.output = output;
  return end;
}

TEST(AnEndOfAFleet, HasTheVerdictOfTheCommand) {
  const FleetResult result = JudgeFleetEnd(kApply, EndWith(0, "{\"verdict\":\"changed\"}\n"));
  EXPECT_EQ(result.kind, Kind::Good);
  EXPECT_EQ(result.verdict, "changed");
  EXPECT_EQ(result.reason, "");
  EXPECT_EQ(result.answer, "{\"verdict\":\"changed\"}");
}

TEST(AnEndOfAFleet, HasTheReasonOfTheCommand) {
  const FleetResult result =
      JudgeFleetEnd(kApply, EndWith(2, "devhost: no\n{\"verdict\":\"stopped\",\"reason\":\"two\\nlines\"}\n"));
  EXPECT_EQ(result.kind, Kind::Failed);
  EXPECT_EQ(result.verdict, "stopped");
  EXPECT_EQ(result.reason, "two\\nlines");
}

TEST(AnEndOfAFleet, DiffersOnlyForACommandThatLooks) {
  const FleetEnd end = EndWith(1, "{\"verdict\":\"drift\"}\n");
  EXPECT_EQ(JudgeFleetEnd(kDrift, end).kind, Kind::Differs);
  EXPECT_EQ(JudgeFleetEnd(kApply, end).kind, Kind::Failed);
}

TEST(AnEndOfAFleet, WithoutAnAnswerIsAFailure) {
  EXPECT_EQ(JudgeFleetEnd(kApply, EndWith(0, "")).kind, Kind::Failed);
  EXPECT_EQ(JudgeFleetEnd(kApply, EndWith(0, "{\"verdict\":")).kind, Kind::Failed);
  EXPECT_EQ(JudgeFleetEnd(kApply, EndWith(0, "[1]\n{}\n")).reason, "its process has ended with status 0 and no answer");
}

TEST(AnEndOfAFleet, QuotesOnlyWhatTheCommandComplainsOf) {
  const FleetEnd end = EndWith(1, "secret of a driver\ndevhost: the process was ended during creation\nsecret\n");
  EXPECT_EQ(JudgeFleetEnd(kApply, end).reason, "the process was ended during creation");
}

TEST(AnEndOfAFleet, BySignalOrTimeIsAFailureWhateverWasPrinted) {
  FleetEnd end = EndWith(0, "{\"verdict\":\"changed\"}\n");
  end.signal = SIGKILL;
  EXPECT_EQ(JudgeFleetEnd(kApply, end).kind, Kind::Failed);
  EXPECT_EQ(JudgeFleetEnd(kApply, end).reason, "its process was ended by signal 9");
  end.isLate = true;
  EXPECT_EQ(JudgeFleetEnd(kCheck, end).reason, "it took too long");
}

TEST(AnEndOfAFleet, NamesWhatTheDaemonServesDifferentlyAfterTheChange) {
  const FleetEnd end = EndWith(1,
                               "{\"verdict\":\"changed\",\"probe\":{\"items\":[{\"name\":\"name\",\"verdict\":\"good\"},"
                               "{\"name\":\"contact\",\"verdict\":\"differs\"},{\"name\":\"location\",\"verdict\":"
                               "\"differs\"}]}}\n");
  EXPECT_EQ(JudgeFleetEnd(kApply, end).kind, Kind::Failed);
  EXPECT_EQ(JudgeFleetEnd(kApply, end).reason, "the daemon differs: contact, location");
}

TEST(AnEndOfAFleet, SaysThatTheDaemonHasGoneWithTheChange) {
  const FleetEnd end =
      EndWith(1, "{\"verdict\":\"changed\",\"probe\":{\"verdict\":\"gone\",\"items\":[],\"messages\":[\"a\",\"gone\"]}}\n");
  EXPECT_EQ(JudgeFleetEnd(kApply, end).kind, Kind::Failed);
  EXPECT_EQ(JudgeFleetEnd(kApply, end).reason, "gone");
}

TEST(AnEndOfAFleet, SaysWhetherARotationIsOpen) {
  const FleetOperation look{"rotate", false, false};
  EXPECT_EQ(JudgeFleetEnd(look, EndWith(0, "{\"open\":false,\"verdict\":\"as-configured\",\"messages\":[]}\n")).reason,
            "no rotation is open");
  const FleetResult away =
      JudgeFleetEnd(look, EndWith(2, "{\"open\":true,\"verdict\":\"unknown\",\"messages\":[\"a\",\"b\"]}\n"));
  EXPECT_EQ(away.kind, Kind::Failed);
  EXPECT_EQ(away.reason, "a rotation is open; b");
}

TEST(AnEndOfACheck, CountsFindings) {
  EXPECT_EQ(JudgeFleetEnd(kCheck, EndWith(0, "")).verdict, "clean");
  const FleetResult result = JudgeFleetEnd(kCheck, EndWith(1, "{\"rule\":\"a\"}\n{\"rule\":\"b\"}\n"));
  EXPECT_EQ(result.kind, Kind::Differs);
  EXPECT_EQ(result.reason, "2 findings");
  EXPECT_EQ(result.answer, "[{\"rule\":\"a\"},{\"rule\":\"b\"}]");
  EXPECT_EQ(JudgeFleetEnd(kCheck, EndWith(2, "devhost: cannot read \"x\"\n")).reason, "cannot read \"x\"");
}

TEST(TheStatusOfAFleet, IsThatOfItsWorstDevice) {
  const auto status = [](const FleetOperation& operation, Kind kind) {
    std::vector<FleetResult> results(3);
    results[0].kind = results[2].kind = Kind::Good;
    results[1].kind = kind;
    return FleetStatus(operation, results);
  };
  EXPECT_EQ(status(kApply, Kind::Good), ExitStatus::Good);
  EXPECT_EQ(status(kApply, Kind::Failed), ExitStatus::Failed);
  EXPECT_EQ(status(kApply, Kind::NotStarted), ExitStatus::Failed);
  EXPECT_EQ(status(kApply, Kind::Interrupted), ExitStatus::Failed);
  EXPECT_EQ(status(kDrift, Kind::Differs), ExitStatus::Failed);
  EXPECT_EQ(status(kDrift, Kind::Failed), ExitStatus::Wrong);
  EXPECT_EQ(status(kDrift, Kind::NotStarted), ExitStatus::Wrong);
}

}  // namespace
}  // namespace devhost
