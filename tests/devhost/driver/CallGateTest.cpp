#include "devhost/driver/CallGate.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

namespace devhost {
namespace {

// Calls from threads of their own.
bool EntersElsewhere(CallGate& gate, const CallGate::Call& call, CallGate::Call& innermost) {
  bool entered = false;
  std::thread([&] { entered = gate.Enter(call, innermost); }).join();
  return entered;
}

class ACallGate : public testing::Test {
 protected:
  const int driver = 0;
  const CallGate::Call command{&driver, "command \"Echo\"", "driver 7 \"kitchen\""};
  const CallGate::Call stop{nullptr, "stop", ""};
  CallGate::Call innermost;
  CallGate gate;
};

TEST_F(ACallGate, DescribesACallByItsDriverWhenThereIsOne) {
  EXPECT_EQ(command.Description(), "command \"Echo\" of driver 7 \"kitchen\"");
  EXPECT_EQ(stop.Description(), "stop");
}

TEST_F(ACallGate, IsOpenWhenNobodyIsInside) {
  EXPECT_FALSE(gate.IsInside());
  EXPECT_EQ(gate.Innermost().operation, "");
  EXPECT_TRUE(gate.Enter(stop, innermost));
  EXPECT_TRUE(gate.IsInside());
  gate.Leave();
  EXPECT_FALSE(gate.IsInside());
}

TEST_F(ACallGate, LetsCallsOfOneThreadNest) {
  EXPECT_TRUE(gate.Enter(stop, innermost));
  EXPECT_TRUE(gate.Enter(command, innermost));
  gate.Leave();
  EXPECT_TRUE(gate.IsInside());
  EXPECT_EQ(gate.Innermost().operation, "stop");
}

TEST_F(ACallGate, KeepsAnotherThreadOutUntilTheLastCallHasEnded) {
  EXPECT_TRUE(gate.Enter(command, innermost));
  EXPECT_TRUE(gate.Enter(stop, innermost));
  EXPECT_FALSE(EntersElsewhere(gate, stop, innermost));
  EXPECT_EQ(innermost.operation, "stop");
  gate.Leave();
  EXPECT_FALSE(EntersElsewhere(gate, stop, innermost));
  EXPECT_EQ(innermost.operation, "command \"Echo\"");
  gate.Leave();
  EXPECT_TRUE(EntersElsewhere(gate, stop, innermost));
  EXPECT_FALSE(gate.IsInside());
}

TEST_F(ACallGate, KnowsTheInnermostCallIntoADriver) {
  EXPECT_TRUE(gate.Enter(command, innermost));
  EXPECT_TRUE(gate.Enter(stop, innermost));
  EXPECT_EQ(gate.Innermost().driver, &driver);
  EXPECT_EQ(gate.Innermost().operation, "command \"Echo\"");
}

}  // namespace
}  // namespace devhost
