#include "drivers/localsnmpd/ServedConfig.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/drivers/support/TemporaryFolder.h"

namespace {

using drivers::MakeServedConfig;
using drivers::ServedConfig;

const char kAddress[] = "agentaddress udp:127.0.0.1:161\n";
const char kSawAddress[] = "agentaddress would open other ports; the daemon does not get this line";

class AServedConfig : public testing::Test {
 protected:
  AServedConfig() {
    std::filesystem::create_directories(m_folder.Path("daemon/data"));
    m_paths = {m_folder.Path(), m_folder.Path("daemon"), m_folder.Path("daemon/data")};
  }

  // The include as it is served: as it stands, or as a comment.
  std::string Serve(const std::string& line) { return MakeServedConfig(line + "\n", m_paths).text; }
  std::string AsIs(const std::string& line) { return line + "\n"; }
  std::string LeftOut(const std::string& line) { return "# " + line + "\n"; }

  TemporaryFolder m_folder;
  drivers::IncludePaths m_paths;
};

TEST_F(AServedConfig, HoldsWhatHarmsNobodyByteForByte) {
  const std::string text = "rocommunity  public\n\n# agentaddress 161\r\n\xff\tsysName agentaddress\n \nagentaddresses x\n";
  const ServedConfig served = MakeServedConfig(text, m_paths);
  EXPECT_EQ(text, served.text);
  EXPECT_TRUE(served.notes.empty());
  EXPECT_EQ("", MakeServedConfig("", m_paths).text);
  EXPECT_EQ("sysName x\n", MakeServedConfig("sysName x", m_paths).text);
}

TEST_F(AServedConfig, LeavesOutAddressesHoweverTheyAreWritten) {
  for (const std::string line :
       {"agentaddress 161", "AgentAddress\t161", "  \t\v\ragentaddress 161", "[snmpd] agentAddress 161",
        "\"agentaddress\"161", "'agentaddress' 161", "agent\\address 161", "[snmpd]\vagentaddress 161", "agentaddress"}) {
    EXPECT_EQ(LeftOut(line), Serve(line)) << line;
  }
}

TEST_F(AServedConfig, NamesEachLineThatItLeavesOutUnderItsNumber) {
  const ServedConfig served = MakeServedConfig("rocommunity public\nagentaddress 161\n\nAGENTADDRESS tcp:162", m_paths);
  EXPECT_EQ("rocommunity public\n# agentaddress 161\n\n# AGENTADDRESS tcp:162\n", served.text);
  ASSERT_EQ(2U, served.notes.size());
  EXPECT_EQ(2U, served.notes[0].number);
  EXPECT_EQ("agentaddress 161", served.notes[0].line);
  EXPECT_EQ(kSawAddress, served.notes[0].what);
  EXPECT_EQ(4U, served.notes[1].number);
}

TEST_F(AServedConfig, LeavesOutAnotherUserOrGroup) {
  for (const std::string line : {"agentuser nobody", "[snmpd] AgentGroup nogroup"}) {
    EXPECT_EQ(LeftOut(line), Serve(line));
  }
  const ServedConfig served = MakeServedConfig("agentuser nobody\n", m_paths);
  ASSERT_EQ(1U, served.notes.size());
  EXPECT_EQ("agentuser would let the daemon outlive the host; the daemon does not get this line", served.notes[0].what);
  m_folder.Write("user.conf", "agentuser nobody\n");
  EXPECT_EQ(LeftOut("includeFile user.conf"), Serve("includeFile user.conf"));
}

TEST_F(AServedConfig, HoldsNoZeroByte) {
  const ServedConfig served = MakeServedConfig(std::string("agentadd\0junk\nress 161\n", 23), m_paths);
  EXPECT_EQ("agentadd?junk\nress 161\n", served.text);
  ASSERT_EQ(1U, served.notes.size());
  EXPECT_EQ(1U, served.notes[0].number);
}

TEST_F(AServedConfig, KeepsIncludesOfHarmlessAndOfMissingFiles) {
  m_folder.Write("good.conf", "sysName box\nincludeFile good.conf\n");
  for (const std::string line :
       {"includeFile good.conf", "includeFile none.conf", "includeDir /none", "includeSearch none"}) {
    EXPECT_EQ(AsIs(line), Serve(line)) << line;
  }
  const std::string folder = "includeDir " + m_folder.Path();
  EXPECT_EQ(AsIs(folder), Serve(folder));
}

TEST_F(AServedConfig, LeavesOutIncludesOfFilesWithAddresses) {
  m_folder.Write("bad.conf", std::string("sysName box\n") + kAddress);
  m_folder.Write("outer.conf", "includeFile bad.conf\n");
  m_folder.Write("daemon/data/found.conf", kAddress);
  m_folder.Write("daemon/data/local.local.conf", kAddress);
  for (const std::string& line :
       {std::string("includeFile bad.conf"), "includeFile " + m_folder.Path("bad.conf"),
        std::string("IncludeFile  bad.conf  "), std::string("includeFile outer.conf"), "includeDir " + m_folder.Path(),
        std::string("includeDir .."), std::string("includeSearch found"), std::string("includeSearch local")}) {
    EXPECT_EQ(LeftOut(line), Serve(line)) << line;
  }
}

// The daemon takes them into the name.
TEST_F(AServedConfig, LooksAtTheFileWhoseNameEndsInTheBlanksOfTheLine) {
  m_folder.Write("bad.conf  ", kAddress);
  EXPECT_EQ(LeftOut("includeFile bad.conf  "), Serve("includeFile bad.conf  "));
  EXPECT_EQ(AsIs("includeFile bad.conf"), Serve("includeFile bad.conf"));
}

TEST_F(AServedConfig, SaysWhichIncludedLineIsInTheWay) {
  m_folder.Write("bad.conf", std::string("sysName box\n") + kAddress);
  m_folder.Write("outer.conf", "includeFile bad.conf\n");
  const ServedConfig served = MakeServedConfig("\nincludeFile outer.conf\n", m_paths);
  ASSERT_EQ(1U, served.notes.size());
  EXPECT_EQ(2U, served.notes[0].number);
  EXPECT_EQ(std::filesystem::canonical(m_folder.Path("bad.conf")).string() +
                ":2 holds agentaddress, which would open other ports; the daemon does not get this include",
            served.notes[0].what);
}

TEST_F(AServedConfig, JudgesTheSameFileForEachIncludeOfIt) {
  m_folder.Write("bad.conf", kAddress);
  EXPECT_EQ("# includeFile bad.conf\n# includeFile bad.conf\n",
            MakeServedConfig("includeFile bad.conf\nincludeFile bad.conf\n", m_paths).text);
}

TEST_F(AServedConfig, LeavesOutIncludesThatItCannotJudge) {
  m_folder.Write("zero.conf", std::string("agentadd\0junk\nress 161\n", 23));
  EXPECT_EQ(LeftOut("includeFile zero.conf"), Serve("includeFile zero.conf"));
  m_folder.Write("large.conf", std::string(16 * 1024 * 1024 + 1, '#'));
  EXPECT_EQ(LeftOut("includeFile large.conf"), Serve("includeFile large.conf"));
}

TEST_F(AServedConfig, IsNotHeldUpByIncludesWithoutEndOrByPipes) {
  m_folder.Write("one.conf", "includeFile two.conf\n");
  m_folder.Write("two.conf", "includeFile one.conf\n");
  EXPECT_EQ(AsIs("includeFile one.conf"), Serve("includeFile one.conf"));
  ASSERT_EQ(0, ::mkfifo(m_folder.Path("pipe.conf").c_str(), 0600));
  EXPECT_EQ(AsIs("includeFile pipe.conf"), Serve("includeFile pipe.conf"));
  for (int number = 0; number <= 1001; ++number) {
    m_folder.Write("chain" + std::to_string(number) + ".conf", "includeFile chain" + std::to_string(number + 1) + ".conf\n");
  }
  EXPECT_EQ(LeftOut("includeFile chain0.conf"), Serve("includeFile chain0.conf"));
}

}  // namespace
