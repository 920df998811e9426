#include <stdexcept>

#include "agent/ISNMPConfigurationAgent.h"
#include "host/H7XML.h"
#include "tests/support/AgentFixture.h"
#include "tests/support/RecordingDevice.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testsupport::RecordingDevice;

const char kAgent[] = "8C31E6F2-04AB-4f97-A6D5-3B92C7E10F58";
const char kPublish[] = "RegisterQuery 8C31E6F2-04AB-4f97-A6D5-3B92C7E10F58";
const char kWithdraw[] = "UnregisterQuery 8C31E6F2-04AB-4f97-A6D5-3B92C7E10F58";
const char kFind[] = "FindDrivers 0 E49A0C76-1D3F-4B82-9E17-60A5D4B8C23D";

class Initialize : public AgentTest {
 protected:
  RecordingDevice five{5, journal};
  RecordingDevice seven{7, journal};
};

TEST_F(Initialize, CallsTheBasePublishesFindsDriversAndSignalsThemInTheirOrder) {
  host.drivers = {&seven, &five};
  EXPECT_EQ(agent.Initialize(), 0);
  EXPECT_THAT(journal.Calls(), ElementsAre("BaseInitialized 3", "GetInstanceManager", kPublish, "GetDriverManager", kFind,
                                           "7.AgentAvailable", "5.AgentAvailable"));
}

TEST_F(Initialize, WithoutDriversIsNoError) {
  EXPECT_EQ(agent.Initialize(), 0);
  EXPECT_EQ(journal.Calls().back(), kFind);
}

TEST_F(Initialize, PublishesTheViewThatDeviceDriversUse) {
  agent.Initialize();
  EXPECT_EQ(host.Published(kAgent), static_cast<void*>(static_cast<ISNMPConfigurationAgent*>(&agent.Agent())));
  EXPECT_NE(host.Published(kAgent), static_cast<void*>(&agent.Agent()));
  agent.Published().AddSNMPDevice(5, &five);
  EXPECT_EQ(State().devices.count(5), 1U);
  EXPECT_TRUE(agent.Published().SetDeviceState(5));
  EXPECT_FALSE(agent.Published().SetDeviceState(6));
  agent.Published().DeleteSNMPDevice(5);
  EXPECT_TRUE(State().devices.empty());
}

TEST_F(Initialize, HasPublishedTheAgentBeforeDriversAreSignalled) {
  host.drivers = {&five};
  journal.SetHook([this](const std::string& call) {
    if (call == "5.AgentAvailable") {
      agent.Published().AddSNMPDevice(5, &five);
    }
  });
  agent.Initialize();
  EXPECT_EQ(State().devices.count(5), 1U);
  EXPECT_EQ(journal.Calls().back(), "ConSendDataToUI <DeviceAdded><id>5</id></DeviceAdded>");
}

TEST_F(Initialize, ASecondTimePublishesNothingAndSignalsDriversAgain) {
  host.drivers = {&five};
  agent.Initialize();
  journal.Take();
  EXPECT_EQ(agent.Initialize(), 0);
  EXPECT_THAT(journal.Calls(), ElementsAre("BaseInitialized 3", "GetDriverManager", kFind, "5.AgentAvailable"));
  agent.Destroy();
  EXPECT_THAT(journal.Calls(), testing::Contains(kWithdraw).Times(1));
}

TEST_F(Initialize, ASecondTimeDoesNotPublishAgainAfterARefusal) {
  host.refusesRegistrations = true;
  agent.Initialize();
  host.refusesRegistrations = false;
  journal.Take();
  agent.Initialize();
  EXPECT_THAT(CallsOf({"RegisterQuery"}), IsEmpty());
}

TEST_F(Initialize, DoesNotWithdrawAtTheEndWhatTheHostRefused) {
  host.refusesRegistrations = true;
  EXPECT_EQ(agent.Initialize(), 0);
  EXPECT_THAT(CallsOf({"RegisterQuery"}), ElementsAre(kPublish));
  EXPECT_EQ(journal.Calls().back(), kFind);
  agent.Destroy();
  EXPECT_THAT(CallsOf({"UnregisterQuery"}), IsEmpty());
}

TEST_F(Initialize, LoadsThePersistedStateLast) {
  host.drivers = {&five};
  State().savedTrapFlags[VariableKey(9, 9)] = true;
  journal.SetHook([this](const std::string&) {
    EXPECT_EQ(State().savedTrapFlags.size(), 1U) << "loaded before " << journal.Calls().back();
    EXPECT_EQ(State().savedTrapFlags.count(VariableKey(9, 9)), 1U);
  });
  const h7::auto_com<H7XML::INode> state =
      devhost::ReadXmlNode("<s><variables><v deviceid=\"1\" variableid=\"2\" snmpTrapEnabled=\"true\"/></variables></s>");
  EXPECT_EQ(agent.Initialize(state.Get()), 0);
  EXPECT_EQ(journal.Calls().back(), "5.AgentAvailable");
  EXPECT_EQ(State().savedTrapFlags.size(), 1U);
  EXPECT_TRUE(State().savedTrapFlags.at(VariableKey(1, 2)));
}

TEST_F(Initialize, WithoutAPersistedStateKeepsFlagsAndStillSignals) {
  host.drivers = {&five};
  State().savedTrapFlags[VariableKey(9, 9)] = true;
  EXPECT_EQ(agent.Initialize(nullptr), 0);
  EXPECT_EQ(State().savedTrapFlags.size(), 1U);
  EXPECT_EQ(journal.Calls().back(), "5.AgentAvailable");
}

TEST_F(Initialize, ASecondTimeLoadsTheStateAgain) {
  const h7::auto_com<H7XML::INode> state = devhost::ReadXmlNode("<s/>");
  agent.Initialize();
  State().savedTrapFlags[VariableKey(9, 9)] = true;
  agent.Initialize(state.Get());
  EXPECT_TRUE(State().savedTrapFlags.empty());
}

TEST_F(Initialize, LetsWhatTheHostOrADeviceThrowsThrough) {
  host.drivers = {&five, &seven};
  for (const char* failing :
       {"BaseInitialized 3", "GetInstanceManager", kPublish, "GetDriverManager", kFind, "5.AgentAvailable"}) {
    Journal calls;
    RecordingHost another(calls);
    another.drivers = {&five, &seven};
    HostedAgent failed(another);
    const auto fail = [failing](const std::string& call) {
      if (call == failing) {
        throw std::runtime_error("host");
      }
    };
    calls.SetHook(fail);
    journal.SetHook(fail);
    journal.Take();
    EXPECT_THROW(failed.Initialize(), std::runtime_error) << failing;
    EXPECT_THAT(CallsOf({"7."}), IsEmpty()) << "a driver was signalled after " << failing << " failed";
    calls.SetHook(nullptr);
    journal.SetHook(nullptr);
    failed.Destroy();
    EXPECT_FALSE(another.AnythingPublished()) << failing;
    EXPECT_EQ(devhost::LiveXmlObjects(), 0U) << failing;
  }
  host.drivers.clear();
}

TEST_F(Initialize, ASecondTimePublishesWhatThePublicationThatThrewDidNot) {
  journal.SetHook([](const std::string& call) {
    if (call == kPublish) {
      throw std::runtime_error("host");
    }
  });
  EXPECT_THROW(agent.Initialize(), std::runtime_error);
  EXPECT_FALSE(host.AnythingPublished());
  journal.SetHook(nullptr);
  journal.Take();
  agent.Initialize();
  EXPECT_THAT(CallsOf({"RegisterQuery"}), ElementsAre(kPublish));
  EXPECT_TRUE(host.AnythingPublished());
  agent.Initialize();
  EXPECT_THAT(CallsOf({"RegisterQuery"}), ElementsAre(kPublish));
}

TEST_F(Initialize, RegistersNoCommandAndInvalidatesNothing) {
  agent.Initialize();
  EXPECT_THAT(CallsOf({"RegisterUICmd", "DmInvalidateState", "ConSendDataToUI", "Log"}), IsEmpty());
}

}  // namespace
