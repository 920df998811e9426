#include "devhost/secrets/SecretPlaces.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace devhost {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Example {
  const char* text;
  const char* masked;
};

class ALineOfAConfiguration : public testing::TestWithParam<Example> {};

TEST_P(ALineOfAConfiguration, IsShownWithoutItsSecrets) {
  EXPECT_EQ(Masked(GetParam().text, SecretPlaces(GetParam().text)), GetParam().masked);
}

TEST_P(ALineOfAConfiguration, IsNotChangedByMaskingItOnceMore) {
  EXPECT_EQ(Masked(GetParam().masked, SecretPlaces(GetParam().masked)), GetParam().masked);
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

// The author of such a line may mean more than the daemon reads.
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

// Places as texts such as "3-7", to compare and to print them.
std::vector<std::string> Shown(const std::vector<SecretPlace>& places) {
  std::vector<std::string> shown;
  for (const SecretPlace& place : places) {
    shown.push_back(std::to_string(place.begin) + "-" + std::to_string(place.end));
  }
  return shown;
}

TEST(ThePlacesInAText, CountFromItsStartAcrossItsLines) {
  EXPECT_THAT(Shown(SecretPlacesInText("a\nrocommunity x\n\nrwcommunity \"y z\"")), ElementsAre("14-15", "29-34"));
  EXPECT_THAT(Shown(SecretPlacesInText("\n\n")), IsEmpty());
}

TEST(PlacesThatOverlapOrTouch, BecomeOneAndAreSorted) {
  EXPECT_THAT(Shown(MergedPlaces({{5, 7}, {0, 2}, {2, 3}, {6, 9}, {10, 11}})), ElementsAre("0-3", "5-9", "10-11"));
  EXPECT_THAT(Shown(MergedPlaces({{0, 9}, {2, 3}})), ElementsAre("0-9"));
  EXPECT_THAT(Shown(MergedPlaces({})), IsEmpty());
}

TEST(AText, HasTheMaskInsteadOfItsPlaces) {
  EXPECT_EQ(Masked("abcdef", {{0, 1}, {3, 6}}), "*****bc*****");
  EXPECT_EQ(Masked("abc", {}), "abc");
}

// To search to the end of the line for each of its words would take far too long.
TEST(ALongLine, IsSearchedOnce) {
  std::string text;
  for (int i = 0; i != 200000; ++i) {
    text += i % 2 == 0 ? "proxy " : "rocommunity rocommunity snmpget a b ";
  }
  const std::string masked = Masked(text, SecretPlaces(text));
  EXPECT_EQ(Masked(masked, SecretPlaces(masked)), masked);
}

}  // namespace
}  // namespace devhost
