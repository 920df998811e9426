// The built module in a development host, beside a stand-in for the agent.

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "devhost/engine/Host.h"
#include "devhost/state/StateStore.h"
#include "devhost/xml/XmlObserver.h"
#include "tests/drivers/support/Processes.h"
#include "tests/drivers/support/TemporaryFolder.h"
#include "tests/module/Shell.h"

namespace {

using devhost::DriverEntry;
using devhost::Occurrence;

const unsigned long kAgent = 1;
const unsigned long kKitchen = 12;
const unsigned long kCellar = 13;

class TheModule : public testing::Test, private devhost::HostObserver {
 protected:
  TheModule() { Begin(); }
  ~TheModule() override {
    m_host.reset();
    EXPECT_EQ("", m_manners);
    EXPECT_EQ(0U, devhost::LiveXmlObjects());
    EXPECT_EQ(0U, CountChildren());
  }

  // A host with an agent and two devices, in place of the former host.
  void Begin() {
    m_host.reset();
    m_host = std::make_unique<devhost::Host>(static_cast<devhost::HostObserver&>(*this), &m_states);
    Load(kAgent, "agent", FAKE_AGENT_MODULE, "<config/>");
    for (const unsigned long id : {kKitchen, kCellar}) {
      const std::string name = id == kKitchen ? "kitchen" : "cellar";
      std::filesystem::create_directory(m_folder.Path(name));
      m_folder.Write(name + "/snmpd.conf", "rocommunity public\nsysName " + name + "\n");
      Load(id, name, LOCAL_SNMPD_MODULE, "<config folder='" + m_folder.Path(name) + "'/>");
    }
  }

  std::string Agent(const std::string& name, unsigned long id) {
    return m_host->Command(kAgent, name, {{"id", std::to_string(id)}});
  }
  // One value of a device's reply to GetDaemon.
  std::string Tell(unsigned long id, const std::string& name) {
    const std::string reply = m_host->Command(id, "GetDaemon", {});
    const std::size_t begin = reply.find(" " + name + "=\"") + name.size() + 3;
    return reply.substr(begin, reply.find('"', begin) - begin);
  }

  TemporaryFolder m_folder;
  devhost::StateMemory m_states;
  std::unique_ptr<devhost::Host> m_host;

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
    if (occurrence.kind == Occurrence::Kind::Manners) {
      m_manners += TextOf(occurrence) + "\n";
    }
  }

  std::string m_manners;
};

TEST_F(TheModule, ServesTwoDevicesOfOneHost) {
  for (const unsigned long id : {kKitchen, kCellar}) {
    EXPECT_EQ("<status value=\"0\"/>", Agent("StartMasterAgent", id));
  }
  EXPECT_NE(Tell(kKitchen, "address"), Tell(kCellar, "address"));
  EXPECT_EQ("kitchen", SnmpGet(Tell(kKitchen, "address"), "public", kSysName));
  EXPECT_EQ("cellar", SnmpGet(Tell(kCellar, "address"), "public", kSysName));
  EXPECT_EQ("<status value=\"0\"/>", Agent("StopMasterAgent", kKitchen));
  EXPECT_EQ("cellar", SnmpGet(Tell(kCellar, "address"), "public", kSysName));
}

TEST_F(TheModule, LeavesNoDaemonWhenItsHostStops) {
  EXPECT_EQ("<status value=\"0\"/>", Agent("StartMasterAgent", kKitchen));
  const pid_t pid = std::stoi(Tell(kKitchen, "pid"));
  EXPECT_TRUE(IsAlive(pid));
  m_host->Stop();
  EXPECT_FALSE(IsAlive(pid));
}

TEST_F(TheModule, FindsItsStateAgainInTheNextHost) {
  EXPECT_EQ("<Success/>", m_host->Command(kKitchen, "SetSetting", {{"name", "sysName"}, {"value", "mine\n\t\"%\""}}));
  EXPECT_EQ("<Success/>", m_host->Command(kKitchen, "EraseSetting", {{"name", "sysContact"}}));
  EXPECT_NE("", Agent("CopyFrom", kKitchen));
  EXPECT_EQ("<Success/>", m_host->Command(kKitchen, "SetOnline", {{"online", "false"}}));
  EXPECT_EQ("<status value=\"-9\"/>", m_host->Command(kAgent, "CopyTo", {{"id", "12"}, {"text", "later"}}));
  const std::string settings = m_host->Command(kKitchen, "GetSettings", {});
  Begin();
  EXPECT_EQ(settings, m_host->Command(kKitchen, "GetSettings", {}));
  EXPECT_EQ("true", Tell(kKitchen, "pending"));
  EXPECT_EQ("<status value=\"-9\">later</status>", Agent("CopyFrom", kKitchen));
  EXPECT_EQ("<Success/>", m_host->Command(kKitchen, "SetOnline", {{"online", "true"}}));
  EXPECT_EQ("later", m_folder.Read("kitchen/snmpd.conf"));
  EXPECT_EQ("false", Tell(kCellar, "pending"));
}

// The process that loads it holds the same code: neither may take the other's.
TEST(TheModulesSymbols, NameNothingOfTheDevelopmentHost) {
  const ShellResult symbols = RunInShell("nm --dynamic --demangle '" LOCAL_SNMPD_MODULE "'");
  EXPECT_EQ(symbols.status, 0) << symbols.output;
  EXPECT_NE(symbols.output.find(" GetCreationFunc"), std::string::npos) << symbols.output;
  EXPECT_EQ(symbols.output.find("devhost::"), std::string::npos) << symbols.output;
}

}  // namespace
