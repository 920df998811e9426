#include "tests/support/RecordingDevice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using testing::ElementsAre;
using testsupport::RecordingDevice;

TEST(ARecordingDevice, NotesEveryOperationWithItsArguments) {
  Journal journal;
  RecordingDevice device(7, journal);
  ISupportSNMP& snmp = device;
  std::string text;
  snmp.GetIsManagedDevice(), snmp.SetIsManagedDevice(true), snmp.GetIsConfigDirty(), snmp.SetIsConfigDirty(true);
  snmp.GetEnabledSetting(), snmp.SetEnabledSetting(false);
  snmp.GetCommunityReadSetting(), snmp.SetCommunityReadSetting("r"), snmp.GetWasCommunityReadSettingErased();
  snmp.GetCommunityWriteSetting(), snmp.SetCommunityWriteSetting("w"), snmp.GetWasCommunityWriteSettingErased();
  EXPECT_THAT(journal.Take(), ElementsAre("7.GetIsManagedDevice", "7.SetIsManagedDevice true", "7.GetIsConfigDirty",
                                          "7.SetIsConfigDirty true", "7.GetEnabledSetting", "7.SetEnabledSetting false",
                                          "7.GetCommunityReadSetting", "7.SetCommunityReadSetting r",
                                          "7.GetWasCommunityReadSettingErased", "7.GetCommunityWriteSetting",
                                          "7.SetCommunityWriteSetting w", "7.GetWasCommunityWriteSettingErased"));
  snmp.GetSysContactSetting(), snmp.SetSysContactSetting("c"), snmp.GetWasSysContactSettingErased();
  snmp.GetUsePrimaryContactSetting(), snmp.SetUsePrimaryContactSetting(true);
  snmp.GetSysLocationSetting(), snmp.SetSysLocationSetting("l"), snmp.GetWasSysLocationSettingErased();
  snmp.GetUseProjectOwnerAddressSetting(), snmp.SetUseProjectOwnerAddressSetting(true);
  snmp.GetSysNameSetting(), snmp.SetSysNameSetting(""), snmp.GetWasSysNameSettingErased();
  snmp.GetUseRoomDeviceSetting(), snmp.SetUseRoomDeviceSetting(true);
  EXPECT_THAT(
      journal.Take(),
      ElementsAre("7.GetSysContactSetting", "7.SetSysContactSetting c", "7.GetWasSysContactSettingErased",
                  "7.GetUsePrimaryContactSetting", "7.SetUsePrimaryContactSetting true", "7.GetSysLocationSetting",
                  "7.SetSysLocationSetting l", "7.GetWasSysLocationSettingErased", "7.GetUseProjectOwnerAddressSetting",
                  "7.SetUseProjectOwnerAddressSetting true", "7.GetSysNameSetting", "7.SetSysNameSetting ",
                  "7.GetWasSysNameSettingErased", "7.GetUseRoomDeviceSetting", "7.SetUseRoomDeviceSetting true"));
  snmp.GetTrapTargetsSetting(), snmp.SetTrapTargetsSetting({TrapTarget("a", "b", "c"), TrapTarget("d", "", "")});
  snmp.ClearTrapTargetSetting(), snmp.AddTrapTargetSetting("10.0.0.5", "public", "162");
  snmp.GetWasTrapTargetsSettingErased(), snmp.AgentAvailable();
  snmp.CopyFrom("/path", text), snmp.CopyTo("/path", text);
  snmp.RebootController(), snmp.StopMasterAgent(), snmp.StartMasterAgent();
  snmp.IsSNMPVersionValid(snmp.GetSNMPVersion());
  EXPECT_THAT(journal.Take(),
              ElementsAre("7.GetTrapTargetsSetting", "7.SetTrapTargetsSetting a|b|c d||", "7.ClearTrapTargetSetting",
                          "7.AddTrapTargetSetting 10.0.0.5|public|162", "7.GetWasTrapTargetsSettingErased",
                          "7.AgentAvailable", "7.CopyFrom /path", "7.CopyTo /path", "7.RebootController",
                          "7.StopMasterAgent", "7.StartMasterAgent", "7.GetSNMPVersion", "7.IsSNMPVersionValid 1.0"));
}

TEST(ARecordingDevice, HoldsWhatItWasGiven) {
  Journal journal;
  RecordingDevice device(7, journal);
  device.SetSysNameSetting("box");
  device.SetTrapTargetsSetting({TrapTarget("a", "b", "c")});
  device.AddTrapTargetSetting("d", "e", "f");
  device.SetEnabledSetting(true);
  EXPECT_EQ(device.GetSysNameSetting(), "box");
  EXPECT_EQ(testsupport::TrapText(device.GetTrapTargetsSetting()), "a|b|c d|e|f");
  EXPECT_TRUE(device.GetEnabledSetting());
  device.ClearTrapTargetSetting();
  EXPECT_TRUE(device.GetTrapTargetsSetting().empty());
  EXPECT_FALSE(device.sysNameErased);
}

TEST(ARecordingDevice, CopiesItsFileUnlessAStatusIsScripted) {
  Journal journal;
  RecordingDevice device(7, journal);
  device.file = "old";
  device.copyTo.Script({5, -9});
  std::string text = "kept";
  EXPECT_EQ(device.CopyTo("p", "new"), 5);
  EXPECT_EQ(device.offered, "new");
  EXPECT_EQ(device.CopyTo("p", "new"), -9);
  EXPECT_EQ(device.file, "old");
  device.copyFrom.always = 3;
  EXPECT_EQ(device.CopyFrom("p", text), 3);
  EXPECT_EQ(text, "kept");
  device.copyFrom.always = 0;
  EXPECT_EQ(device.CopyTo("p", "new"), 0);
  EXPECT_EQ(device.CopyFrom("p", text), 0);
  EXPECT_EQ(text, "new");
  device.reboot.always = 1;
  EXPECT_EQ(device.RebootController(), 1);
  EXPECT_EQ(device.StopMasterAgent(), 0);
}

TEST(ARecordingDevice, IsLeftAloneByACallWhoseHookThrows) {
  Journal journal;
  RecordingDevice device(7, journal);
  journal.SetHook([](const std::string&) { throw std::runtime_error("told to"); });
  EXPECT_THROW(device.SetSysNameSetting("box"), std::runtime_error);
  EXPECT_EQ(device.sysName, "");
  EXPECT_THAT(journal.Calls(), ElementsAre("7.SetSysNameSetting box"));
}

TEST(ARecordingDevice, MayBeCalledAgainFromTheHook) {
  Journal journal;
  RecordingDevice device(7, journal);
  journal.SetHook([&device](const std::string& call) {
    if (call == "7.SetSysNameSetting outer") {
      device.SetSysContactSetting("inner");
    }
  });
  device.SetSysNameSetting("outer");
  EXPECT_THAT(journal.Calls(), ElementsAre("7.SetSysNameSetting outer", "7.SetSysContactSetting inner"));
  EXPECT_EQ(device.sysContact, "inner");
  EXPECT_EQ(device.sysName, "outer");
}

}  // namespace
