#include "drivers/common/SnmpDeviceDriver.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/H7XML.h"
#include "tests/drivers/support/FakeHost.h"

namespace {

using Lines = std::vector<std::string>;

const char kConfig[] = "<config folder='/d' version='2.0'><setting name='sysName' value='kitchen'/></config>";

// A driver that notes what its hooks are asked.
class NotingDevice final : public drivers::SnmpDeviceDriver {
 public:
  NotingDevice(IInstanceManager& instanceManager, Lines& asked) : SnmpDeviceDriver(instanceManager), m_asked(asked) {}

  std::string m_wrong;
  int m_status = 0;
  int m_changes = 0;

 private:
  std::string Prepare(const drivers::DeviceConfiguration& configuration, const H7XML::INode& config) override {
    m_asked.push_back("Prepare " + configuration.folder + " " + config.GetName() + " of " + GetSysNameSetting());
    return m_wrong;
  }
  std::string FilePath() const override { return "/d/file"; }
  int ReadFile(std::string& config) override {
    config = "content";
    return Note("ReadFile");
  }
  int WriteFile(const std::string& config) override { return Note("WriteFile " + config); }
  int Reboot() override { return Note("Reboot"); }
  int StopDaemon() override { return Note("StopDaemon"); }
  int StartDaemon() override { return Note("StartDaemon"); }

  void SettingsChanged() override { ++m_changes; }

  int Note(const std::string& line) {
    m_asked.push_back(line);
    return m_status;
  }

  Lines& m_asked;
};

class ADeviceDriver : public testing::Test {
 protected:
  ADeviceDriver() : m_driver(std::make_unique<NotingDevice>(m_host.Instances(), m_asked)) {}

  int Initialize(const std::string& config = kConfig) { return Factory().Initialize(12, *ToNode(config), nullptr); }
  IDriver& Factory() { return *m_driver; }
  // The device as the agent finds it; null when it cannot.
  ISupportSNMP* Published() { return static_cast<ISupportSNMP*>(m_host.Instances().Query(ISupportSNMP_IID)); }

  FakeHost m_host;
  FakeAgent m_agent;
  Lines m_asked;
  std::unique_ptr<NotingDevice> m_driver;
};

TEST_F(ADeviceDriver, IsOneOfManyAndInitialisesItsBase) {
  EXPECT_EQ(DriverMultiplicity_PerDevice, m_host.multiplicity);
  EXPECT_EQ(0, Initialize());
  EXPECT_EQ((std::vector<unsigned long>{12}), m_host.initialized);
  EXPECT_FALSE(Factory().GetPersistState(0));
}

TEST_F(ADeviceDriver, StandsBehindAnObjectWhoseFirstBaseIsTheHosts) {
  EXPECT_EQ(static_cast<void*>(static_cast<H7BaseDriver*>(m_driver.get())), static_cast<void*>(m_driver.get()));
  EXPECT_NE(static_cast<void*>(&Factory()), static_cast<void*>(m_driver.get()));
}

TEST_F(ADeviceDriver, IsPublishedFromInitializeOn) {
  EXPECT_EQ(nullptr, Published());
  EXPECT_EQ(0, Initialize());
  EXPECT_EQ(static_cast<ISupportSNMP*>(m_driver.get()), Published());
  EXPECT_EQ("kitchen", Published()->GetSysNameSetting());
  m_driver.reset();
  EXPECT_EQ(nullptr, Published());
}

TEST_F(ADeviceDriver, AnnouncesItselfToAnAgentThatIsThereAlready) {
  m_host.Instances().Publish(m_agent);
  EXPECT_EQ(0, Initialize());
  EXPECT_EQ((Lines{"Add 12"}), m_agent.calls);
  EXPECT_EQ(Published(), m_agent.devices[12]);
}

TEST_F(ADeviceDriver, WaitsForAnAgentThatComesLater) {
  EXPECT_EQ(0, Initialize());
  m_host.Instances().Publish(m_agent);
  EXPECT_TRUE(m_agent.calls.empty());
  Published()->AgentAvailable();
  EXPECT_EQ((Lines{"Add 12"}), m_agent.calls);
}

TEST_F(ADeviceDriver, AnswersEveryCallOfTheAgentWithAnAnnouncement) {
  m_host.Instances().Publish(m_agent);
  EXPECT_EQ(0, Initialize());
  Published()->AgentAvailable();
  EXPECT_EQ((Lines{"Add 12", "Add 12"}), m_agent.calls);
}

TEST_F(ADeviceDriver, IsPublishedBeforeItIsAnnounced) {
  m_host.Instances().Publish(m_agent);
  ISupportSNMP* seen = nullptr;
  m_agent.onCall = [&] { seen = Published(); };
  EXPECT_EQ(0, Initialize());
  EXPECT_NE(nullptr, seen);
  EXPECT_EQ(Published(), seen);
  m_agent.onCall = [] {};
}

TEST_F(ADeviceDriver, WithdrawsWhenItIsDestroyed) {
  m_host.Instances().Publish(m_agent);
  EXPECT_EQ(0, Initialize());
  bool publishedMeanwhile = true;
  m_agent.onCall = [&] { publishedMeanwhile = Published() != nullptr; };
  m_driver.reset();
  EXPECT_EQ((Lines{"Add 12", "Delete 12"}), m_agent.calls);
  EXPECT_FALSE(publishedMeanwhile);
}

TEST_F(ADeviceDriver, LeavesInSilenceWhenTheAgentIsGoneOrKnowsItNot) {
  m_host.Instances().Publish(m_agent);
  EXPECT_EQ(0, Initialize());
  m_host.Instances().WithdrawAgent();
  FakeAgent other;
  m_host.Instances().Publish(other);
  m_driver.reset();
  EXPECT_EQ((Lines{"Add 12"}), m_agent.calls);
  EXPECT_TRUE(other.calls.empty());
}

TEST_F(ADeviceDriver, LeavesInSilenceWhenItHasWithdrawnItself) {
  m_host.Instances().Publish(m_agent);
  EXPECT_EQ(0, Initialize());
  Factory().RegisterCommands();
  EXPECT_EQ("<Success>", m_host.Command("Withdraw"));
  m_driver.reset();
  EXPECT_EQ((Lines{"Add 12", "Delete 12"}), m_agent.calls);
}

TEST_F(ADeviceDriver, SurvivesAnAgentThatThrowsWhileItLeaves) {
  m_host.Instances().Publish(m_agent);
  EXPECT_EQ(0, Initialize());
  m_agent.onCall = [] { throw std::runtime_error("no tool"); };
  m_driver.reset();
  EXPECT_EQ(nullptr, Published());
  EXPECT_EQ((Lines{"3: SNMP device 12: the agent failed while it let the device go: no tool"}), m_host.log);
}

TEST_F(ADeviceDriver, SurvivesAnAgentThatThrowsAnythingWhileItLeaves) {
  m_host.Instances().Publish(m_agent);
  EXPECT_EQ(0, Initialize());
  m_agent.onCall = [] { throw 7; };
  m_driver.reset();
  EXPECT_EQ((Lines{"3: SNMP device 12: the agent failed while it let the device go"}), m_host.log);
}

TEST_F(ADeviceDriver, WithAWrongConfigurationSaysSoOnceAndStaysUnknown) {
  m_host.Instances().Publish(m_agent);
  EXPECT_NE(0, Initialize("<config folder='d'/>"));
  EXPECT_EQ(
      (Lines{"3: SNMP device 12: invalid configuration: folder is \"d\"; give the absolute path of the folder that holds "
             "the device's snmpd.conf"}),
      m_host.log);
  EXPECT_EQ(nullptr, Published());
  Factory().RegisterCommands();
  EXPECT_EQ("<Fail>the configuration of the device is invalid; see the log", m_host.Command("Announce"));
  m_driver.reset();
  EXPECT_TRUE(m_agent.calls.empty());
  EXPECT_TRUE(m_asked.empty());
}

TEST_F(ADeviceDriver, WithAttributesOfItsOwnThatAreWrongStaysUnknownToo) {
  m_host.Instances().Publish(m_agent);
  m_driver->m_wrong = "port is \"x\"; give a number";
  EXPECT_NE(0, Initialize());
  EXPECT_EQ((Lines{"3: SNMP device 12: invalid configuration: port is \"x\"; give a number"}), m_host.log);
  EXPECT_EQ(nullptr, Published());
  EXPECT_TRUE(m_agent.calls.empty());
}

TEST_F(ADeviceDriver, ThatTheHostDoesNotPublishSaysSo) {
  m_host.Instances().Publish(m_agent);
  m_host.Instances().refuses = true;
  EXPECT_NE(0, Initialize());
  EXPECT_EQ((Lines{"3: SNMP device 12: the host does not publish the device"}), m_host.log);
  EXPECT_TRUE(m_agent.calls.empty());
}

TEST_F(ADeviceDriver, MayBeInitialisedAgainAfterAWrongConfiguration) {
  EXPECT_NE(0, Initialize("<config/>"));
  EXPECT_EQ(0, Initialize());
  EXPECT_EQ("kitchen", Published()->GetSysNameSetting());
}

TEST_F(ADeviceDriver, KeepsItsSettingsWhenItIsInitialisedAgain) {
  EXPECT_EQ(0, Initialize());
  Published()->SetSysNameSetting("cellar");
  m_host.Instances().Publish(m_agent);
  EXPECT_EQ(0, Initialize());
  EXPECT_EQ("cellar", Published()->GetSysNameSetting());
  EXPECT_EQ((Lines{"Add 12"}), m_agent.calls);
  EXPECT_EQ(0, Initialize());
  EXPECT_EQ((Lines{"Add 12"}), m_agent.calls);
  EXPECT_EQ((Lines{"Prepare /d config of kitchen"}), m_asked);
}

TEST_F(ADeviceDriver, AnnouncesItselfOnCommandWhereAnAgentIs) {
  EXPECT_EQ(0, Initialize());
  Factory().RegisterCommands();
  EXPECT_EQ("<Fail>no agent is present", m_host.Command("Announce"));
  m_host.Instances().Publish(m_agent);
  EXPECT_EQ("<Success>", m_host.Command("Announce"));
  EXPECT_EQ((Lines{"Add 12"}), m_agent.calls);
  EXPECT_EQ("<filePath>/d/file", m_host.Command("GetFilePath"));
}

TEST_F(ADeviceDriver, HearsOfChangesFromTheAgentAndFromScriptsButNotOfItsConfiguration) {
  EXPECT_EQ(0, Initialize());
  Factory().RegisterCommands();
  EXPECT_EQ(0, m_driver->m_changes);
  Published()->SetIsConfigDirty(true);
  EXPECT_EQ(1, m_driver->m_changes);
  m_host.Command("SetSetting", {{"name", "sysName"}, {"value", "cellar"}});
  EXPECT_EQ(2, m_driver->m_changes);
}

TEST_F(ADeviceDriver, LeavesTheWorkToItsHooksAndPassesTheirStatusOn) {
  EXPECT_EQ(0, Initialize());
  m_asked.clear();
  m_driver->m_status = -42;
  std::string text;
  EXPECT_EQ(-42, Published()->CopyFrom("/etc/snmp/snmpd.conf.local", text));
  EXPECT_EQ("content", text);
  EXPECT_EQ(-42, Published()->CopyTo("/etc/snmp/snmpd.conf.local", "new"));
  EXPECT_EQ(-42, Published()->RebootController());
  EXPECT_EQ(-42, Published()->StopMasterAgent());
  EXPECT_EQ(-42, Published()->StartMasterAgent());
  EXPECT_EQ((Lines{"ReadFile", "WriteFile new", "Reboot", "StopDaemon", "StartDaemon"}), m_asked);
}

TEST_F(ADeviceDriver, DoesNothingWhereAnOperationIsToFail) {
  EXPECT_EQ(0, Initialize());
  Factory().RegisterCommands();
  m_asked.clear();
  for (const char* const name : {"CopyFrom", "CopyTo", "RebootController", "StopMasterAgent", "StartMasterAgent"}) {
    m_host.Command("FailOperation", {{"operation", name}, {"status", "5"}, {"times", "1"}});
  }
  std::string text = "kept";
  EXPECT_EQ(5, Published()->CopyFrom("", text));
  EXPECT_EQ("kept", text);
  EXPECT_EQ(5, Published()->CopyTo("", "new"));
  EXPECT_EQ(5, Published()->RebootController());
  EXPECT_EQ(5, Published()->StopMasterAgent());
  EXPECT_EQ(5, Published()->StartMasterAgent());
  EXPECT_TRUE(m_asked.empty());
  EXPECT_EQ(
      "<counts><count operation=CopyFrom value=1><count operation=CopyTo value=1><count operation=RebootController value=1>"
      "<count operation=StopMasterAgent value=1><count operation=StartMasterAgent value=1>",
      m_host.Command("GetCounts"));
  EXPECT_EQ(0, Published()->CopyFrom("", text));
}

TEST_F(ADeviceDriver, JudgesItsOwnVersionAsConfigured) {
  EXPECT_EQ(0, Initialize());
  EXPECT_EQ("2.0", Published()->GetSNMPVersion());
  EXPECT_TRUE(Published()->IsSNMPVersionValid("2.0"));
  EXPECT_FALSE(Published()->IsSNMPVersionValid("3.0"));
}

TEST_F(ADeviceDriver, JudgesItsOwnVersionAsNotValidWhereThatIsConfigured) {
  EXPECT_EQ(0, Initialize("<config folder='/d' version='2.0' versionValid='false'/>"));
  EXPECT_FALSE(Published()->IsSNMPVersionValid("2.0"));
}

}  // namespace
