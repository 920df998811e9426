#include "devhost/conform/AgentDouble.h"

#include <gmock/gmock.h>

#include "devhost/conform/Bench.h"
#include "devhost/conform/Check.h"
#include "tests/devhost/conform/Conforming.h"

namespace devhost {
namespace {

class AnAgentDouble : public testing::Test {
 protected:
  const testsupport::ScratchFolder folder;
  Trial trial{SkeletonModule("none"), folder.Path(), {}, 7};
};

TEST_F(AnAgentDouble, IsAnotherAgentEachTimeItComes) {
  Bench bench(trial);
  bench.Load();
  bench.AgentArrives();
  bench.AgentLeaves();
  bench.AgentArrives();
  ASSERT_EQ(bench.Agent().calls.size(), 2U);
  EXPECT_EQ(bench.Agent().calls[0].agent, 0U);
  EXPECT_EQ(bench.Agent().calls[1].agent, 1U);
  EXPECT_FALSE(bench.Agent().calls[1].hasLeft);
}

TEST_F(AnAgentDouble, RecordsCallsToAnAgentThatHasLeft) {
  Trial stubborn{SkeletonModule("life-agent-gone"), folder.Path(), {}, 7};
  Bench bench(stubborn);
  bench.AgentArrives();
  bench.Load();
  bench.AgentLeaves();
  bench.Stop();
  EXPECT_EQ(bench.Agent().calls.back().operation, "DeleteSNMPDevice");
  EXPECT_TRUE(bench.Agent().calls.back().hasLeft);
}

TEST_F(AnAgentDouble, LeavesNoDeviceBehindForTheHostToWithdraw) {
  Bench bench(trial);
  bench.AgentArrives();
  bench.Load();
  bench.AgentLeaves();
  bench.Stop();
  EXPECT_EQ(bench.CountOf("DeleteSNMPDevice"), 0U);
  EXPECT_THAT(bench.Lines(Occurrence::Kind::Manners), testing::IsEmpty());
}

TEST_F(AnAgentDouble, LetsACheckActFromInsideACallOfTheDevice) {
  Bench bench(trial);
  std::string version;
  bench.Agent().onCall = [&](const AgentCall& call) {
    if (call.device != nullptr) {
      version = call.device->GetSNMPVersion();
    }
  };
  bench.AgentArrives();
  bench.Load();
  EXPECT_EQ(version, "1.0.0");
}

TEST_F(AnAgentDouble, MakesAViolationOfWhatComesOutOfADevice) {
  Trial throwing{SkeletonModule("throws"), folder.Path(), {}, 7};
  Bench bench(throwing);
  try {
    bench.ActOnDevice([](Device& device) {
      device.Call("SetUseProjectOwnerAddressSetting", &ISupportSNMP::SetUseProjectOwnerAddressSetting, true);
    });
    FAIL();
  } catch (const Violation& violation) {
    EXPECT_EQ(violation.slot, "SetUseProjectOwnerAddressSetting");
  }
}

}  // namespace
}  // namespace devhost
