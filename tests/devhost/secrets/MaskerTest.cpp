#include "devhost/secrets/Masker.h"

#include <gtest/gtest.h>

namespace devhost {
namespace {

TEST(ASecret, IsHiddenWhateverItsLengthUnlessItIsEmpty) {
  Masker masker(false);
  EXPECT_EQ(masker.Secret("x"), "*****");
  EXPECT_EQ(masker.Secret(" "), "*****");
  EXPECT_EQ(masker.Secret(""), "");
  EXPECT_EQ(masker.SettingValue("communityRead", "x"), "*****");
  EXPECT_EQ(masker.SettingValue("comunityRead", "x"), "*****");
  EXPECT_EQ(masker.SettingValue("sysName", "x"), "x");
}

TEST(ASecretThatHasComeBy, IsHiddenInFreeText) {
  Masker masker(false);
  EXPECT_EQ(masker.Text("they say hidden1"), "they say hidden1");
  masker.Secret("hidden1");
  masker.SettingValue("communityRead", "hidden2");
  masker.Fields({{"target", "10.0.0.5"}, {"community", "hidden3"}});
  masker.Xml("<snmpCommunityReadSetting>hidden4</snmpCommunityReadSetting>");
  masker.Config("rwcommunity hidden5 default -V systemview\n");
  masker.CommandLine({"snmpget", "-v2c", "-c", "hidden6", "host"});
  masker.Xml("<LocalSnmpd><known>rocommunity%0Dhidden7</known></LocalSnmpd>");
  EXPECT_EQ(masker.Text("hidden1 hidden2 hidden3 hidden4 hidden5 hidden6 hidden7, default systemview host 10.0.0.5"),
            "***** ***** ***** ***** ***** ***** *****, default systemview host 10.0.0.5");
}

TEST(FreeText, IsHiddenBehindWhatLooksLikeASecretsPlace) {
  const Masker masker(false);
  EXPECT_EQ(masker.Text("one\nline 2 is rocommunity x y\n\nthree"), "one\nline 2 is rocommunity *****\n\nthree");
  EXPECT_EQ(masker.Text("community=x"), "community *****");
  EXPECT_EQ(masker.Text("rocommunity"), "rocommunity");
  EXPECT_EQ(masker.Text(std::string("r\0o\0", 4) + "\nx"), "*****\nx");
  EXPECT_EQ(masker.Text(""), "");
}

TEST(AConfiguration, IsShownLineByLine) {
  Masker masker(false);
  EXPECT_EQ(masker.Config("# The kitchen\n\nsysName kitchen\nrocommunity  x default\r\n[snmp] a\nrocommunity \ntrap2sink:x"),
            "# The kitchen\n\nsysName kitchen\nrocommunity  *****\n*****\nrocommunity \ntrap2sink *****");
  EXPECT_EQ(masker.Config("sysName y\n"), "sysName y\n");
  EXPECT_EQ(masker.Config("\n"), "\n");
  EXPECT_EQ(masker.Config(""), "");
}

TEST(AConfiguration, HidesItsSecretsInItsOtherLinesToo) {
  Masker masker(false);
  EXPECT_EQ(masker.Config("sysContact ask for hidden1\nrocommunity hidden1\n"),
            "sysContact ask for *****\nrocommunity *****\n");
}

TEST(WhatIsHarmless, HidesWholeSecretsAndWhatTheirLineFeedsMakeOfThem) {
  Masker masker(false);
  masker.Secret("kitchen door");
  EXPECT_EQ(masker.Config("sysName kitchen\nsysContact at the kitchen door\n"),
            "sysName kitchen\nsysContact at the *****\n");
  EXPECT_EQ(masker.SettingValue("sysName", "kitchen"), "kitchen");
  EXPECT_EQ(masker.Xml("<snmpSysNameSetting>kitchen</snmpSysNameSetting>"),
            "<snmpSysNameSetting>kitchen</snmpSysNameSetting>");
  EXPECT_EQ(masker.Xml("<Fail>in the kitchen door</Fail>"), "<Fail>in the *****</Fail>");
  masker.Secret("one\nsysLocation hidden");
  EXPECT_EQ(masker.Config("rocommunity  one\nsysLocation hidden\n"), "rocommunity  *****\nsysLocation *****\n");
}

TEST(AConfiguration, HidesALineThatMayContinueAnother) {
  Masker masker(false);
  EXPECT_EQ(masker.Config("rocommunity \\\nmaster hidden\nmaster x"), "rocommunity *****\n*****\nmaster x");
}

TEST(AConfiguration, TeachesNothingFromItsComments) {
  Masker masker(false);
  EXPECT_EQ(masker.Config("# createUser username SHA passphrase\n"), "# createUser *****\n");
  EXPECT_EQ(masker.Text("no username, no passphrase"), "no username, no passphrase");
}

TEST(AConfiguration, TeachesOnlyWhatIsASecret) {
  Masker masker(false);
  masker.Config(
      "extend disks /usr/bin/df -h kitchen\n"
      "monitor -u bobby -o prNames \"process table\" prErrorFlag != 0\n"
      "rouser kitchen authpriv\n"
      "createUser bobby SHA-256 \"hidden1 2\" AES-128 hidden3\n"
      "trap2sink myhost hidden4 162\ntrap2sink  hidden5 162\n"
      "com2sec -Cn context attic network hidden6\n"
      "rwcommunity hidden7 mynet\n"
      "proxy -v 2c -c hidden8 myhost .1\n"
      "extend x \"/bin/snmpget -chidden9 myhost\"\n"
      "comunity hidden10 mynets\n");
  EXPECT_EQ(masker.Text("kitchen prNames 'process table' bobby SHA-256 AES-128 myhost attic network context mynet"),
            "kitchen prNames 'process table' bobby SHA-256 AES-128 myhost attic network context mynet");
  EXPECT_EQ(masker.Text("hidden1 2, hidden3, hidden4, hidden5, hidden6, hidden7, hidden8, hidden9, hidden10, mynets"),
            "*****, *****, *****, *****, *****, *****, *****, *****, *****, *****");
}

TEST(AConfiguration, ThatIsNotPlainTextShowsItsSizeAndWhy) {
  Masker masker(false);
  EXPECT_EQ(masker.Config("\xFF\xFEr"), "(3 bytes, not shown: it begins with a byte order mark of UTF-16)");
}

TEST(AConfiguration, ThatIsNotPlainTextIsLearntAllTheSame) {
  Masker masker(false);
  masker.Config(std::string("trapcommunity   hidden21\n\0\n", 26 + 1));
  EXPECT_EQ(masker.Text("said hidden21"), "said *****");
  std::string wide = "\xFF\xFE";
  for (const char c : std::string("rocommunity hidden22\n")) {
    wide.append(1, c).append(1, '\0');
  }
  masker.Config(wide);
  EXPECT_EQ(masker.Text("said hidden22"), "said *****");
}

TEST(Xml, ShowsTheFieldsThatAreKnownToBeHarmless) {
  Masker masker(false);
  const std::string shown =
      "<managedDevices><managedDevice><snmpSysNameSetting>my kitchen</snmpSysNameSetting><snmpCommunityReadSetting/>"
      "<snmpTrapTargets><trapTarget><target>10.0.0.5</target><community/><port>162</port></trapTarget></snmpTrapTargets>"
      "<deviceId>12</deviceId></managedDevice></managedDevices>";
  EXPECT_EQ(masker.Xml(shown), shown);
  const std::string state =
      "<SNMPState version=\"1\"><variables><variable deviceid=\"1\" name=\"lamp\"/></variables></SNMPState>";
  EXPECT_EQ(masker.Xml(state), state);
}

TEST(Xml, HidesEveryOtherValue) {
  Masker masker(false);
  EXPECT_EQ(masker.Xml("<Status up='a'>b<part c=''>d</part></Status>"),
            "<Status up=\"*****\">*****<part c=\"\">*****</part></Status>");
  EXPECT_EQ(masker.Xml("<trapTarget target='myhost' community='a' port='hidden'/>"),
            "<trapTarget target=\"*****\" community=\"*****\" port=\"*****\"/>");
  EXPECT_EQ(masker.Xml("<setting name='sysName' value='x'/>"), "<setting name=\"sysName\" value=\"x\"/>");
  EXPECT_EQ(masker.Xml("<setting name='communityRead' value='x'>y</setting>"),
            "<setting name=\"communityRead\" value=\"*****\">*****</setting>");
  EXPECT_EQ(masker.Xml("<setting name='hidden' value='x'/>"), "<setting name=\"*****\" value=\"*****\"/>");
  EXPECT_EQ(masker.Xml("<setting name='comunityRead' value='x'/>"), "<setting name=\"comunityRead\" value=\"*****\"/>");
  EXPECT_EQ(masker.Xml("<known a='b'>-\nsysName x\n-</known>"), "<known _____=\"*****\">(13 bytes)</known>");
  EXPECT_EQ(masker.Xml("<daemon pending='true'/>"), "<daemon pending=\"true\"/>");
}

TEST(Xml, HidesNamesThatCannotBeThereInWhatIsKnown) {
  Masker masker(false);
  EXPECT_EQ(masker.Xml("<snmpCommunityReadSetting><hidden x=''/></snmpCommunityReadSetting>"),
            "<snmpCommunityReadSetting><_____ _____=\"\"/></snmpCommunityReadSetting>");
}

TEST(Xml, HidesItsSecretsInFrontOfTheirPlaceToo) {
  Masker masker(false);
  EXPECT_EQ(masker.Xml("<settings><Fail>hidden is wrong</Fail><community>hidden</community></settings>"),
            "<settings><Fail>***** is wrong</Fail><community>*****</community></settings>");
}

TEST(Xml, IsLaidOutAsAskedAndWrittenAnew) {
  Masker masker(false);
  EXPECT_EQ(masker.Xml("<filePath>\n1&#x32;</filePath>", XmlStyle::Compact), "<filePath>\n12</filePath>");
  EXPECT_EQ(masker.Xml("<counts><count operation='CopyTo' value='1'/></counts>", XmlStyle::Indented),
            "<counts>\n  <count operation=\"CopyTo\" value=\"1\"/>\n</counts>");
}

TEST(WhatIsNotXml, ShowsItsSize) {
  Masker masker(false);
  EXPECT_EQ(masker.Xml("<a><community>hidden"), "***** (20 bytes, not XML)");
  EXPECT_EQ(masker.Text("hidden"), "*****");
  EXPECT_EQ(masker.Xml(""), "");
}

TEST(ASwitch, IsShownWhenItIsOne) {
  Masker masker(false);
  EXPECT_EQ(masker.SettingValue("enabled", "true"), "true");
  EXPECT_EQ(masker.SettingValue("trapTargets", "12"), "12");
  EXPECT_EQ(masker.SettingValue("enabled", "hidden"), "*****");
  EXPECT_EQ(masker.Xml("<deviceId>12</deviceId>"), "<deviceId>12</deviceId>");
  EXPECT_EQ(masker.Xml("<deviceId>hidden</deviceId>"), "<deviceId>*****</deviceId>");
  EXPECT_EQ(masker.Xml("<count operation='hidden' value='hidden'/>"), "<count operation=\"*****\" value=\"*****\"/>");
}

TEST(ACommand, ShowsTheParametersThatAreKnownToBeHarmless) {
  Masker masker(false);
  EXPECT_EQ(masker.Fields({{"name", "communityRead"}, {"value", "x"}}),
            (Parameters{{"name", "communityRead"}, {"value", "*****"}}));
  EXPECT_EQ(masker.Fields({{"name", "hidden"}, {"value", "communityRead"}}),
            (Parameters{{"name", "*****"}, {"value", "*****"}}));
  EXPECT_EQ(masker.Fields({{"name", "sysName"}, {"value", "kitchen"}}),
            (Parameters{{"name", "sysName"}, {"value", "kitchen"}}));
  EXPECT_EQ(masker.Fields({{"deviceId", "12"}, {"greeting", "hello"}, {"xml", "<community>x</community>"}}),
            (Parameters{{"deviceId", "12"}, {"greeting", "*****"}, {"xml", "<community>*****</community>"}}));
}

TEST(ACommandLine, OfAnSnmpProgramShowsOptionsNumbersAndAddresses) {
  Masker masker(false);
  EXPECT_EQ(
      masker.CommandLine({"snmpget", "-v2c", "-c", "my house", "-On", "-m", "", "-t", "1", "udp:127.0.0.1:161", ".1.3.6"}),
      "snmpget -v2c -c '***** *****' -On -m '' -t 1 udp:127.0.0.1:161 .1.3.6");
  EXPECT_EQ(masker.CommandLine({"/usr/bin/snmpset", "-chidden", "-c", "1.2.3", "host", ".1.3.6", "s", "x"}),
            "/usr/bin/snmpset ***** -c ***** ***** .1.3.6 ***** *****");
  EXPECT_EQ(masker.CommandLine({"timeout", "5", "snmpwalk", "-v", "3", "-A", "a", "-a", "SHA", "-c"}),
            "timeout 5 snmpwalk -v 3 -A ***** -a SHA -c");
}

TEST(ACommandLine, OfAShellIsReadLikeOneOfAnSnmpProgram) {
  Masker masker(false);
  EXPECT_EQ(masker.CommandLine({"sh", "-c", "cd x; P=hidden snmpget -v2c -c 'my house' h"}),
            "sh -c '***** ***** ***** snmpget -v2c -c ***** ***** *****'");
  EXPECT_EQ(masker.CommandLine({"./snmpget.sh", "-c", "hidden23"}), "./snmpget.sh -c *****");
}

TEST(ACommandLine, OfAnotherProgramShowsNoWordButItself) {
  Masker masker(false);
  EXPECT_EQ(masker.CommandLine({"/usr/bin/env", "hidden", "-i", "10", "10.0.0.5"}), "/usr/bin/env ***** -i 10 10.0.0.5");
  EXPECT_EQ(masker.CommandLine({"curl", "-u", "hidden", "-phidden", "--user=hidden"}), "curl -u ***** ***** *****");
  EXPECT_EQ(masker.CommandLine({"curl", "-u", "1000"}), "curl -u *****");
  EXPECT_EQ(masker.Text("a hidden door"), "a hidden door");
}

TEST(AText, ThatIsExpectedIsShownWhenItSaysNothing) {
  const Masker masker(false);
  EXPECT_EQ(masker.Expected("true"), "true");
  EXPECT_EQ(masker.Expected("the file was written"), "the file was written");
  EXPECT_EQ(masker.Expected("the file was written to kitchen/x1"), "the file was written to *****");
  EXPECT_EQ(masker.Expected("hidden"), "*****");
}

TEST(AMasker, ThatWasAskedToShowSecretsHidesNothing) {
  Masker masker(true);
  EXPECT_TRUE(masker.ShowsSecrets());
  EXPECT_EQ(masker.Secret("hidden"), "hidden");
  EXPECT_EQ(masker.SettingValue("communityRead", "hidden"), "hidden");
  EXPECT_EQ(masker.Fields({{"community", "hidden"}}), (Parameters{{"community", "hidden"}}));
  EXPECT_EQ(masker.Xml("<community>hidden"), "<community>hidden");
  EXPECT_EQ(masker.Config("rocommunity hidden"), "rocommunity hidden");
  EXPECT_EQ(masker.CommandLine({"snmpget", "-c", "hidden"}), "snmpget -c hidden");
  EXPECT_EQ(masker.Text("rocommunity hidden"), "rocommunity hidden");
}

TEST(AShortCommunity, IsMaskedWhereverItIsAWordOfALine) {
  Masker masker(false);
  EXPECT_EQ(masker.Config("rocommunity ab\nsysContact ab\nsysName cab\nsysLocation of ab, here\n"),
            "rocommunity *****\nsysContact *****\nsysName cab\nsysLocation of *****, here\n");
  EXPECT_EQ(masker.Text("refused: ab", WrittenBy::Others), "refused: *****");
  EXPECT_EQ(masker.Sentence("ab is \"ab\""), "ab is \"*****\"");
}

TEST(AShortCommunity, IsLearntFromSettingsAndDirectives) {
  for (const char* const config :
       {"com2sec me default ab\n", "trapsink 10.0.0.1 ab 162\n", "trapsess -v 2c -c ab 10.0.0.1\n",
        "createUser bob MD5 ab DES cd\n", "authcommunity log ab\n", "rwcommunity6 \"ab\" default\n"}) {
    Masker masker(false);
    masker.Config(config);
    EXPECT_EQ(masker.Text("ab", WrittenBy::Others), "*****") << config;
    EXPECT_EQ(masker.Text("me log bob MD5 DES 162 1", WrittenBy::Others), "me log bob MD5 DES 162 1") << config;
  }
  Masker masker(false);
  masker.Xml("<managedDevice><snmpCommunityReadSetting>ab</snmpCommunityReadSetting></managedDevice>");
  masker.SettingValue("communityWrite", "cd");
  EXPECT_EQ(masker.Text("ab cd", WrittenBy::Others), "***** *****");
}

// Otherwise each "1" that a driver's own field holds would be hidden in every line.
TEST(AShortText, ThatMayBeAnythingIsNotLearnt) {
  Masker masker(false);
  masker.Xml("<config index='1'><other>ab</other></config>");
  masker.Config("unheardOf 1\n");
  EXPECT_EQ(masker.Text("1 ab", WrittenBy::Others), "1 ab");
}

}  // namespace
}  // namespace devhost
