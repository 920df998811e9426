#include <algorithm>
#include <boost/weak_ptr.hpp>

#include "device/SNMPDevice.h"
#include "tests/support/AgentFixture.h"
#include "tests/support/RecordingDevice.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testsupport::RecordingDevice;
using Calls = std::vector<std::string>;

const char kWithdraw[] = "UnregisterQuery 8C31E6F2-04AB-4f97-A6D5-3B92C7E10F58";
const Calls kListeners = {"UnregisterListener 34 0", "UnregisterListener 35 0", "UnregisterListener 36 0",
                          "UnregisterListener 5 0", "UnregisterListener 11 0"};

std::string Deleted(const std::string& id) {
  return "ConSendDataToUI <ManagedDeviceDeleted><id>" + id + "</id></ManagedDeviceDeleted>";
}

// Not an AgentTest, because here the host fails, and so may keep what the agent wanted to take back.
class Destruction : public testing::Test {
 protected:
  void SetUp() override {
    agent.Initialize();
    five.managed = true;
    nine.managed = true;
    agent->AddSNMPDevice(9, &nine);
    agent->AddSNMPDevice(5, &five);
    agent->AddSNMPDevice(7, &seven);
    journal.Take();
  }
  void TearDown() override {
    journal.SetHook(nullptr);
    EXPECT_EQ(devhost::LiveXmlObjects(), 0U);
  }

  static Calls All() {
    Calls calls = kListeners;
    for (const std::string& call :
         {std::string("5.GetIsManagedDevice"), std::string("5.SetIsManagedDevice false"), std::string("DmInvalidateState"),
          Deleted("5"), std::string("7.GetIsManagedDevice"), std::string("9.GetIsManagedDevice"),
          std::string("9.SetIsManagedDevice false"), std::string("DmInvalidateState"), Deleted("9"), std::string(kWithdraw),
          std::string("BaseDestroyed")}) {
      calls.push_back(call);
    }
    return calls;
  }

  Journal journal;
  RecordingDevice five{5, journal};
  RecordingDevice seven{7, journal};
  RecordingDevice nine{9, journal};
  RecordingHost host{journal};
  HostedAgent agent{host};
};

TEST_F(Destruction, TakesListenersBackReleasesManagedDevicesWithdrawsTheAgentAndEndsTheBase) {
  agent.Destroy();
  EXPECT_EQ(journal.Calls(), All());
  EXPECT_FALSE(five.managed);
  EXPECT_FALSE(nine.managed);
  EXPECT_TRUE(host.Listeners().empty());
  EXPECT_FALSE(host.AnythingPublished());
}

TEST_F(Destruction, WritesNoFile) {
  agent.Destroy();
  EXPECT_THAT(journal.Calls(), testing::Each(testing::Not(testing::HasSubstr("Copy"))));
}

TEST_F(Destruction, DropsRecordsAfterTheAgentIsWithdrawnAndBeforeTheBaseEnds) {
  const boost::weak_ptr<SNMPDevice> record(SNMPConfigurationAgentTestAccess(agent.Agent()).devices.at(5));
  int looked = 0;
  journal.SetHook([&](const std::string& call) {
    if (call == kWithdraw) {
      ++looked;
      EXPECT_FALSE(record.expired());
    } else if (call == "BaseDestroyed") {
      ++looked;
      EXPECT_TRUE(record.expired());
    }
  });
  agent.Destroy();
  EXPECT_EQ(looked, 2);
}

TEST_F(Destruction, LeavesTheAgentPublishedWhileDevicesAreReleased) {
  journal.SetHook([this](const std::string& call) {
    if (call == "9.SetIsManagedDevice false") {
      EXPECT_FALSE(agent.Published().SetDeviceState(8));
    }
  });
  agent.Destroy();
  EXPECT_FALSE(nine.managed);
}

TEST_F(Destruction, LeavesADeviceAloneThatWithdrawsItselfWhileItIsAsked) {
  journal.SetHook([this](const std::string& call) {
    if (call == "5.GetIsManagedDevice") {
      agent.Published().DeleteSNMPDevice(5);
    }
  });
  agent.Destroy();
  Calls expected = All();
  const auto asked = std::find(expected.begin(), expected.end(), "5.GetIsManagedDevice") + 1;
  *asked = "ConSendDataToUI <DeviceDeleted><id>5</id></DeviceDeleted>";
  expected.erase(asked + 1, asked + 3);
  EXPECT_EQ(journal.Calls(), expected);
  EXPECT_TRUE(five.managed);
}

TEST_F(Destruction, ReleasesNoVariable) {
  FakeVariable variable(1, 1, "v", true);
  host.variables[{1, 1}] = &variable;
  host.SendEvent("OnVariableAdded", {{"iddevice", "1"}, {"idvariable", "1"}});
  agent.Destroy();
  EXPECT_TRUE(variable.enabled);
}

TEST_F(Destruction, OfAnAgentThatWasNeverInitialisedWithdrawsNothing) {
  Journal calls;
  RecordingHost another(calls);
  HostedAgent fresh(another);
  calls.Take();
  fresh.Destroy();
  Calls expected = kListeners;
  expected.push_back("BaseDestroyed");
  EXPECT_EQ(calls.Calls(), expected);
}

TEST_F(Destruction, LosesOnlyWhatDependsOnTheStepThatThrew) {
  // Each step, and how many of the calls after it depend on it.
  const std::pair<std::string, std::ptrdiff_t> steps[] = {{"UnregisterListener 34 0", 0},
                                                          {"UnregisterListener 35 0", 0},
                                                          {"UnregisterListener 36 0", 0},
                                                          {"UnregisterListener 5 0", 0},
                                                          {"UnregisterListener 11 0", 0},
                                                          {"5.GetIsManagedDevice", 3},
                                                          {"5.SetIsManagedDevice false", 2},
                                                          {"DmInvalidateState", 1},
                                                          {Deleted("5"), 0},
                                                          {"7.GetIsManagedDevice", 0},
                                                          {"9.GetIsManagedDevice", 3},
                                                          {"9.SetIsManagedDevice false", 2},
                                                          {Deleted("9"), 0},
                                                          {kWithdraw, 0},
                                                          {"BaseDestroyed", 0}};
  for (const auto& step : steps) {
    Journal calls;
    RecordingDevice first(5, calls);
    RecordingDevice second(7, calls);
    RecordingDevice third(9, calls);
    first.managed = third.managed = true;
    RecordingHost another(calls);
    HostedAgent failing(another);
    failing.Initialize();
    failing->AddSNMPDevice(5, &first);
    failing->AddSNMPDevice(7, &second);
    failing->AddSNMPDevice(9, &third);
    calls.Take();
    bool thrown = false;
    calls.SetHook([&](const std::string& call) {
      if (call == step.first && !thrown) {
        thrown = true;
        throw std::runtime_error("host or device");
      }
    });
    failing.Destroy();
    Calls expected = All();
    const auto failed = std::find(expected.begin(), expected.end(), step.first) + 1;
    expected.erase(failed, failed + step.second);
    EXPECT_EQ(calls.Calls(), expected) << "when " << step.first << " throws";
    EXPECT_TRUE(thrown) << step.first;
    EXPECT_EQ(devhost::LiveXmlObjects(), 0U) << step.first;
  }
}

TEST_F(Destruction, SurvivesAHostAndDevicesThatThrowFromEveryCall) {
  journal.SetHook([](const std::string&) { throw 42; });
  agent.Destroy();
  Calls expected = kListeners;
  expected.insert(expected.end(),
                  {"5.GetIsManagedDevice", "7.GetIsManagedDevice", "9.GetIsManagedDevice", kWithdraw, "BaseDestroyed"});
  EXPECT_EQ(journal.Calls(), expected);
}

}  // namespace
