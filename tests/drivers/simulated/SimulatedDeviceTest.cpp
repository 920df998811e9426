// The built module of the simulated device in a development host, beside a stand-in for the agent.

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "devhost/engine/Host.h"
#include "devhost/xml/XmlObserver.h"
#include "tests/drivers/support/TemporaryFolder.h"

namespace {

using devhost::DriverEntry;
using devhost::Occurrence;

const unsigned long kAgent = 1;
const unsigned long kKitchen = 12;

class ASimulatedDevice : public testing::Test, private devhost::HostObserver {
 protected:
  ASimulatedDevice() { std::filesystem::create_directory(m_folder.Path("kitchen")); }
  ~ASimulatedDevice() override {
    m_host.reset();
    EXPECT_EQ(0U, m_manners) << m_mannersText;
    EXPECT_EQ(0U, devhost::LiveXmlObjects());
  }

  void LoadAgent() { Load(kAgent, "agent", FAKE_AGENT_MODULE, "<config/>"); }

  void LoadKitchen(const std::string& attributes = "version='1.2.0'", const std::string& children = std::string()) {
    LoadDevice(kKitchen, "kitchen", "folder='" + m_folder.Path("kitchen") + "' " + attributes,
               children.empty() ? "<setting name='sysName' value='kitchen box'/>" : children);
  }

  void LoadDevice(unsigned long id, const std::string& name, const std::string& attributes, const std::string& children) {
    Load(id, name, SIMULATED_DEVICE_MODULE, "<config " + attributes + ">" + children + "</config>");
  }

  std::string Command(unsigned long driver, const std::string& name, const devhost::Parameters& parameters = {}) {
    return m_host->Command(driver, name, parameters);
  }

  std::string File() const { return m_folder.Read("kitchen/snmpd.conf"); }

  TemporaryFolder m_folder;
  std::unique_ptr<devhost::Host> m_host = std::make_unique<devhost::Host>(static_cast<devhost::HostObserver&>(*this));
  std::vector<std::string> m_log;  // "level: line"

 private:
  void Load(unsigned long id, const std::string& name, const std::string& module, const std::string& config) {
    DriverEntry entry;
    entry.id = id;
    entry.name = name;
    entry.module = module;
    entry.configXml = config;
    m_host->Load(entry);
  }

  void OnOccurrence(const Occurrence& occurrence) override {
    if (occurrence.kind == Occurrence::Kind::Log) {
      m_log.push_back(std::to_string(occurrence.level) + ": " + occurrence.text);
    } else if (occurrence.kind == Occurrence::Kind::Manners) {
      ++m_manners;
      m_mannersText += TextOf(occurrence) + "\n";
    }
  }

  std::size_t m_manners = 0;
  std::string m_mannersText;
};

const char kKitchenListed[] = "<devices><device id=\"12\" name=\"kitchen box\" version=\"1.2.0\" valid=\"true\"/></devices>";

TEST_F(ASimulatedDevice, IsKnownToAnAgentThatWasLoadedFirst) {
  LoadAgent();
  LoadKitchen();
  EXPECT_EQ(kKitchenListed, Command(kAgent, "List"));
}

TEST_F(ASimulatedDevice, IsKnownToAnAgentThatIsLoadedLater) {
  LoadKitchen();
  LoadAgent();
  EXPECT_EQ(kKitchenListed, Command(kAgent, "List"));
}

TEST_F(ASimulatedDevice, IsOneOfMany) {
  std::filesystem::create_directory(m_folder.Path("cellar"));
  LoadKitchen();
  LoadAgent();
  LoadDevice(4294967295UL, "cellar", "folder='" + m_folder.Path("cellar") + "' version='x' versionValid='false'", "");
  EXPECT_EQ(
      "<devices><device id=\"12\" name=\"kitchen box\" version=\"1.2.0\" valid=\"true\"/>"
      "<device id=\"4294967295\" name=\"\" version=\"x\" valid=\"false\"/></devices>",
      Command(kAgent, "List"));
  EXPECT_EQ("<status value=\"0\"/>", Command(kAgent, "CopyTo", {{"id", "4294967295"}, {"text", "cellar's"}}));
  EXPECT_EQ("cellar's", m_folder.Read("cellar/snmpd.conf"));
  EXPECT_FALSE(std::filesystem::exists(m_folder.Path("kitchen/snmpd.conf")));
}

TEST_F(ASimulatedDevice, HandsItsFileOverAndTakesItBack) {
  LoadAgent();
  LoadKitchen();
  EXPECT_EQ("<status value=\"0\"/>", Command(kAgent, "CopyFrom", {{"id", "12"}}));
  m_folder.Write("kitchen/snmpd.conf", "rocommunity  public\n");
  EXPECT_EQ("<status value=\"0\">rocommunity  public\n</status>", Command(kAgent, "CopyFrom", {{"id", "12"}}));
  EXPECT_EQ("<status value=\"0\"/>", Command(kAgent, "CopyTo", {{"id", "12"}, {"text", "sysName  box"}}));
  EXPECT_EQ("sysName  box", File());
  EXPECT_EQ("<filePath>" + m_folder.Path("kitchen") + "/snmpd.conf</filePath>", Command(kKitchen, "GetFilePath"));
  EXPECT_TRUE(m_log.empty());
}

TEST_F(ASimulatedDevice, DoesTheActionsOfItsController) {
  LoadAgent();
  LoadKitchen();
  for (const char* const action : {"StartMasterAgent", "StopMasterAgent", "RebootController", "StartMasterAgent"}) {
    EXPECT_EQ("<status value=\"0\"/>", Command(kAgent, action, {{"id", "12"}}));
  }
  EXPECT_EQ(
      "<counts><count operation=\"CopyFrom\" value=\"0\"/><count operation=\"CopyTo\" value=\"0\"/>"
      "<count operation=\"RebootController\" value=\"1\"/><count operation=\"StopMasterAgent\" value=\"1\"/>"
      "<count operation=\"StartMasterAgent\" value=\"2\"/></counts>",
      Command(kKitchen, "GetCounts"));
}

TEST_F(ASimulatedDevice, FailsOnDemandWithoutTouchingItsFile) {
  LoadAgent();
  LoadKitchen();
  m_folder.Write("kitchen/snmpd.conf", "old");
  EXPECT_EQ("<Success/>", Command(kKitchen, "FailOperation", {{"operation", "CopyTo"}, {"status", "-9"}, {"times", "1"}}));
  EXPECT_EQ("<status value=\"-9\"/>", Command(kAgent, "CopyTo", {{"id", "12"}, {"text", "new"}}));
  EXPECT_EQ("old", File());
  EXPECT_EQ("<status value=\"0\"/>", Command(kAgent, "CopyTo", {{"id", "12"}, {"text", "new"}}));
  EXPECT_EQ("new", File());
}

TEST_F(ASimulatedDevice, SaysInTheLogWhyItsFileWasNotReplaced) {
  LoadAgent();
  LoadKitchen();
  std::filesystem::create_symlink("elsewhere", m_folder.Path("kitchen/snmpd.conf"));
  EXPECT_EQ("<status value=\"-1\"/>", Command(kAgent, "CopyTo", {{"id", "12"}, {"text", "new"}}));
  EXPECT_EQ("<status value=\"-1\"/>", Command(kAgent, "CopyFrom", {{"id", "12"}}));
  const std::string path = m_folder.Path("kitchen/snmpd.conf");
  EXPECT_EQ((std::vector<std::string>{"3: SNMP device 12: cannot replace " + path + ": it is a symbolic link (status -1)",
                                      "3: SNMP device 12: cannot read " + path + ": it is a symbolic link (status -1)"}),
            m_log);
  EXPECT_FALSE(std::filesystem::exists(m_folder.Path("kitchen/elsewhere")));
}

TEST_F(ASimulatedDevice, WithoutItsFolderSaysSoAndAnswersAStatusUntilItIsThere) {
  std::filesystem::remove(m_folder.Path("kitchen"));
  LoadAgent();
  LoadKitchen();
  ASSERT_EQ(1U, m_log.size());
  EXPECT_EQ("3: SNMP device 12: the folder " + m_folder.Path("kitchen") +
                " is missing (No such file or directory); make it, the device does not",
            m_log[0]);
  EXPECT_EQ(kKitchenListed, Command(kAgent, "List"));
  EXPECT_EQ("<status value=\"-102\"/>", Command(kAgent, "CopyFrom", {{"id", "12"}}));
  EXPECT_EQ("<status value=\"-102\"/>", Command(kAgent, "CopyTo", {{"id", "12"}, {"text", "new"}}));
  EXPECT_FALSE(std::filesystem::exists(m_folder.Path("kitchen")));
  std::filesystem::create_directory(m_folder.Path("kitchen"));
  EXPECT_EQ("<status value=\"0\"/>", Command(kAgent, "CopyTo", {{"id", "12"}, {"text", "new"}}));
  EXPECT_EQ("new", File());
}

TEST_F(ASimulatedDevice, WithAWrongConfigurationIsUnknownToTheAgent) {
  LoadAgent();
  LoadKitchen("versionValid='maybe'");
  ASSERT_FALSE(m_log.empty());
  EXPECT_EQ("3: SNMP device 12: invalid configuration: versionValid is \"maybe\"; allowed are true and false", m_log[0]);
  EXPECT_EQ("<devices/>", Command(kAgent, "List"));
  EXPECT_EQ(0U, Command(kKitchen, "Announce").find("<Fail>"));
  EXPECT_EQ("<filePath/>", Command(kKitchen, "GetFilePath"));
}

TEST_F(ASimulatedDevice, ComesAndGoesOnCommand) {
  LoadKitchen();
  EXPECT_EQ("<Fail>no agent is present</Fail>", Command(kKitchen, "Announce"));
  EXPECT_EQ("<Success/>", Command(kKitchen, "Withdraw"));
  LoadAgent();
  EXPECT_EQ("<Success/>", Command(kKitchen, "Withdraw"));
  EXPECT_EQ("<devices/>", Command(kAgent, "List"));
  EXPECT_EQ("<Success/>", Command(kKitchen, "Announce"));
  EXPECT_EQ(kKitchenListed, Command(kAgent, "List"));
}

TEST_F(ASimulatedDevice, KeepsWhatWasErasedWhenAnAgentComes) {
  LoadKitchen();
  EXPECT_EQ("<Success/>", Command(kKitchen, "EraseSetting", {{"name", "sysName"}}));
  const std::string settings = Command(kKitchen, "GetSettings");
  EXPECT_NE(std::string::npos, settings.find("<setting name=\"sysName\" value=\"\" erased=\"true\"/>")) << settings;
  LoadAgent();
  EXPECT_EQ(settings, Command(kKitchen, "GetSettings"));
}

}  // namespace
