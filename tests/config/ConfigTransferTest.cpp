#include <gmock/gmock.h>

#include <ctime>
#include <stdexcept>

#include "tests/config/ManagedDevice.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

const char kCopyFrom[] = "7.CopyFrom /etc/snmp/snmpd.conf.local";
const char kCopyTo[] = "7.CopyTo /etc/snmp/snmpd.conf.local";

using MergingToTheRecord = ManagedDeviceTest;
using WritingAFile = ManagedDeviceTest;
using ReadingAFile = ManagedDeviceTest;

TEST_F(MergingToTheRecord, ReadsEachSettingOnceInTheOrderOfTheFileAndNothingElse) {
  agent.MergeToConfig(record);
  EXPECT_THAT(journal.Take(),
              ElementsAre("7.GetCommunityReadSetting", "7.GetCommunityWriteSetting", "7.GetSysContactSetting",
                          "7.GetSysLocationSetting", "7.GetSysNameSetting", "7.GetTrapTargetsSetting"));
}

TEST_F(MergingToTheRecord, StoresTheSectionAboveTheFormerText) {
  device.communityRead = "public";
  device.dirty = true;
  record->SetAgentXTimeout("10");
  record->SetConfig("former text\n");
  agent.MergeToConfig(record);
  const std::string text = record->GetConfig();
  EXPECT_EQ(text.substr(0, 76), std::string(75, '#') + "\n");
  EXPECT_THAT(text, HasSubstr("\nrocommunity  public\n\n"));
  EXPECT_THAT(text, HasSubstr("\nagentXTimeout  10\nagentXRetries  2\n"));
  EXPECT_THAT(text, testing::EndsWith("Agent of Quentara.\n\nformer text\n"));
  EXPECT_TRUE(device.dirty);
  EXPECT_EQ(device.file, "");
}

TEST_F(MergingToTheRecord, StampsTheLocalTimeOfNow) {
  const std::time_t before = std::time(nullptr);
  agent.MergeToConfig(record);
  const std::time_t after = std::time(nullptr);
  const std::string text = record->GetConfig();
  const std::string stamp = text.substr(268, text.find('\n', 268) - 268);
  bool found = false;
  for (std::time_t now = before; now <= after; ++now) {
    char buffer[256];
    const std::size_t size = std::strftime(buffer, sizeof buffer, "%A, %B, %d %Y at %H:%M:%S", std::localtime(&now));
    found = found || stamp == std::string(buffer, size);
  }
  EXPECT_TRUE(found) << stamp;
  EXPECT_EQ(text.substr(268 + stamp.size(), 6), "\n\n####");
}

TEST_F(MergingToTheRecord, LeavesTheTextAloneWhenTheDeviceThrows) {
  record->SetConfig("former text\n");
  journal.SetHook([](const std::string& call) {
    if (call == "7.GetTrapTargetsSetting") {
      throw std::runtime_error("told to");
    }
  });
  EXPECT_THROW(agent.MergeToConfig(record), std::runtime_error);
  EXPECT_EQ(record->GetConfig(), "former text\n");
}

TEST_F(WritingAFile, MergesThenCopiesToTheWorkingPath) {
  device.sysName = "box";
  EXPECT_EQ(agent.WriteConfig(record), 0);
  EXPECT_THAT(journal.Take(),
              ElementsAre("7.GetCommunityReadSetting", "7.GetCommunityWriteSetting", "7.GetSysContactSetting",
                          "7.GetSysLocationSetting", "7.GetSysNameSetting", "7.GetTrapTargetsSetting", kCopyTo));
  EXPECT_EQ(device.file, record->GetConfig());
  EXPECT_THAT(device.file, HasSubstr("\nsysName  box\n"));
}

TEST_F(WritingAFile, ReturnsTheDevicesStatusAndKeepsTheTextInTheRecord) {
  record->SetConfig("former text\n");
  for (const int status : {-9, -1, 1, 77}) {
    device.copyTo.always = status;
    EXPECT_EQ(agent.WriteConfig(record), status);
  }
  EXPECT_EQ(device.file, "");
  EXPECT_EQ(device.offered, record->GetConfig());
  EXPECT_THAT(record->GetConfig(), HasSubstr("# Halvoren Section Start\n"));
}

TEST_F(WritingAFile, KeepsTheTextInTheRecordWhenTheDeviceThrows) {
  record->SetConfig("former text\n");
  journal.SetHook([](const std::string& call) {
    if (call == kCopyTo) {
      throw std::runtime_error("told to");
    }
  });
  EXPECT_THROW(agent.WriteConfig(record), std::runtime_error);
  EXPECT_THAT(record->GetConfig(), HasSubstr("# Halvoren Section Start\n"));
  EXPECT_THAT(record->GetConfig(), testing::EndsWith("\n\nformer text\n"));
}

TEST_F(ReadingAFile, CopiesFromTheWorkingPathThenFillsSettings) {
  device.file = "# Halvoren Section Start\nsysName  box\n";
  EXPECT_EQ(agent.ReadConfig(record), 0);
  EXPECT_THAT(journal.Take(),
              ElementsAre(kCopyFrom, "7.GetWasSysNameSettingErased", "7.GetSysNameSetting", "7.SetSysNameSetting box"));
  EXPECT_EQ(record->GetConfig(), device.file);
}

TEST_F(ReadingAFile, ReturnsAFailureAndCallsNoSetter) {
  record->SetConfig("# Halvoren Section Start\nsysName  box\nagentXTimeout  9\n");
  for (const int status : {-9, -1, 1, 77}) {
    device.copyFrom.always = status;
    EXPECT_EQ(agent.ReadConfig(record), status);
    EXPECT_THAT(journal.Take(), ElementsAre(kCopyFrom));
  }
  EXPECT_EQ(record->GetAgentXTimeout(), "6");
  EXPECT_EQ(device.sysName, "");
}

TEST_F(ReadingAFile, StopsWhereASetterThrowsAndSetsNoTraps) {
  device.file = "# Halvoren Section Start\ntrap2sink  10.0.0.5\nsysContact  Ada\nsysName  box\n";
  journal.SetHook([](const std::string& call) {
    if (call == "7.SetSysContactSetting Ada") {
      throw std::runtime_error("told to");
    }
  });
  EXPECT_THROW(agent.ReadConfig(record), std::runtime_error);
  EXPECT_THAT(Setters(), ElementsAre("7.SetSysContactSetting Ada"));
}

}  // namespace
