#include "devhost/secrets/ConfigSecrets.h"

#include <gtest/gtest.h>

#include <string>

namespace devhost {
namespace {

std::string Shown(const std::string& line) {
  return line.substr(0, ShownLength(line));
}

std::string ShownOfFreeText(const std::string& line) {
  return line.substr(0, ShownLengthOfFreeText(line));
}

TEST(AHarmlessDirective, IsShownWhole) {
  for (const char* const line :
       {"sysLocation Kitchen, left of the door", "  SYSCONTACT \"Ada\" <ada@example.org>",
        "sysname K\xC3\xBC"
        "che \xE2\x80\x93 north",
        "agentAddress udp:127.0.0.1:161,[::1]", "view all included .1 80", "\tdisk / 10%", "master", ""}) {
    EXPECT_EQ(Shown(line), line);
  }
}

TEST(AnotherDirective, IsShownByItsNameAlone) {
  EXPECT_EQ(Shown("rocommunity  public default"), "rocommunity  ");
  EXPECT_EQ(Shown(" trap2sink\t10.0.0.5 public 162"), " trap2sink\t");
  EXPECT_EQ(Shown("extend up /usr/bin/snmpget -c public h"), "extend ");
  EXPECT_EQ(Shown("rocommunity: public"), "rocommunity");
  EXPECT_EQ(Shown("rocommunity=public"), "rocommunity");
  EXPECT_EQ(Shown("rouser bob"), "rouser ");
}

TEST(AMisspeltDirective, IsShownByItsNameAlone) {
  EXPECT_EQ(Shown("rocomunity public"), "rocomunity ");
  EXPECT_EQ(Shown("syslocaton public"), "syslocaton ");
}

TEST(ALineThatIsNoDirective, IsNotShown) {
  for (const char* const line : {"public", "[snmp] defCommunity public", "\"rocommunity\" public", "ro\\community public",
                                 "\xEF\xBB\xBFrocommunity public", "\xC2\xA0rocommunity public", "-rocommunity public"}) {
    EXPECT_EQ(Shown(line), "") << line;
  }
}

TEST(AHarmlessDirective, IsShownByItsNameAloneWhenTheLineIsNotUnderstood) {
  const std::string name = "sysLocation ";
  for (const std::string rest :
       {"x\ry", "x\r", "x\x01", "x\x7F", "x\\", "x\xA0", "x\xC2\xA0y", "x\xC0\xAFy", "x\xED\xA0\x80", "x\xE2\x80\x8By",
        "x\xE2\x80\xA8y", "x\xC2\x85y", "x\xE3\x80\x80y", "\xEF\xBB\xBFx", "x\xE2\x81\xA0", "x\xF3\xA0\x80\x81"}) {
    EXPECT_EQ(Shown(name + rest), name) << rest;
  }
  EXPECT_EQ(Shown(name + std::string(1100, 'x')), name);
  EXPECT_EQ(Shown("sysLocation\xC2\xA0x"), "sysLocation");
  EXPECT_EQ(Shown(std::string("sysName a\0b", 11)), "sysName ");
}

TEST(AHarmlessDirective, IsCutAtADirectiveInItsValue) {
  EXPECT_EQ(Shown("sysLocation rocommunity public"), "sysLocation rocommunity ");
  EXPECT_EQ(Shown("sysContact ask snmpget -v2c -c public"), "sysContact ask snmpget ");
}

TEST(AComment, IsShownAsFarAsItExplains) {
  for (const char* const line : {"# Kitchen, left of the door", "#", "####", "   # sysLocation Kitchen",
                                 "#sysLocaton Kitchen", "# Read-only access to the view",
                                 "# K\xC3\xBC"
                                 "che \xE2\x80\x93 north"}) {
    EXPECT_EQ(Shown(line), line);
  }
}

TEST(AComment, IsTreatedAsTheDirectiveThatItBeginsLike) {
  EXPECT_EQ(Shown("#rocommunity public"), "#rocommunity ");
  EXPECT_EQ(Shown(" ## # rocommunity public"), " ## # rocommunity ");
  EXPECT_EQ(Shown("# rocomunity public"), "# rocomunity ");
  EXPECT_EQ(Shown("#- \"rwcommunity\" public"), "#- \"rwcommunity");
  EXPECT_EQ(Shown("# createUser me SHA passphrase"), "# createUser ");
  EXPECT_EQ(Shown("# rocommunity\xC2\xA0public"), "# rocommunity");
  EXPECT_EQ(Shown("# it was: rocommunity public"), "# it was: rocommunity ");
  EXPECT_EQ(Shown("# the community=public"), "# the community");
}

TEST(AComment, IsNotShownWhenItIsNotUnderstood) {
  EXPECT_EQ(Shown("# Kitchen\rrocommunity public"), "");
  EXPECT_EQ(Shown("#\xC2\xA0rocommunity public"), "");
  EXPECT_EQ(Shown("# K\xFC"
                  "che"),
            "");
}

TEST(FreeText, IsShownAsFarAsNothingLooksLikeASecretsPlace) {
  for (const char* const line :
       {"cannot start the daemon: somebody else has udp:127.0.0.1:161", "the parameter community is missing",
        "needed: target, community, port", "snmpget ended with status 1", "snmpd.conf:12: Error", "the value 5",
        "allowed are sysName, communityRead, communityWrite", "access is denied", "sh ended with status 3", "to extend x",
        "has no value: write NAME=VALUE", ""}) {
    EXPECT_EQ(ShownOfFreeText(line), line);
  }
}

TEST(FreeText, IsCutAtWhatLooksLikeASecretsPlace) {
  EXPECT_EQ(ShownOfFreeText("line 3 is \"rocommunity public\""), "line 3 is \"rocommunity ");
  EXPECT_EQ(ShownOfFreeText("line 3 is ROCOMUNITY: public"), "line 3 is ROCOMUNITY");
  EXPECT_EQ(ShownOfFreeText("community=public"), "community");
  EXPECT_EQ(ShownOfFreeText("{\"communityRead\": \"public\"}"), "{\"communityRead");
  EXPECT_EQ(ShownOfFreeText("<snmpCommunityReadSetting>public<"), "<snmpCommunityReadSetting");
  EXPECT_EQ(ShownOfFreeText("<setting name=\"communityRead\" value=\"public\"/>"), "<setting name=\"communityRead\" value");
  EXPECT_EQ(ShownOfFreeText("passphrase: secret"), "passphrase");
  EXPECT_EQ(ShownOfFreeText("sh -c '/usr/bin/snmpget -v2c -c public'"), "sh -c '/usr/bin/snmpget ");
  EXPECT_EQ(ShownOfFreeText("proxy\r-c public"), "proxy");
  EXPECT_EQ(ShownOfFreeText("+ extend x public"), "+ extend ");
  EXPECT_EQ(ShownOfFreeText("proxy -v 1 -c public"), "proxy ");
  EXPECT_EQ(ShownOfFreeText("TRAP2, SNMP v2c, community public"), "TRAP2, SNMP v2c, community ");
}

TEST(AText, IsNotPlainWhenItIsInAnEncodingOfSeveralBytes) {
  EXPECT_EQ(WhyNotPlain("rocommunity x\n\xFC"), "");
  EXPECT_EQ(WhyNotPlain(""), "");
  EXPECT_EQ(WhyNotPlain("\xFF\xFEr"), "it begins with a byte order mark of UTF-16");
  EXPECT_EQ(WhyNotPlain("\xFE\xFFr"), "it begins with a byte order mark of UTF-16");
  EXPECT_EQ(WhyNotPlain(std::string("r\0o", 3)), "it holds a NUL byte");
}

}  // namespace
}  // namespace devhost
