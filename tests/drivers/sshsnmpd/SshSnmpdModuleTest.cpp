// The built module in a development host, beside a stand-in for the agent.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "devhost/engine/Host.h"
#include "devhost/state/StateStore.h"
#include "devhost/xml/XmlObserver.h"
#include "tests/drivers/support/SshServer.h"
#include "tests/module/Shell.h"

namespace {

using devhost::DriverEntry;
using devhost::Occurrence;

class TheModule : public testing::Test, private devhost::HostObserver {
 protected:
  TheModule() {
    m_server.Files().Write("snmpd.conf", "first");
    m_server.GiveFiles();
    Begin();
  }
  ~TheModule() override {
    m_host.reset();
    EXPECT_EQ("", m_manners);
    EXPECT_EQ(0U, devhost::LiveXmlObjects());
  }

  void Begin() {
    m_host.reset();
    m_host = std::make_unique<devhost::Host>(static_cast<devhost::HostObserver&>(*this), &m_states);
    Load(1, "agent", FAKE_AGENT_MODULE, "<config/>");
    Load(12, "kitchen", SSH_SNMPD_MODULE, Config());
  }

  std::string Config() const {
    return "<config host='127.0.0.1' port='" + std::to_string(m_server.Port()) + "' user='controller' key=\"" +
           m_server.Key() + "\" knownHosts=\"" + m_server.KnownHosts(m_server.Port()) + "\" file=\"" +
           m_server.Files().Path("snmpd.conf") + "\"/>";
  }

  std::string CopyFrom() { return m_host->Command(1, "CopyFrom", {{"id", "12"}}); }
  std::string CopyTo(const std::string& text) { return m_host->Command(1, "CopyTo", {{"id", "12"}, {"text", text}}); }

  SshServer m_server;
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

TEST_F(TheModule, ReadsAndReplacesTheFileOfAController) {
  EXPECT_EQ("<status value=\"0\">first</status>", CopyFrom());
  EXPECT_EQ("<status value=\"0\"/>", CopyTo("second"));
  EXPECT_EQ("second", m_server.Files().Read("snmpd.conf"));
}

TEST_F(TheModule, KeepsTheContractOfDrivers) {
  const TemporaryFolder folder;
  folder.Write("profile.xml", "<conform>" + Config() +
                                  "<claim name='keeps-state'/><claim name='goes-off-line'/>"
                                  "<claim name='withdraws' out='Withdraw' back='Announce'/></conform>");
  const char* const level = std::getenv("CONFORM_LEVEL");
  const ShellResult result = RunInShell("'" DEVHOST_PROGRAM "' conform --profile '" + folder.Path("profile.xml") +
                                        "' --level " + (level == nullptr ? "basic" : level) + " '" SSH_SNMPD_MODULE "'");
  EXPECT_EQ(0, result.status) << result.output;
}

TEST_F(TheModule, FindsItsStateAgainInTheNextHost) {
  EXPECT_EQ("<status value=\"0\">first</status>", CopyFrom());
  m_server.Stop();
  EXPECT_EQ("<status value=\"-9\"/>", CopyTo("later"));
  Begin();
  EXPECT_EQ("<status value=\"-9\">later</status>", CopyFrom());
  m_server.Start();
  EXPECT_EQ("<status value=\"0\">later</status>", CopyFrom());
  EXPECT_EQ("later", m_server.Files().Read("snmpd.conf"));
}

// The process that loads it holds the same code: neither may take the other's.
TEST(TheModulesSymbols, NameNothingOfTheDevelopmentHost) {
  const ShellResult symbols = RunInShell("nm --dynamic --demangle '" SSH_SNMPD_MODULE "'");
  EXPECT_EQ(symbols.status, 0) << symbols.output;
  EXPECT_NE(symbols.output.find(" GetCreationFunc"), std::string::npos) << symbols.output;
  EXPECT_EQ(symbols.output.find("devhost::"), std::string::npos) << symbols.output;
}

}  // namespace
