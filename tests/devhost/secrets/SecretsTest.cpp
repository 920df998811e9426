#include "devhost/secrets/Secrets.h"

#include <gmock/gmock.h>

namespace devhost {
namespace {

using testing::ElementsAre;

TEST(ALine, IsMaskedInPlaceAndToItsEndWhenItIsUnclear) {
  EXPECT_EQ(MaskConfigLine("rocommunity public default"), "rocommunity ***** default");
  EXPECT_EQ(MaskConfigLine("rocommunity \"public default"), "rocommunity *****");
  EXPECT_EQ(MaskConfigLine(""), "");
}

TEST(AConfiguration, KeepsItsLinesAsTheyEnd) {
  EXPECT_EQ(MaskConfigText("\nrocommunity a\r\n\n#x\nrwcommunity b"), "\nrocommunity *****\r\n\n#x\nrwcommunity *****");
  EXPECT_EQ(MaskConfigText("rocommunity a\n"), "rocommunity *****\n");
  EXPECT_EQ(MaskConfigText(""), "");
  EXPECT_EQ(MaskConfigText("\n"), "\n");
}

TEST(Xml, IsMaskedInElementsAttributesAndConfigurations) {
  EXPECT_EQ(MaskXml("<a community=\"x\"><community>y</community><file>rocommunity z</file></a>"),
            "<a community=\"*****\"><community>*****</community><file>rocommunity *****</file></a>");
}

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

TEST(TheSecretsOfACommandLine, AreThoseOfAShellsCommand) {
  EXPECT_THAT(SecretsInCommandLine({"sh", "-c", "snmpget -v2c -c kitchen localhost sysName.0"}), ElementsAre("kitchen"));
}

}  // namespace
}  // namespace devhost
