#include <stdexcept>

#include "agent/Exports.h"
#include "tests/support/AgentFixture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Calls = std::vector<std::string>;

class Construction : public testing::Test {
 protected:
  void TearDown() override {
    EXPECT_EQ(host.Listeners().size(), hostKeepsListeners ? 3U : 0U);
    EXPECT_FALSE(host.AnythingPublished());
    EXPECT_EQ(devhost::LiveXmlObjects(), 0U);
  }

  // Creates an agent while the host fails in the call `failing` and, with `fromThereOn`, in all later calls.
  void FailAt(const std::string& failing, bool fromThereOn = false) {
    bool failed = false;
    journal.SetHook([failing, fromThereOn, &failed](const std::string& call) {
      if (call == failing || (failed && fromThereOn)) {
        failed = true;
        throw std::runtime_error(failing);
      }
    });
    journal.Take();
    try {
      HostedAgent agent(host);
      ADD_FAILURE() << "created although " << failing << " failed";
    } catch (const std::runtime_error& error) {
      EXPECT_EQ(error.what(), failing) << "a later exception came out instead of the first";
    }
    journal.SetHook(nullptr);
  }

  Journal journal;
  RecordingHost host{journal};
  bool hostKeepsListeners = false;  // because it failed to unregister them
};

TEST_F(Construction, BuildsTheBaseTakesTheVariableManagerThenListens) {
  HostedAgent agent(host);
  EXPECT_THAT(journal.Calls(),
              ElementsAre("BaseConstructed 0", "GetVariableManager", "RegisterListener 34 0", "RegisterListener 35 0",
                          "RegisterListener 36 0", "RegisterListener 5 0", "RegisterListener 11 0"));
}

TEST_F(Construction, ListensWithTheEventCallbackOfTheAgent) {
  HostedAgent agent(host);
  ASSERT_EQ(host.Listeners().size(), 5U);
  for (const RecordingHost::Listener& listener : host.Listeners()) {
    EXPECT_EQ(listener.callback, static_cast<ISystemEventCallback*>(&agent.Agent()));
  }
}

TEST_F(Construction, PublishesNothingAndHoldsNothing) {
  HostedAgent agent(host);
  const SNMPConfigurationAgentTestAccess state(agent.Agent());
  EXPECT_EQ(state.registerer, nullptr);
  EXPECT_TRUE(state.devices.empty());
  EXPECT_TRUE(state.deviceVariables.empty());
  EXPECT_TRUE(state.userVariables.empty());
  EXPECT_TRUE(state.savedTrapFlags.empty());
  EXPECT_EQ(state.variableManager, host.Variables());
  EXPECT_FALSE(state.sectionTexts.header.empty());
  EXPECT_FALSE(state.sectionTexts.trailer.empty());
  EXPECT_FALSE(host.AnythingPublished());
}

TEST_F(Construction, ReturnsTheDriverInterfaceWhichIsNotTheFirstAddress) {
  HostedAgent agent(host);
  EXPECT_NE(static_cast<void*>(&agent.Driver()), static_cast<void*>(&agent.Agent()));
  EXPECT_EQ(&agent.Driver(), static_cast<IDriver*>(&agent.Agent()));
}

TEST_F(Construction, IsWhatTheExportedFactoryDoes) {
  EXPECT_EQ(GetCreationFunc(), &SNMPConfigurationAgent::Create);
  EXPECT_STREQ(versionString, "1.0.0.0");
}

TEST_F(Construction, ThatFailsInTheBaseLeavesNothing) {
  FailAt("BaseConstructed 0");
  EXPECT_THAT(journal.Calls(), ElementsAre("BaseConstructed 0"));
}

TEST_F(Construction, ThatFailsAtTheVariableManagerTakesTheBaseDown) {
  FailAt("GetVariableManager");
  EXPECT_THAT(journal.Calls(), ElementsAre("BaseConstructed 0", "GetVariableManager", "BaseDestroyed"));
}

TEST_F(Construction, ThatFailsAtAListenerUnregistersThoseBeforeItInReverse) {
  const Calls ids = {"34", "35", "36", "5", "11"};
  for (std::size_t failing = 0; failing != ids.size(); ++failing) {
    Calls expected = {"BaseConstructed 0", "GetVariableManager"};
    for (std::size_t i = 0; i <= failing; ++i) {
      expected.push_back("RegisterListener " + ids[i] + " 0");
    }
    for (std::size_t i = failing; i != 0; --i) {
      expected.push_back("UnregisterListener " + ids[i - 1] + " 0");
    }
    expected.push_back("BaseDestroyed");
    FailAt("RegisterListener " + ids[failing] + " 0");
    EXPECT_EQ(journal.Calls(), expected);
    EXPECT_TRUE(host.Listeners().empty());
  }
}

TEST_F(Construction, ThatFailsTriesToUnregisterEveryListenerThoughTheHostGoesOnFailing) {
  FailAt("RegisterListener 5 0", true);
  EXPECT_THAT(journal.Calls(),
              ElementsAre("BaseConstructed 0", "GetVariableManager", "RegisterListener 34 0", "RegisterListener 35 0",
                          "RegisterListener 36 0", "RegisterListener 5 0", "UnregisterListener 36 0",
                          "UnregisterListener 35 0", "UnregisterListener 34 0", "BaseDestroyed"));
  hostKeepsListeners = true;
}

}  // namespace
