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
using Lines = std::vector<std::string>;

class AServedConfig : public testing::Test {
 protected:
  std::string Serve(const std::string& line) { return MakeServedConfig(line + "\n").text; }
  std::string LeftOut(const std::string& line) { return "# " + line + "\n"; }
  std::string Include(const std::string& file) { return "includeFile " + m_folder.Path(file); }

  Lines Notes(const std::string& text) {
    Lines lines;
    for (const ServedConfig::Note& note : MakeServedConfig(text).notes) {
      lines.push_back(note.place.file + ":" + std::to_string(note.place.line) + ": " + note.what);
    }
    return lines;
  }

  TemporaryFolder m_folder;
};

TEST_F(AServedConfig, HoldsCommentsAndKnownDirectivesUnderTheirNumbers) {
  const ServedConfig served = MakeServedConfig("rocommunity  public\n\n# agentaddress 161\r\n\tsysName  agentaddress \n \n");
  EXPECT_EQ("rocommunity public\n\n# agentaddress 161\r\nsysname agentaddress \n \n", served.text);
  EXPECT_TRUE(served.notes.empty());
  ASSERT_EQ(5U, served.places.size());
  EXPECT_EQ("snmpd.conf", served.places[3].file);
  EXPECT_EQ(4U, served.places[3].line);
  EXPECT_EQ("", MakeServedConfig("").text);
  EXPECT_EQ("sysname x\n", MakeServedConfig("sysName x").text);
}

TEST_F(AServedConfig, LeavesOutAddressesHoweverTheyAreWritten) {
  for (const std::string line :
       {"agentaddress 161", "AgentAddress\t161", "  \t\v\ragentaddress 161", "[snmpd] agentAddress 161",
        "\"agentaddress\"161", "'agentaddress' 161", "agent\\address 161", "[snmpd]\vagentaddress 161", "agentaddress",
        "\"[snmpd]\" agentaddress 161", "\"\" agentaddress 161", "[snmpd agentaddress 161"}) {
    EXPECT_EQ(LeftOut(line), Serve(line)) << line;
  }
}

TEST_F(AServedConfig, NamesEachLineThatItLeavesOutUnderItsNumber) {
  EXPECT_EQ((Lines{"snmpd.conf:2: this directive would open other ports; the daemon does not get this line",
                   "snmpd.conf:4: the driver does not know this directive; the daemon does not get this line"}),
            Notes("rocommunity public\nAGENTADDRESS 161\n\nsecret words\n"));
}

TEST_F(AServedConfig, ServesNoSectionButTheDaemonsOwn) {
  EXPECT_EQ("sysname a\n# [snmp]\n# persistentDir /tmp/x\n# sysName b\n# [snmpd]\nsysname c\n",
            MakeServedConfig("[snmpd] sysName a\n[snmp]\npersistentDir /tmp/x\nsysName b\n[snmpd]\nsysName c\n").text);
  for (const std::string line : {"[snmp] logOption f /tmp/x", "[snmp] sysName x", "'[snmp]' sysName x", "[SNMPD] sysName x",
                                 "[] sysName x", "[snmp sysName x"}) {
    EXPECT_EQ(LeftOut(line), Serve(line)) << line;
    EXPECT_EQ(1U, Notes(line).size()) << line;
  }
  // A line of a file that is included does not switch the section of the one that includes it.
  m_folder.Write("other.conf", "[snmp]\n");
  EXPECT_EQ(LeftOut(Include("other.conf")) + "# [snmp]\nsysname x\n", Serve(Include("other.conf") + "\nsysName x"));
}

TEST_F(AServedConfig, HoldsNoZeroByte) {
  const ServedConfig served = MakeServedConfig(std::string("sysName a\0junk\n# a\0b\n", 21));
  EXPECT_EQ("sysname a?junk\n# a?b\n", served.text);
  ASSERT_EQ(2U, served.notes.size());
  EXPECT_EQ(1U, served.notes[0].place.line);
}

TEST_F(AServedConfig, HoldsTheLinesOfIncludedFilesWithTheirOwnPlaces) {
  m_folder.Write("inner.conf", "sysContact Ada\nagentaddress 161\n");
  m_folder.Write("outer.conf", Include("inner.conf") + "\nsysName box");
  const std::string outer = Include("outer.conf");
  const ServedConfig served = MakeServedConfig("rocommunity public\n" + outer + "  \nsysLocation attic\n");
  EXPECT_EQ("rocommunity public\n# " + outer + "  \n# " + Include("inner.conf") +
                "\nsyscontact Ada\n# agentaddress 161\nsysname box\nsyslocation attic\n",
            served.text);
  ASSERT_EQ(7U, served.places.size());
  EXPECT_EQ(m_folder.Path("inner.conf"), served.places[3].file);
  EXPECT_EQ(1U, served.places[3].line);
  EXPECT_EQ(m_folder.Path("outer.conf"), served.places[5].file);
  EXPECT_EQ(2U, served.places[5].line);
  EXPECT_EQ("snmpd.conf", served.places[6].file);
  EXPECT_EQ(3U, served.places[6].line);
  EXPECT_EQ(
      (Lines{m_folder.Path("inner.conf") + ":2: this directive would open other ports; the daemon does not get this line"}),
      Notes(outer));
}

TEST_F(AServedConfig, HoldsTheConfFilesOfAFolderByName) {
  std::filesystem::create_directory(m_folder.Path("parts"));
  m_folder.Write("parts/b.conf", "sysName b\n");
  m_folder.Write("parts/a.conf", "sysName a\n");
  m_folder.Write("parts/c.txt", "sysName c\n");
  for (const std::string end : {"", "/", " ", "\t "}) {
    const std::string line = "includeDir " + m_folder.Path("parts") + end;
    EXPECT_EQ(LeftOut(line) + "sysname a\nsysname b\n", Serve(line));
  }
}

TEST_F(AServedConfig, LeavesOutWhateverElseMakesTheDaemonLookForFiles) {
  m_folder.Write("x.conf", "sysName x\n");
  for (const std::string& line :
       {std::string("includeSearch ../../x"), std::string("includeSearch x.conf"), std::string("includeSearch x.0.conf"),
        "includeSearch /" + m_folder.Path("x"), std::string("include x"), std::string("includeFile x.conf"),
        std::string("includeDir .."), std::string("includeFile"), std::string("includeFiles /x")}) {
    EXPECT_EQ(LeftOut(line), Serve(line)) << line;
    EXPECT_EQ(1U, Notes(line).size()) << line;
  }
}

TEST_F(AServedConfig, ServesAFileThatIsIncludedTwiceAsOftenAsItIs) {
  m_folder.Write("x.conf", "sysName x\nagentaddress 161\n");
  const std::string once = LeftOut(Include("x.conf")) + "sysname x\n# agentaddress 161\n";
  EXPECT_EQ(once + once, Serve(Include("x.conf") + "\n" + Include("x.conf")));
}

TEST_F(AServedConfig, EndsFilesThatIncludeThemselves) {
  m_folder.Write("loop.conf", "sysName x\n" + Include("loop.conf") + "\n");
  EXPECT_EQ((Lines{m_folder.Path("loop.conf") + ":2: files include each other too deeply; the daemon does not get it"}),
            Notes(Include("loop.conf")));
  // Each file includes itself many times; the bound on files ends it.
  std::string wide;
  for (int line = 0; line < 50; ++line) {
    wide += Include("wide.conf") + "\n";
  }
  m_folder.Write("wide.conf", wide);
  EXPECT_LE(MakeServedConfig(wide).places.size(), 101U * 50U);
}

}  // namespace
