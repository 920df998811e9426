#include "device/SNMPDevice.h"

#include <gmock/gmock.h>

#include <functional>

#include "tests/support/RecordingDevice.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testsupport::RecordingDevice;
using testsupport::TrapText;

class ADeviceRecord : public testing::Test {
 protected:
  // Returns the calls that reach the device during `use`.
  std::vector<std::string> CallsOf(const std::function<void()>& use) {
    journal.Take();
    use();
    return journal.Take();
  }

  Journal journal;
  RecordingDevice device{7, journal};
  SNMPDevice record{7, &device};
};

TEST_F(ADeviceRecord, StartsWithDefaultsAndAsksNothing) {
  EXPECT_EQ(record.GetDeviceId(), 7U);
  EXPECT_EQ(record.GetAgentXTimeout(), "6");
  EXPECT_EQ(record.GetAgentXRetries(), "2");
  EXPECT_EQ(record.GetConfig(), "");
  EXPECT_THAT(journal.Calls(), IsEmpty());
}

TEST_F(ADeviceRecord, DoesNotTouchTheDeviceWhenItIsMadeOrDestroyed) {
  { const SNMPDevice another(4294967295UL, &device); }
  EXPECT_THAT(journal.Calls(), IsEmpty());
}

TEST_F(ADeviceRecord, KeepsTheWholeRangeOfIds) {
  EXPECT_EQ(SNMPDevice(4294967295UL, &device).GetDeviceId(), 4294967295UL);
  EXPECT_EQ(SNMPDevice(0, &device).GetDeviceId(), 0U);
}

TEST_F(ADeviceRecord, KeepsAgentXTimeoutAndConfigForItself) {
  record.SetAgentXTimeout("10");
  EXPECT_EQ(record.GetAgentXTimeout(), "10");
  record.SetAgentXTimeout("");
  EXPECT_EQ(record.GetAgentXTimeout(), "");
  record.SetConfig("text\n");
  EXPECT_EQ(record.GetConfig(), "text\n");
  EXPECT_THAT(journal.Calls(), IsEmpty());
}

TEST_F(ADeviceRecord, KeepsItsAgentXRetriesWhateverIsSet) {
  record.SetAgentXRetries("5");
  EXPECT_EQ(record.GetAgentXRetries(), "2");
  record.SetAgentXRetries("");
  EXPECT_EQ(record.GetAgentXRetries(), "2");
  EXPECT_EQ(record.GetAgentXTimeout(), "6");
}

TEST_F(ADeviceRecord, PassesEverySwitchOnAsOneCall) {
  for (const bool on : {true, false}) {
    const std::string word = on ? " true" : " false";
    EXPECT_THAT(CallsOf([&] { record.SetIsManagedDevice(on); }), ElementsAre("7.SetIsManagedDevice" + word));
    EXPECT_THAT(CallsOf([&] { record.SetIsConfigDirty(on); }), ElementsAre("7.SetIsConfigDirty" + word));
    EXPECT_THAT(CallsOf([&] { record.SetEnabledSetting(on); }), ElementsAre("7.SetEnabledSetting" + word));
    EXPECT_THAT(CallsOf([&] { record.SetUsePrimaryContactSetting(on); }),
                ElementsAre("7.SetUsePrimaryContactSetting" + word));
    EXPECT_THAT(CallsOf([&] { record.SetUseProjectOwnerAddressSetting(on); }),
                ElementsAre("7.SetUseProjectOwnerAddressSetting" + word));
    EXPECT_THAT(CallsOf([&] { record.SetUseRoomDeviceSetting(on); }), ElementsAre("7.SetUseRoomDeviceSetting" + word));
  }
}

struct Flag {
  const char* name;
  bool (SNMPDevice::*get)();
  bool RecordingDevice::*value;
};

TEST_F(ADeviceRecord, ReadsEveryFlagWithOneCall) {
  const Flag flags[] = {
      {"GetIsManagedDevice", &SNMPDevice::GetIsManagedDevice, &RecordingDevice::managed},
      {"GetIsConfigDirty", &SNMPDevice::GetIsConfigDirty, &RecordingDevice::dirty},
      {"GetWasCommunityReadSettingErased", &SNMPDevice::GetWasCommunityReadSettingErased,
       &RecordingDevice::communityReadErased},
      {"GetWasCommunityWriteSettingErased", &SNMPDevice::GetWasCommunityWriteSettingErased,
       &RecordingDevice::communityWriteErased},
      {"GetWasSysContactSettingErased", &SNMPDevice::GetWasSysContactSettingErased, &RecordingDevice::sysContactErased},
      {"GetWasSysLocationSettingErased", &SNMPDevice::GetWasSysLocationSettingErased, &RecordingDevice::sysLocationErased},
      {"GetWasSysNameSettingErased", &SNMPDevice::GetWasSysNameSettingErased, &RecordingDevice::sysNameErased},
      {"GetWasTrapTargetsSettingErased", &SNMPDevice::GetWasTrapTargetsSettingErased, &RecordingDevice::trapTargetsErased},
  };
  for (const Flag& flag : flags) {
    for (const bool on : {true, false}) {
      device.*flag.value = on;
      EXPECT_THAT(CallsOf([&] { EXPECT_EQ((record.*flag.get)(), on) << flag.name; }),
                  ElementsAre(std::string("7.") + flag.name));
    }
  }
}

struct Word {
  const char* name;  // what follows "Get" and "Set"
  std::string (SNMPDevice::*get)();
  void (SNMPDevice::*set)(std::string);
  std::string RecordingDevice::*value;
  bool RecordingDevice::*erased;
};

const Word kWords[] = {
    {"CommunityReadSetting", &SNMPDevice::GetCommunityReadSetting, &SNMPDevice::SetCommunityReadSetting,
     &RecordingDevice::communityRead, &RecordingDevice::communityReadErased},
    {"CommunityWriteSetting", &SNMPDevice::GetCommunityWriteSetting, &SNMPDevice::SetCommunityWriteSetting,
     &RecordingDevice::communityWrite, &RecordingDevice::communityWriteErased},
    {"SysContactSetting", &SNMPDevice::GetSysContactSetting, &SNMPDevice::SetSysContactSetting, &RecordingDevice::sysContact,
     &RecordingDevice::sysContactErased},
    {"SysLocationSetting", &SNMPDevice::GetSysLocationSetting, &SNMPDevice::SetSysLocationSetting,
     &RecordingDevice::sysLocation, &RecordingDevice::sysLocationErased},
    {"SysNameSetting", &SNMPDevice::GetSysNameSetting, &SNMPDevice::SetSysNameSetting, &RecordingDevice::sysName,
     &RecordingDevice::sysNameErased},
};

TEST_F(ADeviceRecord, PassesEveryTextOnUnchangedAsOneCall) {
  for (const Word& word : kWords) {
    for (const std::string& text : {std::string("  \"a\tb\"\n "), std::string("\0x", 2), std::string()}) {
      device.*word.value = "before";
      device.*word.erased = true;
      EXPECT_THAT(CallsOf([&] { (record.*word.set)(text); }), ElementsAre("7.Set" + std::string(word.name) + ' ' + text));
      EXPECT_EQ(device.*word.value, text) << word.name;
      EXPECT_TRUE(device.*word.erased) << word.name;
      EXPECT_FALSE(device.dirty);
    }
  }
}

TEST_F(ADeviceRecord, ReadsEveryTextAnewWithOneCall) {
  for (const Word& word : kWords) {
    for (const char* text : {"first", "", " second "}) {
      device.*word.value = text;
      EXPECT_THAT(CallsOf([&] { EXPECT_EQ((record.*word.get)(), text) << word.name; }),
                  ElementsAre("7.Get" + std::string(word.name)));
    }
  }
}

TEST_F(ADeviceRecord, PassesTrapTargetsOnInOrder) {
  EXPECT_THAT(CallsOf([&] { record.AddTrapTargetSetting("10.0.0.5", "public", "162"); }),
              ElementsAre("7.AddTrapTargetSetting 10.0.0.5|public|162"));
  EXPECT_THAT(CallsOf([&] { record.AddTrapTargetSetting("", "", ""); }), ElementsAre("7.AddTrapTargetSetting ||"));
  EXPECT_THAT(CallsOf([&] { EXPECT_EQ(TrapText(record.GetTrapTargetsSetting()), "10.0.0.5|public|162 ||"); }),
              ElementsAre("7.GetTrapTargetsSetting"));
  EXPECT_THAT(CallsOf([&] { record.ClearTrapTargetSetting(); }), ElementsAre("7.ClearTrapTargetSetting"));
  EXPECT_TRUE(device.trapTargets.empty());
  EXPECT_THAT(CallsOf([&] {
                record.SetTrapTargetsSetting({{"b", "c", "1"}, {"a", "", ""}});
              }),
              ElementsAre("7.SetTrapTargetsSetting b|c|1 a||"));
  EXPECT_THAT(CallsOf([&] { record.SetTrapTargetsSetting({}); }), ElementsAre("7.SetTrapTargetsSetting "));
}

TEST_F(ADeviceRecord, ReturnsTheDevicesResultOfEveryAction) {
  for (const int status : {0, -9, 17}) {
    device.reboot.always = status;
    device.stop.always = status + 1;
    device.start.always = status + 2;
    EXPECT_THAT(CallsOf([&] { EXPECT_EQ(record.RebootController(), status); }), ElementsAre("7.RebootController"));
    EXPECT_THAT(CallsOf([&] { EXPECT_EQ(record.StopMasterAgent(), status + 1); }), ElementsAre("7.StopMasterAgent"));
    EXPECT_THAT(CallsOf([&] { EXPECT_EQ(record.StartMasterAgent(), status + 2); }), ElementsAre("7.StartMasterAgent"));
  }
}

TEST_F(ADeviceRecord, LetsTheDeviceFillItsConfig) {
  record.SetConfig("old");
  device.file = "new";
  EXPECT_THAT(CallsOf([&] { EXPECT_EQ(record.CopyFrom("/a/path"), 0); }), ElementsAre("7.CopyFrom /a/path"));
  EXPECT_EQ(record.GetConfig(), "new");
}

TEST_F(ADeviceRecord, ReturnsTheStatusOfAFailedCopy) {
  record.SetConfig("old");
  device.copyFrom.always = -9;
  device.copyTo.always = 4;
  EXPECT_EQ(record.CopyFrom("p"), -9);
  EXPECT_EQ(record.GetConfig(), "old");
  EXPECT_EQ(record.CopyTo("p"), 4);
  EXPECT_EQ(device.offered, "old");
}

TEST_F(ADeviceRecord, KeepsWhatAFailedCopyLeftInItsConfig) {
  struct Device final : RecordingDevice {
    using RecordingDevice::RecordingDevice;
    int CopyFrom(const std::string&, std::string& config) override {
      found = config;
      config = "half";
      return 4;
    }
    std::string found;
  } failing(7, journal);
  SNMPDevice other(7, &failing);
  other.SetConfig("old");
  EXPECT_EQ(other.CopyFrom("p"), 4);
  EXPECT_EQ(failing.found, "old") << "the text is the record's own";
  EXPECT_EQ(other.GetConfig(), "half");
}

TEST_F(ADeviceRecord, HandsItsConfigToTheDevice) {
  record.SetConfig("text");
  EXPECT_THAT(CallsOf([&] { EXPECT_EQ(record.CopyTo("/a/path"), 0); }), ElementsAre("7.CopyTo /a/path"));
  EXPECT_EQ(device.file, "text");
  EXPECT_EQ(record.GetConfig(), "text");
}

TEST_F(ADeviceRecord, LeavesTheVerdictOnTheVersionToTheDevice) {
  for (const char* version : {"any wording", ""}) {
    for (const bool valid : {true, false}) {
      device.version = version;
      device.versionValid = valid;
      EXPECT_THAT(CallsOf([&] { EXPECT_EQ(record.GetIsValidVersion(), valid); }),
                  ElementsAre("7.GetSNMPVersion", std::string("7.IsSNMPVersionValid ") + version));
    }
  }
}

TEST_F(ADeviceRecord, LetsExceptionsOfTheDeviceThrough) {
  journal.SetHook([](const std::string&) { throw std::runtime_error("device"); });
  EXPECT_THROW(record.GetSysNameSetting(), std::runtime_error);
  EXPECT_THROW(record.SetSysNameSetting("x"), std::runtime_error);
  EXPECT_THROW(record.CopyFrom("p"), std::runtime_error);
  EXPECT_THROW(record.GetIsValidVersion(), std::runtime_error);
  EXPECT_THROW(record.StartMasterAgent(), std::runtime_error);
}

}  // namespace
