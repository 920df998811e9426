#include "drivers/common/DeviceCommands.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/drivers/support/FakeHost.h"

namespace {

using drivers::DeviceOperation;

const char kNewSettings[] =
    "<settings><setting name=managed value=false><setting name=configDirty value=false><setting name=enabled value=false>"
    "<setting name=communityRead erased=false><setting name=communityWrite erased=false><setting name=sysContact "
    "erased=false>"
    "<setting name=usePrimaryContact value=false><setting name=sysLocation erased=false>"
    "<setting name=useProjectOwnerAddress value=false><setting name=sysName erased=false>"
    "<setting name=useRoomDevice value=false><setting name=trapTargets value=0 erased=false>";

class ADevice : public testing::Test {
 protected:
  ADevice() { m_commands.Register(m_host.Dispatcher()); }

  FakeHost m_host;
  drivers::SnmpSettings m_settings;
  drivers::DeviceOperations m_operations;
  std::string m_obstacle;
  std::vector<std::string> m_asked;
  int m_changes = 0;
  drivers::DeviceCommands m_commands{
      m_settings,
      m_operations,
      {[this] {
         m_asked.push_back("announce");
         return m_obstacle;
       },
       [this] { m_asked.push_back("withdraw"); }, [] { return std::string("/d/snmpd.conf"); }, [this] { ++m_changes; }}};
};

TEST_F(ADevice, RegistersEachOfItsCommandsOnce) {
  EXPECT_EQ((std::vector<std::string>{"Announce", "Withdraw", "SetSetting", "EraseSetting", "AddTrapTarget",
                                      "ClearTrapTargets", "FailOperation", "GetSettings", "GetFilePath", "GetCounts"}),
            m_host.CommandNames());
}

TEST_F(ADevice, AnnouncesAndWithdrawsOnDemand) {
  EXPECT_EQ("<Success>", m_host.Command("Announce"));
  EXPECT_EQ("<Success>", m_host.Command("Withdraw"));
  EXPECT_EQ((std::vector<std::string>{"announce", "withdraw"}), m_asked);
  m_obstacle = "no agent is present";
  EXPECT_EQ("<Fail>no agent is present", m_host.Command("Announce"));
}

TEST_F(ADevice, SetsAndErasesSettings) {
  EXPECT_EQ("<Success>", m_host.Command("SetSetting", {{"name", "sysName"}, {"value", "my box"}}));
  EXPECT_EQ("my box", m_settings.sysName.Get());
  EXPECT_EQ("<Success>", m_host.Command("EraseSetting", {{"name", "sysName"}}));
  EXPECT_EQ("", m_settings.sysName.Get());
  EXPECT_TRUE(m_settings.sysName.WasErased());
  EXPECT_EQ("<Success>", m_host.Command("EraseSetting", {{"name", "trapTargets"}}));
  EXPECT_TRUE(m_settings.trapTargets.WasErased());
  EXPECT_EQ("<Success>", m_host.Command("SetSetting", {{"name", "managed"}, {"value", "true"}}));
  EXPECT_TRUE(m_settings.managed);
  EXPECT_FALSE(m_settings.configDirty);
}

TEST_F(ADevice, AddsAndClearsTrapTargets) {
  EXPECT_EQ("<Success>",
            m_host.Command("AddTrapTarget", {{"target", "10.0.0.5"}, {"community", "pub lic"}, {"port", "162"}}));
  EXPECT_EQ("<Success>", m_host.Command("AddTrapTarget", {{"target", "10.0.0.6"}, {"community", ""}, {"port", ""}}));
  EXPECT_EQ(2U, m_settings.trapTargets.Get().size());
  EXPECT_EQ("<Success>", m_host.Command("ClearTrapTargets"));
  EXPECT_TRUE(m_settings.trapTargets.Get().empty());
  EXPECT_TRUE(m_settings.trapTargets.WasErased());
}

TEST_F(ADevice, ReportsEachChangeAndNothingElse) {
  m_host.Command("GetSettings");
  m_host.Command("FailOperation", {{"operation", "CopyTo"}, {"status", "1"}});
  m_host.Command("SetSetting", {{"name", "enabled"}, {"value", "on"}});
  m_host.Command("EraseSetting", {{"name", "enabled"}});
  m_host.Command("AddTrapTarget", {{"target", ""}, {"community", ""}, {"port", ""}});
  EXPECT_EQ(0, m_changes);
  m_host.Command("SetSetting", {{"name", "enabled"}, {"value", "true"}});
  m_host.Command("EraseSetting", {{"name", "sysName"}});
  EXPECT_EQ(2, m_changes);
  m_host.Command("AddTrapTarget", {{"target", "10.0.0.5"}, {"community", ""}, {"port", ""}});
  m_host.Command("ClearTrapTargets");
  EXPECT_EQ(4, m_changes);
}

TEST_F(ADevice, ShowsItsSettings) {
  EXPECT_EQ(kNewSettings, m_host.Command("GetSettings"));
  m_host.Command("SetSetting", {{"name", "enabled"}, {"value", "true"}});
  m_host.Command("SetSetting", {{"name", "communityRead"}, {"value", "public"}});
  m_host.Command("EraseSetting", {{"name", "sysContact"}});
  m_host.Command("AddTrapTarget", {{"target", "10.0.0.5"}, {"community", "pub lic"}, {"port", "162"}});
  EXPECT_EQ(
      "<settings><setting name=managed value=false><setting name=configDirty value=false><setting name=enabled value=true>"
      "<setting name=communityRead value=public erased=false><setting name=communityWrite erased=false>"
      "<setting name=sysContact erased=true><setting name=usePrimaryContact value=false><setting name=sysLocation "
      "erased=false>"
      "<setting name=useProjectOwnerAddress value=false><setting name=sysName erased=false>"
      "<setting name=useRoomDevice value=false><setting name=trapTargets value=1 erased=false>"
      "<trapTarget target=10.0.0.5 community=pub lic port=162>",
      m_host.Command("GetSettings"));
}

TEST_F(ADevice, NamesItsFile) {
  EXPECT_EQ("<filePath>/d/snmpd.conf", m_host.Command("GetFilePath"));
}

TEST_F(ADevice, ShowsItsCounts) {
  m_operations.Begin(DeviceOperation::CopyTo);
  m_operations.Begin(DeviceOperation::CopyTo);
  m_operations.Begin(DeviceOperation::StartMasterAgent);
  EXPECT_EQ(
      "<counts><count operation=CopyFrom value=0><count operation=CopyTo value=2><count operation=RebootController value=0>"
      "<count operation=StopMasterAgent value=0><count operation=StartMasterAgent value=1>",
      m_host.Command("GetCounts"));
}

TEST_F(ADevice, FailsAnOperationOnDemand) {
  EXPECT_EQ("<Success>", m_host.Command("FailOperation", {{"operation", "CopyTo"}, {"status", "-9"}, {"times", "1"}}));
  EXPECT_EQ(-9, m_operations.Begin(DeviceOperation::CopyTo));
  EXPECT_EQ(0, m_operations.Begin(DeviceOperation::CopyTo));
  EXPECT_EQ("<Success>", m_host.Command("FailOperation", {{"operation", "CopyFrom"}, {"status", "5"}}));
  EXPECT_EQ(5, m_operations.Begin(DeviceOperation::CopyFrom));
  EXPECT_EQ(5, m_operations.Begin(DeviceOperation::CopyFrom));
  EXPECT_EQ("<Success>", m_host.Command("FailOperation", {{"operation", "CopyFrom"}, {"status", "0"}}));
  EXPECT_EQ(0, m_operations.Begin(DeviceOperation::CopyFrom));
}

TEST_F(ADevice, SaysWhatIsWrongWithACommandAndChangesNothing) {
  EXPECT_EQ("<Fail>the parameter name is missing; needed: name, value", m_host.Command("SetSetting", {{"value", "x"}}));
  EXPECT_EQ("<Fail>the parameter value is missing; needed: name, value",
            m_host.Command("SetSetting", {{"name", "sysName"}}));
  EXPECT_EQ("<Fail>\"on\" is not a value of the switch enabled; allowed are true and false",
            m_host.Command("SetSetting", {{"name", "enabled"}, {"value", "on"}}));
  EXPECT_EQ("<Fail>the parameter name is missing; needed: name", m_host.Command("EraseSetting"));
  EXPECT_EQ(
      0U,
      m_host.Command("EraseSetting", {{"name", "enabled"}}).find("<Fail>\"enabled\" is not a setting that can be erased"));
  EXPECT_EQ("<Fail>the parameter port is missing; needed: target, community, port",
            m_host.Command("AddTrapTarget", {{"target", "10.0.0.5"}, {"community", ""}}));
  EXPECT_EQ("<Fail>the target is empty; give a target, and community and port where they are known",
            m_host.Command("AddTrapTarget", {{"target", ""}, {"community", ""}, {"port", ""}}));
  EXPECT_EQ(kNewSettings, m_host.Command("GetSettings"));
}

TEST_F(ADevice, SaysWhatIsWrongWithAnOrderToFail) {
  using Parameters = std::map<std::string, std::string>;
  EXPECT_EQ("<Fail>the parameter status is missing; needed: operation, status",
            m_host.Command("FailOperation", {{"operation", "CopyTo"}}));
  EXPECT_EQ(
      "<Fail>\"Copy\" is not an operation; allowed are CopyFrom, CopyTo, RebootController, StopMasterAgent, "
      "StartMasterAgent",
      m_host.Command("FailOperation", {{"operation", "Copy"}, {"status", "1"}}));
  for (const char* const status : {"", "x", "1.5", "1 ", " 1", "99999999999", "-"}) {
    EXPECT_EQ("<Fail>the status \"" + std::string(status) +
                  "\" is not a whole number from -2147483648 to 2147483647; 0 ends the failing",
              m_host.Command("FailOperation", Parameters{{"operation", "CopyTo"}, {"status", status}}));
  }
  for (const char* const times : {"", "0", "-1", "many", "1x", "2147483648"}) {
    EXPECT_EQ("<Fail>times is \"" + std::string(times) +
                  "\"; give a whole number from 1 to 2147483647, or leave it out for every time",
              m_host.Command("FailOperation", Parameters{{"operation", "CopyTo"}, {"status", "1"}, {"times", times}}));
  }
  EXPECT_EQ(0, m_operations.Begin(DeviceOperation::CopyTo));
}

}  // namespace
