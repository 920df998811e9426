#include <boost/weak_ptr.hpp>

#include "device/SNMPDevice.h"
#include "host/ICmdMessage.h"
#include "tests/support/AgentFixture.h"
#include "tests/support/RecordingDevice.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testsupport::RecordingDevice;
using testsupport::Statuses;

struct Action {
  const char* name;  // of the command and of the device's operation
  Statuses RecordingDevice::*statuses;
};

const Action kActions[] = {
    {"RebootController", &RecordingDevice::reboot},
    {"StopMasterAgent", &RecordingDevice::stop},
    {"StartMasterAgent", &RecordingDevice::start},
};

class AControllerAction : public AgentTest {
 protected:
  void SetUp() override {
    agent.Driver().RegisterCommands();
    agent->AddSNMPDevice(5, &five);
    agent->AddSNMPDevice(7, &seven);
    journal.Take();
  }

  RecordingDevice zero{0, journal};
  RecordingDevice five{5, journal};
  RecordingDevice seven{7, journal};
};

TEST_F(AControllerAction, IsOneCallToTheDevice) {
  for (const Action& action : kActions) {
    EXPECT_EQ(host.CommandText(action.name, {{"deviceId", "7"}}), "<Success/>");
    EXPECT_THAT(journal.Take(), ElementsAre(std::string("7.") + action.name));
  }
}

TEST_F(AControllerAction, FailsWithoutAReasonWhenTheDeviceFails) {
  for (const Action& action : kActions) {
    for (const int status : {1, -1, -9}) {
      (seven.*action.statuses).always = status;
      EXPECT_EQ(host.CommandText(action.name, {{"deviceId", "7"}}), "<Fail/>");
      EXPECT_THAT(journal.Take(), ElementsAre(std::string("7.") + action.name));
      EXPECT_EQ(State().devices.size(), 2U);
    }
  }
}

TEST_F(AControllerAction, OnAnUnknownDeviceFailsAndCallsNobody) {
  for (const Action& action : kActions) {
    for (const char* id : {"6", "", "x", "-7", "4294967303"}) {
      EXPECT_EQ(host.CommandText(action.name, {{"deviceId", id}}), "<Fail/>") << id;
    }
    EXPECT_EQ(host.CommandText(action.name), "<Fail/>");
    EXPECT_EQ(host.CommandText(action.name, {{"id", "7"}}), "<Fail/>");
  }
  EXPECT_THAT(journal.Calls(), IsEmpty());
  EXPECT_EQ(State().devices.size(), 2U);
}

TEST_F(AControllerAction, WithoutAnIdIsForDeviceZero) {
  agent->AddSNMPDevice(0, &zero);
  journal.Take();
  for (const Action& action : kActions) {
    EXPECT_EQ(host.CommandText(action.name), "<Success/>");
    EXPECT_THAT(journal.Take(), ElementsAre(std::string("0.") + action.name));
  }
}

TEST_F(AControllerAction, LetsWhatTheDeviceThrowsThrough) {
  journal.SetHook([](const std::string&) { throw std::runtime_error("device"); });
  for (const Action& action : kActions) {
    EXPECT_THROW(host.Command(action.name, {{"deviceId", "7"}}), std::runtime_error);
    EXPECT_EQ(devhost::LiveXmlObjects(), 0U);
    EXPECT_EQ(State().devices.at(7).use_count(), 1);
  }
}

TEST_F(AControllerAction, ReadsTheIdBeforeItMakesAReply) {
  struct Message final : ICmdMessage {
    std::string GetString(const char*) const override { return std::string(); }
    unsigned long GetULong(const char*) const override {
      EXPECT_EQ(devhost::LiveXmlObjects(), 0U);
      return 7;
    }
    bool Has(const char*) const override { return true; }
  } const message;
  EXPECT_EQ(Text(*agent->OnReqRebootController(message)), "<Success/>");
}

TEST_F(AControllerAction, DoesNotAskTheDeviceWhenItCannotEvenMakeTheReplyOfFailure) {
  struct Observer final : devhost::XmlObserver {
    void OnXmlCall(const char*, const char* name) override { throw std::runtime_error(name); }
  } observer;
  for (const Action& action : kActions) {
    devhost::SetXmlObserver(&observer);
    EXPECT_THROW(host.Command(action.name, {{"deviceId", "7"}}), std::runtime_error);
    devhost::SetXmlObserver(nullptr);
  }
  EXPECT_THAT(journal.Calls(), IsEmpty());
}

TEST_F(AControllerAction, HoldsTheRecordWhileTheDeviceWithdrawsItself) {
  journal.SetHook([this](const std::string& call) {
    if (call == "7.RebootController") {
      const boost::weak_ptr<SNMPDevice> record(State().devices.at(7));
      agent->DeleteSNMPDevice(7);
      EXPECT_FALSE(record.expired());
    }
  });
  EXPECT_EQ(host.CommandText("RebootController", {{"deviceId", "7"}}), "<Success/>");
  EXPECT_EQ(State().devices.count(7), 0U);
}

}  // namespace
