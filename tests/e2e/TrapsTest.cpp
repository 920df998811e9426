// Trap targets get traps from the daemon.
#include <gmock/gmock.h>

#include "tests/e2e/RealSystem.h"

namespace e2e {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class TrapTargets : public ARealSystem {
 protected:
  static Settings To(const std::vector<TrapTarget>& targets) {
    Settings settings;
    settings.read = "our house";
    settings.traps = targets;
    return settings;
  }
  TrapReceiver first;
  TrapReceiver second;
};

TEST_F(TrapTargets, HearOfStartAndStopEachWithItsCommunity) {
  Begin();
  Serve(kKitchen,
        To({TrapTarget("127.0.0.1", "alpha", first.Port()), TrapTarget("127.0.0.1:" + second.Port(), "beta", "")}));
  EXPECT_THAT(first.Traps(), ElementsAre(Trap{kColdStart, "alpha"}));
  EXPECT_THAT(second.Traps(), ElementsAre(Trap{kColdStart, "beta"}));
  EXPECT_EQ(Action(kKitchen, "StopMasterAgent"), "<Success/>");
  EXPECT_THAT(first.Traps(), ElementsAre(Trap{kColdStart, "alpha"}, Trap{kShutdown, "alpha"}));
  EXPECT_THAT(second.Traps(), ElementsAre(Trap{kColdStart, "beta"}, Trap{kShutdown, "beta"}));
}

TEST_F(TrapTargets, ThatChangeHearTheOldDaemonGoOrTheNewOneCome) {
  Begin();
  Serve(kKitchen, To({TrapTarget("127.0.0.1", "alpha", first.Port())}));
  ASSERT_EQ(SetState(kKitchen, To({TrapTarget("127.0.0.1", "beta", second.Port())})), "<Success/>");
  EXPECT_THAT(first.Traps(), ElementsAre(Trap{kColdStart, "alpha"}, Trap{kShutdown, "alpha"}));
  EXPECT_THAT(second.Traps(), ElementsAre(Trap{kColdStart, "beta"}));
  ASSERT_EQ(SetState(kKitchen, To({})), "<Success/>");
  ASSERT_EQ(Action(kKitchen, "StopMasterAgent"), "<Success/>");
  EXPECT_THAT(first.Traps(), ElementsAre(Trap{kColdStart, "alpha"}, Trap{kShutdown, "alpha"}));
  EXPECT_THAT(second.Traps(), ElementsAre(Trap{kColdStart, "beta"}, Trap{kShutdown, "beta"}));
}

// The daemon cuts a quoted community of a trap2sink line at its spaces. The section is still written like that: the daemon
// ignores this target and serves the rest.
TEST_F(TrapTargets, WithASpaceInTheCommunityHearNothing) {
  Begin();
  Serve(kKitchen,
        To({TrapTarget("127.0.0.1", "two words", first.Port()), TrapTarget("127.0.0.1:" + first.Port(), "two words", ""),
            TrapTarget("127.0.0.1", "alpha", second.Port())}));
  EXPECT_THAT(second.Traps(), ElementsAre(Trap{kColdStart, "alpha"}));
  EXPECT_THAT(first.Traps(), IsEmpty());
  EXPECT_THAT(Log(), Contains(HasSubstr("cannot create sink: *****")));
}

TEST_F(TrapTargets, NamedTwiceHearEverythingTwice) {
  Begin();
  const TrapTarget target("127.0.0.1", "alpha", first.Port());
  Serve(kKitchen, To({target, target}));
  EXPECT_THAT(first.Traps(), ElementsAre(Trap{kColdStart, "alpha"}, Trap{kColdStart, "alpha"}));
}

}  // namespace
}  // namespace e2e
