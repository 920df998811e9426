#include "drivers/localsnmpd/KeptData.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using drivers::SelectKeptData;

const std::string kUser =
    "usmUser 1 3 0x80001f8880aa \"bob\" \"bob\" NULL .1.3.6.1.6.3.10.1.1.3 0x12 .1.3.6.1.6.3.10.1.2.4 0x12 \"\"\n";
const std::string kEngine = "engineBoots 3\noldEngineID 0x80001f88801e2a5077\n";

TEST(KeptData, HoldsUsersEngineAndSystem) {
  EXPECT_EQ(kUser + kEngine +
                "psyscontact Ada #1\npsyslocation k\xc3\xbc"
                "che\npsysname n\npauthtrapenable 1\n",
            SelectKeptData("#\n# STOP\n\n" + kUser +
                           "\npsyslocation k\xc3\xbc"
                           "che\npsyscontact Ada #1\npsysname n\n" +
                           "pauthtrapenable 1\nsetserialno 5\n\n" + kEngine + "ifXTable .1 14:0 18:0x $\n"));
}

TEST(KeptData, HoldsNothingThatASetTextBroughtWithIt) {
  const std::string brought = "extend evil /bin/sh\nagentaddress 161\nagentuser nobody\n[snmp] persistentDir /tmp\n" +
                              kUser + "engineBoots 2147483647\noldEngineID 0x8000000000aa\nincludeFile /tmp/x\n";
  EXPECT_EQ(kEngine + "psyscontact x\n", SelectKeptData("psyscontact x\n" + brought + kEngine));
  EXPECT_EQ(kUser + kEngine + "psyscontact x\n", SelectKeptData(kUser + "psyscontact x\n" + brought + kEngine));
}

TEST(KeptData, HoldsNoLineWithAWrongCharacter) {
  for (const std::string text : {"a\rb", "a\vb", "a\x7f", "a\x1b[2J", ""}) {
    EXPECT_EQ(kEngine, SelectKeptData("psyscontact " + text + "\n" + kEngine));
  }
  EXPECT_EQ(kEngine, SelectKeptData("psyscontact " + std::string(256, 'a') + "\n" + kEngine));
  EXPECT_EQ(kEngine, SelectKeptData("usmUser 1 3 [snmp]\n" + kEngine));
  EXPECT_EQ(kEngine, SelectKeptData("usmUser 1 \r\n" + kEngine));
  EXPECT_EQ(kEngine, SelectKeptData("pauthtrapenable 1 2\n" + kEngine));
  EXPECT_EQ(kEngine, SelectKeptData(" psysname x\nPSYSNAME x\npsysnamex x\n" + kEngine));
}

TEST(KeptData, IsNothingWithoutAWholeEngine) {
  for (const std::string engine :
       {"", "engineBoots 3\n", "oldEngineID 0x80001f88801e2a5077\n", "engineBoots 3\noldEngineID 0x80001f88801e2a5077",
        "engineBoots -1\noldEngineID 0x80001f88801e\n", "engineBoots 3\noldEngineID x80001f88801e\n",
        "engineBoots 3\noldEngineID 0x8000\n"}) {
    EXPECT_EQ("", SelectKeptData(kUser + "psysname x\n" + engine)) << engine;
  }
}

}  // namespace
