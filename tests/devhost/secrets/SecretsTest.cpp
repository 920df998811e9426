#include "devhost/secrets/Secrets.h"

#include <gmock/gmock.h>

#include <chrono>

namespace devhost {
namespace {

using testing::ElementsAre;

struct Example {
  const char* text;
  const char* masked;
};

class ALineOfAConfiguration : public testing::TestWithParam<Example> {};

TEST_P(ALineOfAConfiguration, IsShownWithoutItsSecrets) {
  EXPECT_EQ(MaskConfigLine(GetParam().text), GetParam().masked);
}

TEST_P(ALineOfAConfiguration, IsNotChangedByMaskingItOnceMore) {
  EXPECT_EQ(MaskConfigLine(GetParam().masked), GetParam().masked);
}

constexpr Example kCommunities[] = {
    {"rocommunity  public", "rocommunity  *****"},
    {"  ROcommunity public default -V systemonly \r", "  ROcommunity ***** default -V systemonly \r"},
    {"rocommunity6 public ::1", "rocommunity6 ***** ::1"},
    {"rwcommunity public", "rwcommunity *****"},
    {"rwcommunity6 public", "rwcommunity6 *****"},
    {"rocommunity \"my house\" default", "rocommunity ***** default"},
    {"rocommunity 'my house' default", "rocommunity ***** default"},
    {"rocommunity it's default", "rocommunity ***** default"},
    {"rocommunity a\\ b default", "rocommunity ***** default"},
    {"\"rocommunity\" public", "\"rocommunity\" *****"},
    {"ro\\community public", "ro\\community *****"},
    {"trapcommunity public", "trapcommunity *****"},
    {"authcommunity log,execute,net public", "authcommunity log,execute,net *****"},
    {"com2sec notConfigUser default public", "com2sec notConfigUser default *****"},
    {"com2sec -Cn ctx me 10.0.0.0/8 \"my house\"", "com2sec -Cn ctx me 10.0.0.0/8 *****"},
    {"com2sec6 me ::/0 public", "com2sec6 me ::/0 *****"},
    {"com2secunix me /tmp/x public", "com2secunix me /tmp/x *****"},
    {"smuxpeer .1.3.6.1.4.1.674 pass", "smuxpeer .1.3.6.1.4.1.674 *****"},
    {"defCommunity public", "defCommunity *****"},
    {"[snmp] defCommunity public", "[snmp] defCommunity *****"},
};
INSTANTIATE_TEST_SUITE_P(WithACommunity, ALineOfAConfiguration, testing::ValuesIn(kCommunities));

constexpr Example kTraps[] = {
    {"trap2sink  10.0.0.5  public  162", "trap2sink  10.0.0.5  *****  162"},
    {"trap2sink  10.0.0.5  \"house traps\"  162", "trap2sink  10.0.0.5  *****  162"},
    {"trapsink 10.0.0.5 public", "trapsink 10.0.0.5 *****"},
    {"informsink 10.0.0.5:162 public", "informsink 10.0.0.5:162 *****"},
    {"trap2sink 10.0.0.5", "trap2sink 10.0.0.5"},
    {"trap2sink  10.0.0.5  \"\"  162", "trap2sink  10.0.0.5  \"\"  162"},
    {"trap2sink -name n -tag t 10.0.0.5 public 162", "trap2sink -name n -tag t 10.0.0.5 ***** 162"},
    {"trap2sink    public  162", "trap2sink    *****  *****"},
    {"trap2sink \"my host\" public 162", "trap2sink *****"},
    {"trap2sink my host public 162", "trap2sink my *****"},
    {"trapsess -v 2c -c public 10.0.0.5", "trapsess -v 2c -c ***** 10.0.0.5"},
    {"trapsess -Ci -v2c -cpublic 10.0.0.5", "trapsess -Ci -v2c -c***** 10.0.0.5"},
    {"trapsess -v 3 -u me -a SHA -A \"pass word\" -x AES -X other 10.0.0.5",
     "trapsess -v 3 -u me -a SHA -A ***** -x AES -X ***** 10.0.0.5"},
    {"trapsess -v 3 -3M 0x1234 -3k 0x99 10.0.0.5", "trapsess -v 3 -3M ***** -3k ***** 10.0.0.5"},
    {"proxy -Cn ctx -v 1 -c public 10.0.0.5 .1.3", "proxy -Cn ctx -v 1 -c ***** 10.0.0.5 .1.3"},
};
INSTANTIATE_TEST_SUITE_P(AboutTraps, ALineOfAConfiguration, testing::ValuesIn(kTraps));

constexpr Example kUsers[] = {
    {"createUser me MD5 \"pass word\" DES other", "createUser me MD5 ***** DES *****"},
    {"createUser -e 0x80001f88 me SHA-256 pass AES", "createUser -e 0x80001f88 me SHA-256 ***** AES"},
    {"createUser me -e 0x80001f88 SHA -m 0x1234 AES -l 0x99", "createUser me -e 0x80001f88 SHA -m ***** AES -l *****"},
    {"createUser me pass", "createUser me *****"},
    {"usmUser 1 3 0x80 \"me\" \"me\" NULL .1.3.6.1.6.3.10.1.1.3 0x12 .1.3.6.1.6.3.10.1.2.4 0x34 0x",
     "usmUser 1 3 0x80 \"me\" \"me\" NULL .1.3.6.1.6.3.10.1.1.3 ***** .1.3.6.1.6.3.10.1.2.4 ***** *****"},
    {"defPassphrase pass word", "defPassphrase *****"},
    {"defAuthPassphrase pass", "defAuthPassphrase *****"},
    {"defPrivMasterKey 0x12", "defPrivMasterKey *****"},
    {"defAuthLocalizedKey 0x12", "defAuthLocalizedKey *****"},
};
INSTANTIATE_TEST_SUITE_P(AboutUsers, ALineOfAConfiguration, testing::ValuesIn(kUsers));

// Whoever wrote these may mean more than the daemon reads.
constexpr Example kUnsure[] = {
    {"rocommunity \"my house", "rocommunity *****"},
    {"rocommunity  \"\"bath house\"\"", "rocommunity  *****"},
    {"rocommunity  \"x\" y\"", "rocommunity  *****"},
    {"rocommunity \"my\"house default", "rocommunity *****"},
    {"rocommunity my\thouse", "rocommunity *****"},
    {"rocommunity\tpublic", "rocommunity\t*****"},
    {"rocommunity public default\\ x", "rocommunity *****"},
    {"rocommunity #public", "rocommunity *****"},
    {"trap2sink 10.0.0.5 my house 162", "trap2sink 10.0.0.5 *****"},
    {"trap2sink 10.0.0.5 \"my house 162", "trap2sink 10.0.0.5 *****"},
};
INSTANTIATE_TEST_SUITE_P(ThatIsUnclear, ALineOfAConfiguration, testing::ValuesIn(kUnsure));

constexpr Example kElsewhere[] = {
    {"#rocommunity public", "#rocommunity *****"},
    {"## # rocommunity public default", "## # rocommunity ***** default"},
    {"# before: rocommunity public", "# before: rocommunity *****"},
    {"+rocommunity  public", "+rocommunity  *****"},
    {"kitchen/snmpd.conf:7:  rwcommunity public", "kitchen/snmpd.conf:7:  rwcommunity *****"},
    {"extend up /usr/bin/snmpget -v2c -c public localhost .1", "extend up /usr/bin/snmpget -v2c -c ***** localhost .1"},
    {"sh -c \"snmpwalk -dc public -v2c localhost\"", "sh -c \"snmpwalk -dc ***** -v2c localhost\""},
    {"x=$(snmpget -v3 -A pass -X 'other one' h)", "x=$(snmpget -v3 -A ***** -X ***** h)"},
    {"h [UDP: [127.0.0.1]:1->[127.0.0.1]:2]: TRAP2, SNMP v2c, community house traps",
     "h [UDP: [127.0.0.1]:1->[127.0.0.1]:2]: TRAP2, SNMP v2c, community *****"},
    {"TRAP|UDP|TRAP, SNMP v1, community house traps|.1.3 = 4", "TRAP|UDP|TRAP, SNMP v1, community *****|.1.3 = 4"},
    {"command SetSetting name=communityRead value='my house'", "command SetSetting name=communityRead value=*****"},
    {"settings kitchen communityWrite=public", "settings kitchen communityWrite=*****"},
    {"trapTarget=10.0.0.5 community=\"a\\\" b\" port=162", "trapTarget=10.0.0.5 community=***** port=162"},
    {"name=communityRead value=''", "name=communityRead value=''"},
    {"TRAP|UDP|TRAP, SNMP v1, community |.1.3 = 4", "TRAP|UDP|TRAP, SNMP v1, community |.1.3 = 4"},
};
INSTANTIATE_TEST_SUITE_P(InOtherTexts, ALineOfAConfiguration, testing::ValuesIn(kElsewhere));

constexpr Example kPlain[] = {
    {"", ""},
    {"rocommunity", "rocommunity"},
    {"rocommunity \"\"", "rocommunity \"\""},
    {"# rocommunity: the read community", "# rocommunity: the read community"},
    {"sysContact  Ada \"x\" \\", "sysContact  Ada \"x\" \\"},
    {"rouser authOnlyUser", "rouser authOnlyUser"},
    {"name=sysName value=kitchen", "name=sysName value=kitchen"},
    {"snmpd -c /etc/snmpd.conf -A", "snmpd -c /etc/snmpd.conf -A"},
    {"snmptrapd -c trapd.conf -X", "snmptrapd -c trapd.conf -X"},
    {"grep -c public file", "grep -c public file"},
    {"master agentx", "master agentx"},
};
INSTANTIATE_TEST_SUITE_P(WithoutASecret, ALineOfAConfiguration, testing::ValuesIn(kPlain));

TEST(AConfiguration, KeepsItsLinesAsTheyEnd) {
  EXPECT_EQ(MaskConfigText("\nrocommunity a\r\n\n#x\nrwcommunity b"), "\nrocommunity *****\r\n\n#x\nrwcommunity *****");
  EXPECT_EQ(MaskConfigText("rocommunity a\n"), "rocommunity *****\n");
  EXPECT_EQ(MaskConfigText(""), "");
  EXPECT_EQ(MaskConfigText("\n"), "\n");
}

class APieceOfXml : public testing::TestWithParam<Example> {};

TEST_P(APieceOfXml, IsShownWithoutItsSecrets) {
  EXPECT_EQ(MaskXml(GetParam().text), GetParam().masked);
}

TEST_P(APieceOfXml, IsNotChangedByMaskingItOnceMore) {
  EXPECT_EQ(MaskXml(GetParam().masked), GetParam().masked);
}

constexpr Example kXml[] = {
    {"<a><snmpCommunityReadSetting>my house</snmpCommunityReadSetting><b>my house</b></a>",
     "<a><snmpCommunityReadSetting>*****</snmpCommunityReadSetting><b>my house</b></a>"},
    {"<snmpCommunityWriteSetting >x</snmpCommunityWriteSetting >",
     "<snmpCommunityWriteSetting >*****</snmpCommunityWriteSetting >"},
    {"<trapTarget><target>h</target><community>a&amp;b\n&lt;</community><port/></trapTarget>",
     "<trapTarget><target>h</target><community>*****</community><port/></trapTarget>"},
    {"<community/><community></community><snmpCommunityReadSetting />",
     "<community/><community></community><snmpCommunityReadSetting />"},
    {"<community><![CDATA[a<b]]><x>c</x><!-- d --></community>", "<community>*****</community>"},
    {"<communityCount>12</communityCount>", "<communityCount>12</communityCount>"},
    {"<setting name=\"communityRead\" value=\"my house\" erased=\"false\"/>",
     "<setting name=\"communityRead\" value=\"*****\" erased=\"false\"/>"},
    {"<setting value='x' name='communityWrite'/>", "<setting value='*****' name='communityWrite'/>"},
    {"<setting name=\"communityRead\" value=\"\"/>", "<setting name=\"communityRead\" value=\"\"/>"},
    {"<setting name=\"sysName\" value=\"kitchen\"/>", "<setting name=\"sysName\" value=\"kitchen\"/>"},
    {"<trapTarget target=\"h\" community = \"a>b\" port=\"162\"/>",
     "<trapTarget target=\"h\" community = \"*****\" port=\"162\"/>"},
    {"<file>a\nrocommunity  my\nb</file>", "<file>a\nrocommunity  *****\nb</file>"},
    {"<file>a&#10;rocommunity &quot;my house&quot;&#10;b</file>", "<file>a&#10;rocommunity *****&#10;b</file>"},
    {"<file text=\"rwcommunity my&#10;b\"/>", "<file text=\"rwcommunity *****&#10;b\"/>"},
    {"<log>&lt;community&gt;x&lt;/community&gt;</log>", "<log>&lt;community&gt;*****&lt;/community&gt;</log>"},
    {"<known>rocommunity x\nsysContact Ada &lt;ada@example.org&gt;\nrwcommunity y\n</known>",
     "<known>rocommunity *****\nsysContact Ada &lt;ada@example.org&gt;\nrwcommunity *****\n</known>"},
    {"<known>sysContact &lt;a\ntrap2sink    a&lt;b  162</known>",
     "<known>sysContact &lt;a\ntrap2sink    *****  *****</known>"},
    {"<known>rocommunity%0Bx\nrwcommunity%0Cy 10%25\n</known>",
     "<known>rocommunity%0B*****\nrwcommunity%0C***** 10%25\n</known>"},
    {"<!-- rocommunity x -->", "<!-- rocommunity ***** -->"},
    {"<a>1 < 2 & 3</a>", "<a>1 < 2 & 3</a>"},
    {"", ""},
    {"no XML at all", "no XML at all"}};
INSTANTIATE_TEST_SUITE_P(ThatIsWhole, APieceOfXml, testing::ValuesIn(kXml));

constexpr Example kCut[] = {{"<a><community>sec", "<a><community>*****"},
                            {"<a><community>sec</commu", "<a><community>*****"},
                            {"<a><community></commu", "<a><community></commu"},
                            {"<a><community>", "<a><community>"},
                            {"ret</community><b>x</b>", "*****</community><b>x</b>"},
                            {"<setting name=\"communityRead\" value=\"sec", "<setting name=\"communityRead\" value=\"*****"},
                            {"<setting value=\"sec\" na", "<setting value=\"*****\" na"},
                            {"<trapTarget community=\"sec", "<trapTarget community=\"*****"},
                            {"<", "<"},
                            {"</", "</"},
                            {"<a b", "<a b"}};
INSTANTIATE_TEST_SUITE_P(ThatIsCutOff, APieceOfXml, testing::ValuesIn(kCut));

TEST(ACommandLine, IsShownWithoutTheSecretsBehindItsOptions) {
  EXPECT_THAT(MaskCommandLine({"snmpget", "-v2c", "-c", "my house", "localhost", ".1"}),
              ElementsAre("snmpget", "-v2c", "-c", "*****", "localhost", ".1"));
  EXPECT_THAT(MaskCommandLine({"/usr/bin/snmpset", "-cmy house", "h"}), ElementsAre("/usr/bin/snmpset", "-c*****", "h"));
  EXPECT_THAT(MaskCommandLine({"timeout", "5", "snmpwalk", "-A", "a", "-a", "SHA", "-X", "x"}),
              ElementsAre("timeout", "5", "snmpwalk", "-A", "*****", "-a", "SHA", "-X", "*****"));
  EXPECT_THAT(MaskCommandLine({"snmpget", "-c", ""}), ElementsAre("snmpget", "-c", ""));
  EXPECT_THAT(MaskCommandLine({"snmpget", "-c"}), ElementsAre("snmpget", "-c"));
}

TEST(ACommandLine, IsShownWithoutTheSecretsInAShellsCommand) {
  EXPECT_THAT(MaskCommandLine({"sh", "-c", "snmpget -v2c -c 'my house' localhost\necho rocommunity x >> y"}),
              ElementsAre("sh", "-c", "snmpget -v2c -c ***** localhost\necho rocommunity ***** >> y"));
  EXPECT_THAT(MaskCommandLine({"snmpd", "--rocommunity=public", "-c", "file"}),
              ElementsAre("snmpd", "--rocommunity=*****", "-c", "file"));
}

TEST(ACommandLine, OfAnotherProgramStaysAsItIs) {
  EXPECT_THAT(MaskCommandLine({"grep", "-c", "public", "--color=auto", "file"}),
              ElementsAre("grep", "-c", "public", "--color=auto", "file"));
  EXPECT_THAT(MaskCommandLine({}), ElementsAre());
}

// A line with no end would otherwise be searched once for each of its words.
TEST(ALongLine, IsSearchedOnce) {
  std::string text;
  for (int i = 0; i != 200000; ++i) {
    text += i % 2 == 0 ? "proxy " : "rocommunity rocommunity snmpget a b ";
  }
  const std::string masked = MaskConfigLine(text);
  EXPECT_EQ(MaskConfigLine(masked).size(), masked.size());
}

}  // namespace
}  // namespace devhost
