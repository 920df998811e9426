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

struct Line {
  const char* line;
  const char* shown;
};

class AComment : public testing::TestWithParam<Line> {};

TEST_P(AComment, IsShownAsFarAsNoDirectiveIsNear) {
  EXPECT_EQ(Shown(GetParam().line), GetParam().shown);
}

constexpr Line Whole(const char* line) {
  return {line, line};
}

INSTANTIATE_TEST_SUITE_P(Explains, AComment,
                         testing::Values(Whole("# Kitchen, left of the door"), Whole("#"), Whole("####"),
                                         Whole("   # sysLocation Kitchen"), Whole("#sysLocaton Kitchen"),
                                         Whole("# Read-only access to the view"),
                                         Whole("# SECTION: Monitor Various Aspects of the Running Host"),
                                         Whole("# K\xC3\xBC"
                                               "che \xE2\x80\x93 north"),
                                         Whole("# \xD0\xBA\xD1\x83\xD1\x85\xD0\xBD\xD1\x8F \xE5\x8E\xA8\xE6\x88\xBF")));

INSTANTIATE_TEST_SUITE_P(
    IsADirective, AComment,
    testing::Values(Line{"#rocommunity public", "#rocommunity "}, Line{" ## # rocommunity public", " ## # rocommunity "},
                    Line{"# rocomunity public", "# rocomunity "}, Line{"#- \"rwcommunity\" public", "#- \"rwcommunity"},
                    Line{"# createUser me SHA passphrase", "# createUser "}, Line{"# extend x public", "# extend "},
                    Line{"# sh x public", "# sh "}, Line{"# community=public", "# community"}));

INSTANTIATE_TEST_SUITE_P(
    IsLikeADirective, AComment,
    testing::Values(Line{"# rocomunty public", "# "}, Line{"# r0c0mmunity public", "# "},
                    Line{"#exctend x public", "#exctend "}, Line{"# rocommunity_old public", "# "},
                    Line{"# rocommunitypublic", "# "}, Line{"# r\xD0\xBE\xD1\x81\xD0\xBEmmunity public", "# "},
                    Line{"# \xEF\xBD\x92\xEF\xBD\x8F\xEF\xBD\x83\xEF\xBD\x8F\xEF\xBD\x8D\xEF\xBD\x8D\xEF\xBD\x95\xEF\xBD\x8E"
                         "\xEF\xBD\x89\xEF\xBD\x94\xEF\xBD\x99 public",
                         "# "}));

INSTANTIATE_TEST_SUITE_P(SpeaksOfSecrets, AComment,
                         testing::Values(Line{"# the community public", "# "}, Line{"# public is the community", "# "},
                                         Line{"# passphrase geheim", "# passphrase "},
                                         Line{"# Passwort: geheim", "# Passwort"},
                                         Line{"# communities are one, two", "# communities "},
                                         Line{"# it was: rocommunity public", "# "}, Line{"# try snmpget -c public", "# "}));

INSTANTIATE_TEST_SUITE_P(IsNotUnderstood, AComment,
                         testing::Values(Line{"# Kitchen\rrocommunity public", ""}, Line{"#\xC2\xA0rocommunity public", ""},
                                         Line{"# rocommunity\xC2\xA0public", ""},
                                         Line{"# K\xFC"
                                              "che",
                                              ""}));

class FreeText : public testing::TestWithParam<Line> {};

TEST_P(FreeText, IsShownUpToWhatLooksLikeASecretsPlace) {
  EXPECT_EQ(ShownOfFreeText(GetParam().line), GetParam().shown);
}

INSTANTIATE_TEST_SUITE_P(Explains, FreeText,
                         testing::Values(Whole("cannot start the daemon: somebody else has udp:127.0.0.1:161"),
                                         Whole("the parameter community is missing"),
                                         Whole("needed: target, community, port"), Whole("snmpget ended with status 1"),
                                         Whole("snmpd.conf:12: Error"), Whole("the value 5"),
                                         Whole("allowed are sysName, communityRead, communityWrite"),
                                         Whole("access is denied"), Whole("sh ended with status 3"), Whole("to extend x"),
                                         Whole("has no value: write NAME=VALUE"), Whole("")));

INSTANTIATE_TEST_SUITE_P(
    HoldsAPlace, FreeText,
    testing::Values(Line{"line 3 is \"rocommunity public\"", "line 3 is \"rocommunity "},
                    Line{"line 3 is ROCOMUNITY: public", "line 3 is ROCOMUNITY"},
                    Line{"line 3 is rocomunty public", "line 3 is "}, Line{"community=public", "community"},
                    Line{"{\"communityRead\": \"public\"}", "{\"communityRead"},
                    Line{"<snmpCommunityReadSetting>public<", "<snmpCommunityReadSetting"},
                    Line{"<setting name=\"communityRead\" value=\"public\"/>", "<setting name=\"communityRead\" value"},
                    Line{"passphrase: secret", "passphrase"},
                    Line{"sh -c '/usr/bin/snmpget -v2c -c public'", "sh -c '/usr/bin/snmpget "},
                    Line{"proxy\r-c public", "proxy"}, Line{"+ extend x public", "+ extend "},
                    Line{"proxy -v 1 -c public", "proxy "}));

class TextOfOthers : public testing::TestWithParam<Line> {};

TEST_P(TextOfOthers, IsShownUpToAWordForASecret) {
  const std::string line = GetParam().line;
  EXPECT_EQ(line.substr(0, ShownLengthOfFreeText(line, WrittenBy::Others)), GetParam().shown);
}

INSTANTIATE_TEST_SUITE_P(Lines, TextOfOthers,
                         testing::Values(Whole("copied to udp:127.0.0.1:161"), Whole("sysName is kitchen"),
                                         Line{"TRAP2, SNMP v2c, community public", "TRAP2, SNMP v2c, community "},
                                         Line{"community public was read", "community "},
                                         Line{"read the passphrase geheim", "read the passphrase "},
                                         Line{"rocommunity public", "rocommunity "}));

TEST(AText, IsNotPlainWhenItIsInAnEncodingOfSeveralBytes) {
  EXPECT_EQ(WhyNotPlain("rocommunity x\n\xFC"), "");
  EXPECT_EQ(WhyNotPlain(""), "");
  EXPECT_EQ(WhyNotPlain("\xFF\xFEr"), "it begins with a byte order mark of UTF-16");
  EXPECT_EQ(WhyNotPlain("\xFE\xFFr"), "it begins with a byte order mark of UTF-16");
  EXPECT_EQ(WhyNotPlain(std::string("r\0o", 3)), "it holds a NUL byte");
}

}  // namespace
}  // namespace devhost
