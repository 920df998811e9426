#include "devhost/secrets/SecretOptions.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace devhost {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// The secrets among the words, each without the part of its word that is not secret.
std::vector<std::string> Secrets(const std::vector<std::string>& words) {
  std::vector<std::string> secrets;
  for (const SecretWord& secret : SecretOptions(words)) {
    secrets.push_back(words.at(secret.index).substr(secret.offset));
  }
  return secrets;
}

TEST(TheSecretsOfOptions, AreCommunitiesAndPassphrases) {
  EXPECT_THAT(Secrets({"-v2c", "-c", "public", "localhost", ".1"}), ElementsAre("public"));
  EXPECT_THAT(Secrets({"-v", "3", "-u", "me", "-a", "SHA", "-A", "first", "-x", "AES", "-X", "second"}),
              ElementsAre("first", "second"));
}

TEST(TheSecretsOfOptions, MayStandInTheWordOfTheirOption) {
  EXPECT_THAT(Secrets({"-cpublic"}), ElementsAre("public"));
  EXPECT_THAT(Secrets({"-dqcpublic"}), ElementsAre("public"));
  EXPECT_THAT(Secrets({"-dqc", "public"}), ElementsAre("public"));
}

TEST(TheSecretsOfOptions, AreKeysBehindTheLetterOfTheirKind) {
  EXPECT_THAT(Secrets({"-3M", "0x12", "-3k", "0x34", "host"}), ElementsAre("0x12", "0x34"));
  EXPECT_THAT(Secrets({"-3", "M", "0x12", "host"}), ElementsAre("0x12"));
}

TEST(TheSecretsOfOptions, AreNotTheValuesOfOtherOptions) {
  EXPECT_THAT(Secrets({"-u", "-c", "me"}), IsEmpty());
  EXPECT_THAT(Secrets({"--c", "x", "-", "c", ""}), IsEmpty());
  EXPECT_THAT(Secrets({"-c"}), IsEmpty());
}

TEST(AnSnmpCommand, IsKnownByItsNameWithOrWithoutItsFolder) {
  for (const char* const word : {"snmpget", "snmpwalk", "/usr/bin/snmpset", "snmpbulkwalk", "snmptrap"}) {
    EXPECT_TRUE(IsSnmpCommand(word)) << word;
  }
}

TEST(AnSnmpCommand, IsNeitherADaemonNorAnotherWord) {
  for (const char* const word : {"snmpd", "/usr/sbin/snmpd", "snmptrapd", "snmp", "snmpget.conf", "grep", "", "snmpget/"}) {
    EXPECT_FALSE(IsSnmpCommand(word)) << word;
  }
}

}  // namespace
}  // namespace devhost
