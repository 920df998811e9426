#include <gmock/gmock.h>

#include <functional>

#include "tests/config/ManagedDevice.h"
#include "tests/support/AgentAccess.h"

namespace {

using testing::HasSubstr;
using testing::Not;

// A device that calls back from inside the calls that it gets. The record is the registered one.
class AReentrantDevice : public ManagedDeviceTest {
 protected:
  AReentrantDevice() {
    // This is the agent's own record, so that nested requests use the same one as the outer request.
    record = SNMPConfigurationAgentTestAccess(agent).devices.at(7);
    device.file = "# Halvoren Section Start\n" + std::string(4000, '#') +
                  "\nrocommunity  r\nrwcommunity  w\nagentXTimeout  9\nsysContact  c\nsysLocation  l\nsysName  n\n"
                  "trap2sink  10.0.0.5\ntrap2sink  10.0.0.6\n# Halvoren Section End\n\nbelow\n";
  }

  // Runs `act` once, from inside the first call that begins with `call`.
  void During(const std::string& call, std::function<void()> act) {
    journal.SetHook([this, call, act](const std::string& noted) {
      if (noted.compare(0, call.size(), call) == 0) {
        journal.SetHook(nullptr);
        act();
      }
    });
  }

  void Forget() {
    device.communityRead = device.communityWrite = device.sysContact = device.sysLocation = device.sysName = "";
    device.trapTargets.clear();
  }
};

const char* const kReaderCalls[] = {"7.CopyFrom",
                                    "7.GetWasCommunityReadSettingErased",
                                    "7.GetCommunityReadSetting",
                                    "7.SetCommunityReadSetting",
                                    "7.SetCommunityWriteSetting",
                                    "7.GetWasSysContactSettingErased",
                                    "7.GetSysContactSetting",
                                    "7.SetSysContactSetting",
                                    "7.SetSysLocationSetting",
                                    "7.SetSysNameSetting",
                                    "7.GetWasTrapTargetsSettingErased",
                                    "7.GetTrapTargetsSetting",
                                    "7.SetTrapTargetsSetting"};

TEST_F(AReentrantDevice, MayReplaceTheTextWhileItIsRead) {
  for (const char* call : kReaderCalls) {
    Forget();
    bool called = false;
    During(call, [&] {
      called = true;
      record->SetConfig("short");
    });
    EXPECT_EQ(agent.ReadConfig(record), 0);
    EXPECT_TRUE(called) << call;
    EXPECT_EQ(device.communityRead + device.communityWrite + device.sysContact + device.sysLocation + device.sysName,
              "rwcln")
        << call;
    EXPECT_EQ(device.trapTargets.size(), 2U) << call;
  }
}

TEST_F(AReentrantDevice, MayAskForItsStateToBeSetWhileItIsRead) {
  for (const char* call : kReaderCalls) {
    Forget();
    bool nested = false;
    During(call, [&] { nested = agent.SetDeviceState(7); });
    EXPECT_TRUE(agent.SetDeviceState(7)) << call;
    EXPECT_TRUE(nested) << call;
    EXPECT_EQ(device.sysName, "n") << call;
    EXPECT_EQ(device.trapTargets.size(), 2U) << call;
    EXPECT_THAT(device.file, testing::EndsWith("Quentara.\n\nbelow\n")) << call;
  }
}

TEST_F(AReentrantDevice, MayAskForItsStateToBeSetWhileItIsWritten) {
  for (const char* call : {"7.GetCommunityReadSetting", "7.GetCommunityWriteSetting", "7.GetSysContactSetting",
                           "7.GetSysLocationSetting", "7.GetSysNameSetting", "7.GetTrapTargetsSetting", "7.CopyTo"}) {
    device.sysName = "n";
    bool nested = false;
    During(call, [&] { nested = agent.SetDeviceState(7); });
    record->SetConfig(device.file);
    EXPECT_EQ(agent.WriteConfig(record), 0) << call;
    EXPECT_TRUE(nested) << call;
    EXPECT_THAT(device.file, testing::EndsWith("Quentara.\n\nbelow\n")) << call;
    // The file has only one section.
    EXPECT_EQ(device.file.find("Section Start"), device.file.rfind("Section Start")) << call;
  }
}

TEST_F(AReentrantDevice, MayReplaceTheTextWhileTheSectionIsMade) {
  record->SetConfig("former text\n");
  During("7.GetTrapTargetsSetting", [&] { record->SetConfig("text of the nested call\n"); });
  agent.MergeToConfig(record);
  EXPECT_THAT(record->GetConfig(), testing::EndsWith("\n\ntext of the nested call\n"));
  EXPECT_THAT(record->GetConfig(), Not(HasSubstr("former text")));
}

// A nested request reads another time-out from the file.
TEST_F(AReentrantDevice, ChangesTheAgentXTimeoutOfTheSectionUntilTheCommunitiesAreRead) {
  for (const char* call : {"7.GetCommunityReadSetting", "7.GetCommunityWriteSetting"}) {
    record->SetAgentXTimeout("6");
    During(call, [&] { record->SetAgentXTimeout("9"); });
    agent.MergeToConfig(record);
    EXPECT_THAT(record->GetConfig(), HasSubstr("\nagentXTimeout  9\n")) << call;
    record->SetConfig("");
  }
  for (const char* call :
       {"7.GetSysContactSetting", "7.GetSysLocationSetting", "7.GetSysNameSetting", "7.GetTrapTargetsSetting"}) {
    record->SetAgentXTimeout("6");
    During(call, [&] { record->SetAgentXTimeout("9"); });
    agent.MergeToConfig(record);
    EXPECT_THAT(record->GetConfig(), HasSubstr("\nagentXTimeout  6\n")) << call;
    EXPECT_EQ(record->GetAgentXTimeout(), "9") << call;
    record->SetConfig("");
  }
}

TEST_F(AReentrantDevice, MayWithdrawItselfFromAnyCallOfARequest) {
  for (const char* call : {"7.CopyFrom", "7.SetCommunityReadSetting", "7.SetTrapTargetsSetting", "7.CopyTo"}) {
    Forget();
    record.reset();
    During(call, [&] { agent.DeleteSNMPDevice(7); });
    EXPECT_TRUE(agent.SetDeviceState(7)) << call;
    EXPECT_FALSE(agent.SetDeviceState(7)) << call;
    agent.AddSNMPDevice(7, &device);
  }
}

}  // namespace
