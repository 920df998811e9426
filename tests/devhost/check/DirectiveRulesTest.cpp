// What the rules of DirectiveRules.cpp find beside their examples.
#include <gmock/gmock.h>

#include "devhost/commands/Findings.h"
#include "tests/devhost/check/Examples.h"

namespace devhost {
namespace {

using testing::HasSubstr;
using testing::Not;
using Lines = std::vector<std::size_t>;

TEST(AnUnknownDirective, IsNeverQuoted) {
  for (const char* const line :
       {"rocommunity=secret-word", "rocommunity\xC2\xA0secret-word", "rocommunity:secret-word x", "secret-word",
        "trap2sinksecret-word x", "createuser\xE2\x80\x8Bsecret-word", "\"rocommunity secret-word\"", "[secret-word"}) {
    const std::vector<Finding> findings = Judged(std::string("rouser  boss\n") + line + "\n", "snmpd.conf", true);
    ASSERT_EQ(findings.size(), 1U) << line;
    EXPECT_EQ(findings[0].rule, "unknown-directive") << line;
    EXPECT_THAT(FindingText(findings[0]), Not(HasSubstr("secret-word"))) << line;
  }
}

TEST(AnUnknownDirective, IsJudgedByTheListOfTheInstalledDaemon) {
  DirectiveNames names;
  names.daemon = {"rocommunity", "greeting"};
  Circumstances circumstances;
  circumstances.directives = &names;
  EXPECT_TRUE(Judged("rocommunity  reader\ngreeting  hello\n", "snmpd.conf", false, circumstances).empty());
  const std::vector<Finding> findings = Judged("rocommunity  reader\ngreting  hello\n", "", false, circumstances);
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_THAT(findings[0].reason, HasSubstr("did you mean greeting?"));
}

TEST(AnUnknownDirective, IsNotSaidToBeUnknownForItsByteOrderMark) {
  EXPECT_EQ(LinesFound("unknown-directive", "\xEF\xBB\xBFrocommunity  reader\n"), Lines());
}

TEST(AFileOfUnknownDirectives, GivesAThousandFindingsAndACount) {
  std::string text = "rocommunity  reader\n";
  for (int count = 0; count != 1500; ++count) {
    text += "greeting  hello\n";
  }
  EXPECT_EQ(LinesFound("unknown-directive", text).size(), 1001U);
  EXPECT_THAT(Judged(text).back().reason, HasSubstr("500 more findings"));
}

TEST(APassphrase, IsFoundWhereverItStands) {
  for (const char* const line :
       {"SHA phrase", "SHA phrase AES", "SHA -m 0x00 AES phrase", "SHA -l 0x00 AES phrase", "SHA phrase AES -m 0x00"}) {
    EXPECT_EQ(LinesFound("plain-passphrase", std::string("createUser boss ") + line), Lines{1}) << line;
    EXPECT_EQ(LinesFound("plain-passphrase", std::string("createuser -e 0x8000 boss ") + line), Lines{1}) << line;
  }
  for (const char* const line : {"", "SHA", "SHA -m 0x00", "SHA -l 0x00 AES", "SHA -m 0x00 AES -l 0x00"}) {
    EXPECT_EQ(LinesFound("plain-passphrase", std::string("createUser boss ") + line), Lines()) << line;
  }
}

TEST(DirectivesThatNoRuleJudges, AreCountedByWhetherTheDaemonGetsThem) {
  Report report("snmpd.conf", false);
  const Unjudged unjudged = JudgeText(
      "load 1\nproc sshd\nextend x /bin/true\nsysName  box\nrocommunity  reader\nbogus  x\n[snmp] mibs x\n# load 1\n",
      report);
  EXPECT_EQ(unjudged.forDaemon, 2U);
  EXPECT_EQ(unjudged.others, 1U);
}

}  // namespace
}  // namespace devhost
