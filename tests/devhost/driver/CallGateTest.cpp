#include "devhost/driver/CallGate.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <thread>

namespace devhost {
namespace {

// What keeps that call out on a thread of its own, "" for nothing.
std::string KeptOutBy(CallGate& gate, const CallGate::Call& call) {
  std::optional<CallGate::Call> other;
  std::thread([&] { other = gate.Enter(call); }).join();
  return other ? other->Description() : "";
}

class ACallGate : public testing::Test {
 protected:
  const int driver = 0;
  const CallGate::Call command{&driver, "command \"Echo\"", "driver 7 \"kitchen\""};
  const CallGate::Call stop{nullptr, "stop", ""};
  CallGate gate;
};

TEST_F(ACallGate, DescribesACallByItsDriverWhenThereIsOne) {
  EXPECT_EQ(command.Description(), "command \"Echo\" of driver 7 \"kitchen\"");
  EXPECT_EQ(stop.Description(), "stop");
}

TEST_F(ACallGate, IsOpenWhenNobodyIsInside) {
  EXPECT_FALSE(gate.IsInside());
  EXPECT_EQ(gate.Innermost().operation, "");
  EXPECT_FALSE(gate.Enter(stop));
  EXPECT_TRUE(gate.IsInside());
  gate.Leave();
  EXPECT_FALSE(gate.IsInside());
}

TEST_F(ACallGate, LetsCallsOfOneThreadNest) {
  EXPECT_FALSE(gate.Enter(stop));
  EXPECT_FALSE(gate.Enter(command));
  gate.Leave();
  EXPECT_TRUE(gate.IsInside());
  EXPECT_EQ(gate.Innermost().operation, "stop");
}

TEST_F(ACallGate, KeepsAnotherThreadOutUntilTheLastCallHasEnded) {
  EXPECT_FALSE(gate.Enter(command));
  EXPECT_FALSE(gate.Enter(stop));
  EXPECT_EQ(KeptOutBy(gate, stop), "stop");
  gate.Leave();
  EXPECT_EQ(KeptOutBy(gate, stop), "command \"Echo\" of driver 7 \"kitchen\"");
  gate.Leave();
  EXPECT_EQ(KeptOutBy(gate, stop), "");
  EXPECT_FALSE(gate.IsInside());
}

TEST_F(ACallGate, KeepsADriverOutOnAnotherThreadThoughNobodyIsInside) {
  EXPECT_TRUE(gate.IsOpen());
  EXPECT_FALSE(gate.EnterFromDriver(command));
  gate.Leave();
  std::optional<CallGate::Call> kept;
  bool open = true;
  std::thread([&] {
    open = gate.IsOpen();
    kept = gate.EnterFromDriver(command);
  }).join();
  EXPECT_FALSE(open);
  ASSERT_TRUE(kept);
  EXPECT_EQ(kept->operation, "");
}

TEST_F(ACallGate, LetsADriverInOnTheThreadOfTheLastCall) {
  std::thread([&] {
    EXPECT_FALSE(gate.Enter(stop));
    EXPECT_FALSE(gate.EnterFromDriver(command));
    gate.Leave();
    gate.Leave();
    EXPECT_TRUE(gate.IsOpen());
  }).join();
  EXPECT_FALSE(gate.IsOpen());
  EXPECT_TRUE(gate.EnterFromDriver(command));
}

TEST_F(ACallGate, KnowsTheCallAroundTheInnermostOne) {
  EXPECT_EQ(gate.Around(), "");
  EXPECT_FALSE(gate.Enter(command));
  EXPECT_EQ(gate.Around(), "");
  EXPECT_FALSE(gate.Enter(stop));
  EXPECT_EQ(gate.Around(), "command \"Echo\" of driver 7 \"kitchen\"");
}

TEST_F(ACallGate, KnowsTheInnermostCallIntoADriver) {
  EXPECT_FALSE(gate.Enter(command));
  EXPECT_FALSE(gate.Enter(stop));
  EXPECT_EQ(gate.Innermost().driver, &driver);
  EXPECT_EQ(gate.Innermost().operation, "command \"Echo\"");
}

}  // namespace
}  // namespace devhost
