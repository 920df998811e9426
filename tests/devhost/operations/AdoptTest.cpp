// With the built agent.
#include "devhost/operations/Adopt.h"

#include <gmock/gmock.h>

#include "devhost/check/Advice.h"
#include "devhost/project/Project.h"
#include "devhost/xml/XmlReader.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

class AHandWrittenFile : public testing::Test {
 protected:
  Adoption Adopted(const std::string& text) const {
    return Adopt({"f.conf", text}, folder.Path("f.conf"), AgentAlone(MODULE_FOLDER).drivers.front());
  }
  static std::string Setting(const Adoption& adoption, const std::string& name) {
    for (const XmlElement& child : ReadXml(adoption.settings).children) {
      if (child.name == name) {
        return child.text;
      }
    }
    return "missing";
  }

  const testsupport::ScratchFolder folder;
};

TEST_F(AHandWrittenFile, GivesItsLinesToTheSection) {
  const Adoption adoption = Adopted(
      "# mine\n"
      "rocommunity reader\n"
      "rwcommunity writer default\n"
      "syscontact  Ada <ada@example.org>\n"
      "sysLocation Kitchen,  left\n"
      "sysName box\n"
      "trap2sink 192.0.2.5 trapper 162\n"
      "trap2sink nms.example\n"
      "agentaddress 127.0.0.1\n");
  EXPECT_EQ(adoption.text, "# mine\nagentaddress 127.0.0.1\n");
  EXPECT_EQ(Setting(adoption, "snmpCommunityReadSetting"), "reader");
  EXPECT_EQ(Setting(adoption, "snmpCommunityWriteSetting"), "writer");
  EXPECT_EQ(Setting(adoption, "snmpSysContactSetting"), "Ada <ada@example.org>");
  EXPECT_EQ(Setting(adoption, "snmpSysLocationSetting"), "Kitchen,  left");
  EXPECT_EQ(Setting(adoption, "snmpSysNameSetting"), "box");
  EXPECT_EQ(Setting(adoption, "snmpEnabledSetting"), "true");
  EXPECT_EQ(Setting(adoption, "deviceId"), "1");
  EXPECT_THAT(adoption.settings, HasSubstr("<target>192.0.2.5</target>"));
  EXPECT_THAT(adoption.settings, HasSubstr("<target>nms.example</target>"));
  EXPECT_THAT(adoption.becoming, Contains("line 4: syscontact becomes snmpSysContactSetting"));
  EXPECT_EQ(adoption.becoming.size(), 7U);
  EXPECT_THAT(adoption.staying, ElementsAre("agentaddress: line 9"));
  EXPECT_THAT(adoption.winning, IsEmpty());
  EXPECT_THAT(adoption.patch, AllOf(StartsWith("--- f.conf\n+++ f.conf\n@@ "), HasSubstr("\n-rocommunity reader\n")));
}

TEST_F(AHandWrittenFile, KeepsACommunityThatMeansSomethingElseAtTheTop) {
  const std::string limited = "rocommunity reader 192.0.2.0/24\nrocommunity reader\n";
  EXPECT_EQ(Adopted(limited).text, limited);
  EXPECT_THAT(Adopted(limited).staying, ElementsAre("line 1: rocommunity: it is limited to an address or a part of the tree",
                                                    "line 2: rocommunity: an earlier line has the same community: line 1"));
  const std::string named = "com2sec local 127.0.0.1 reader\nrocommunity reader\n";
  EXPECT_EQ(Adopted(named).text, named);
  const std::string family = "rocommunity6 reader\n";
  EXPECT_EQ(Adopted(family).text, family);
}

TEST_F(AHandWrittenFile, KeepsWhatTheAgentWouldNotReadBack) {
  const std::string text = "rocommunity \"two words\"\nsysContact Ada sysContact\nsysName caf\xe9\n";
  const Adoption adoption = Adopted(text);
  EXPECT_EQ(adoption.text, text);
  EXPECT_THAT(adoption.becoming, IsEmpty());
  EXPECT_EQ(adoption.patch, "");
}

// Once the lines are taken out of the file, settings that are refused would leave a daemon that knows nobody.
TEST_F(AHandWrittenFile, KeepsWhatAChangeWouldBeRefusedFor) {
  const std::vector<std::string> lines = {"rocommunity it's",
                                          "rwcommunity a\\\\b",
                                          "rocommunity " + std::string(256, 'c'),
                                          "trap2sink 127.0.0.1 c 70000",
                                          "trap2sink 127.0.0.1:162 c 162",
                                          "trap2sink 127.0.0.1 162",
                                          "sysLocation # attic"};
  for (const std::string& line : lines) {
    const Adoption adoption = Adopted("sysName box\n" + line + "\n");
    EXPECT_EQ(adoption.text, line + "\n");
    EXPECT_EQ(adoption.staying.size(), 1U) << line;
    for (const Finding& finding : Advise(adoption.settings, "settings", false)) {
      EXPECT_NE(finding.severity, Severity::Error) << line << ": " << finding.rule;
    }
  }
  EXPECT_THAT(
      Adopted("trap2sink 127.0.0.1 c 70000\n").staying,
      ElementsAre("line 1: trap2sink: snmpTrapTargets: the trap port is not a number from 1 to 65535: no traps reach "
                  "this target"));
}

TEST_F(AHandWrittenFile, GivesTheNextCommunityWhereOneWouldBeRefused) {
  const Adoption adoption = Adopted("rocommunity it's\nrocommunity reader\n");
  EXPECT_EQ(Setting(adoption, "snmpCommunityReadSetting"), "reader");
  EXPECT_EQ(adoption.text, "rocommunity it's\n");
}

TEST_F(AHandWrittenFile, KeepsWhatAnIncludedFileSetsAgain) {
  folder.Write("more.conf", "\nsysName included\nrocommunity reader\n");
  const std::string text =
      "sysName mine\nrocommunity reader\ninclude more.conf\nincludeFile " + folder.Path("more.conf") + "\n";
  const Adoption adoption = Adopted(text);
  EXPECT_EQ(adoption.text, text);
  EXPECT_EQ(Setting(adoption, "snmpSysNameSetting"), "");
  EXPECT_THAT(adoption.staying,
              AllOf(Contains("line 1: sysname: also set in an included file"),
                    Contains("line 2: rocommunity: an included file has the same community"),
                    Contains(HasSubstr("more.conf:2: sysname: set in an included file, which wins over the section"))));
}

TEST_F(AHandWrittenFile, NamesALineOfAnIncludedFileThatWinsOverTheSection) {
  folder.Write("more.conf", "agentXSocket tcp:127.0.0.1:1705\n");
  const Adoption adoption = Adopted("include more.conf\nincludeFile " + folder.Path("more.conf") + "\n");
  ASSERT_EQ(adoption.winning.size(), 1U);
  EXPECT_EQ(adoption.winning[0].rule, "overrides-section");
  EXPECT_THAT(adoption.winning[0].file, HasSubstr("more.conf"));
}

TEST_F(AHandWrittenFile, KeepsLinesForOtherProgramsAndNamesThem) {
  const std::string text = "sysName mine\n[snmp] defCommunity hidden1\n[agentx]\nagentXTimeout 5\n[snmpd]\nsysName ours\n";
  const Adoption adoption = Adopted(text);
  EXPECT_EQ(adoption.text, "[snmp] defCommunity hidden1\n[agentx]\nagentXTimeout 5\n[snmpd]\n");
  EXPECT_EQ(Setting(adoption, "snmpSysNameSetting"), "ours");
  EXPECT_THAT(adoption.staying, ElementsAre("for other programs than the daemon: line 2, line 4"));
}

TEST_F(AHandWrittenFile, LosesLinesThatTheSectionHasAnyway) {
  const Adoption adoption = Adopted("master agentx\nsysServices 76\nincludeAllDisks 10%\n");
  EXPECT_EQ(adoption.text, "sysServices 76\n");
  EXPECT_THAT(adoption.going, ElementsAre("line 1: master: the section says the same",
                                          "line 3: includealldisks: the section says the same"));
  EXPECT_THAT(adoption.coming, AllOf(Contains("agentxsocket tcp:127.0.0.1:705"), Not(Contains(StartsWith("master")))));
  ASSERT_EQ(adoption.winning.size(), 1U);
  EXPECT_EQ(adoption.winning[0].rule, "overrides-section");
}

TEST_F(AHandWrittenFile, SaysThatTheDaemonKeepsTheDisksOfTheSection) {
  const Adoption adoption = Adopted("sysName box\nincludeAllDisks 5%\nincludeAllDisks 10%\n");
  EXPECT_EQ(adoption.text, "includeAllDisks 5%\nincludeAllDisks 10%\n");
  const std::string reason = ": includealldisks: no effect any more, since the first one wins: that of the section, 10%";
  EXPECT_THAT(adoption.staying, ElementsAre("line 2" + reason, "line 3" + reason));
  EXPECT_THAT(adoption.coming, Contains("includealldisks 10%"));
  ASSERT_EQ(adoption.winning.size(), 1U);
  EXPECT_EQ(adoption.winning[0].rule, "first-disk-line-wins");
}

TEST_F(AHandWrittenFile, LosesTheDisksThatTheDaemonIgnoresAlready) {
  const Adoption adoption = Adopted("includeAllDisks  10 %\nincludeAllDisks 5%\n");
  EXPECT_EQ(adoption.text, "");
  EXPECT_THAT(adoption.going, SizeIs(2));
  EXPECT_THAT(adoption.coming, Not(Contains(StartsWith("includealldisks"))));
  EXPECT_THAT(adoption.winning, IsEmpty());
}

TEST_F(AHandWrittenFile, ShowsNoSecretsInWords) {
  const Adoption adoption = Adopted("rocommunity hidden1\nrocommunity hidden2 192.0.2.1\nhidden3 hidden4\n");
  for (const std::vector<std::string>& lines : {adoption.becoming, adoption.going, adoption.staying, adoption.coming}) {
    EXPECT_THAT(lines, testing::Each(Not(HasSubstr("hidden"))));
  }
  EXPECT_THAT(adoption.staying, Contains("what the daemon does not know: line 3"));
}

TEST_F(AHandWrittenFile, HasNoSectionYet) {
  EXPECT_THROW(Adopted("# Halvoren Section Start\n# Halvoren Section End\n"), AdoptError);
  EXPECT_THROW(Adopted(std::string("\xff\xfe#\0\n\0", 6)), AdoptError);
}

}  // namespace
}  // namespace devhost
