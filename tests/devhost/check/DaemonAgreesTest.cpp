// What the rules assume about the daemon, compared with the real one: with the example of each rule it does what the finding
// says, with the near miss it does not.
#include <gmock/gmock.h>

#include <set>

#include "config/SectionMerge.h"
#include "config/SectionWriter.h"
#include "tests/devhost/check/Examples.h"
#include "tests/devhost/check/ServedFile.h"
#include "tests/e2e/TrapReceiver.h"

namespace devhost {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

constexpr char kPortOfExamples[] = "10162";

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

// The communities of all traps of a daemon that starts and stops with this file, whose trap port is that of the examples.
// `log` receives what the daemon said.
std::vector<std::string> TrapCommunities(const std::string& text, std::string* log = nullptr) {
  e2e::TrapReceiver receiver;
  ServedFile daemon(Replaced(text, kPortOfExamples, receiver.Port()));
  daemon.Stop();
  if (log != nullptr) {
    *log = daemon.Log();
  }
  std::vector<std::string> communities;
  for (const e2e::Trap& trap : receiver.Traps()) {
    communities.push_back(trap.community);
  }
  return communities;
}

bool Holds(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

std::string Written(const managed_section::Settings& settings) {
  return managed_section::Write(managed_section::FixedTexts(), settings, "now");
}

TEST(TheDaemon, ServesAnOldSectionBesideTheNewOne) {
  managed_section::Settings settings;
  settings.communityRead = "fresh";
  settings.sysName = "new";
  const ServedFile daemon(managed_section::Merge(Written(settings), Example("start-marker-without-end")));
  EXPECT_TRUE(daemon.LetsIn("fresh"));
  EXPECT_TRUE(daemon.LetsIn("reader"));
  EXPECT_EQ(daemon.Value(e2e::kSysName), "old");
}

TEST(TheDaemon, ServesASecondSection) {
  const ServedFile daemon(Example("start-marker-again"));
  EXPECT_TRUE(daemon.LetsIn("former"));
  EXPECT_EQ(daemon.Value(e2e::kSysName), "old");
}

TEST(TheDaemon, LetsInACommunityOfAnOldSection) {
  EXPECT_TRUE(ServedFile(Example("old-community")).LetsIn("former"));
}

TEST(TheDaemon, UsesTheLastLineBelowASection) {
  const ServedFile daemon(Example("overrides-section"));
  EXPECT_EQ(daemon.Value(e2e::kSysContact), "Bob");
  EXPECT_EQ(daemon.Value(e2e::kSysName), "other");
  EXPECT_EQ(daemon.Value(e2e::kSysServices), "3");
}

TEST(TheDaemon, UsesTheLastObjectId) {
  const std::string text = Written({}) + "sysObjectID  1.3.6.1.4.1.32473.9\n";
  EXPECT_EQ(LinesFound("overrides-section", text).size(), 1u);
  EXPECT_EQ(ServedFile(text).Value(e2e::kSysObjectId), ".1.3.6.1.4.1.32473.9");
}

TEST(TheDaemon, UsesLinesBelowTheSectionThatIsWrittenAboveThem) {
  managed_section::Settings settings;
  settings.agentXTimeout = "6";
  settings.agentXRetries = "2";
  settings.sysLocation = "Kitchen";
  const ServedFile overridden(managed_section::Merge(Written(settings), Example("will-override-section")));
  EXPECT_EQ(overridden.Value(e2e::kSysLocation), "Attic");
  EXPECT_FALSE(overridden.IsMaster());
  const ServedFile other(managed_section::Merge(Written(settings), "master  yes\nsysServices 72\n"));
  EXPECT_EQ(other.Value(e2e::kSysLocation), "Kitchen");
  EXPECT_TRUE(other.IsMaster());
}

TEST(TheDaemon, ServesTheSecondOfTwoNames) {
  EXPECT_EQ(ServedFile(Example("setting-twice")).Value(e2e::kSysName), "two");
}

TEST(TheDaemon, LetsNobodyInByACommunityInPairsOfQuotes) {
  const ServedFile daemon(Example("community-in-pairs-of-quotes"));
  EXPECT_TRUE(daemon.ShutsOut("two words"));
  EXPECT_TRUE(daemon.ShutsOut("\"two words\""));
  EXPECT_TRUE(daemon.Says("line 2: Error: empty COMMUNITY parameter")) << daemon.Log();
  EXPECT_TRUE(ServedFile(NearMiss("community-in-pairs-of-quotes")).LetsIn("two words"));
}

TEST(TheDaemon, MisreadsACommunityWithAQuoteOrABackslash) {
  const ServedFile daemon(Example("community-misread"));
  EXPECT_TRUE(daemon.LetsIn("it"));
  EXPECT_TRUE(daemon.ShutsOut("it's"));
  EXPECT_TRUE(daemon.LetsIn("ab"));
  EXPECT_TRUE(daemon.ShutsOut("a\\b"));
  EXPECT_TRUE(daemon.LetsIn("my "));
  EXPECT_TRUE(daemon.ShutsOut("my 'own'"));
}

TEST(TheDaemon, ReadsOtherCommunitiesAsTheyAreMeant) {
  const ServedFile daemon(NearMiss("community-misread"));
  for (const char* community : {"i\"t", "two words", "more words"}) {
    EXPECT_TRUE(daemon.LetsIn(community)) << community;
  }
}

TEST(TheDaemon, AnswersToTheTextThatTheRulesPredict) {
  const std::vector<std::string> values = {"it's", "x\\y",      "x\\\\z",     "pub\\",  "'a b",  "\"cd\"",     "e\"f",
                                           "g''h", "\"i's j\"", "\"k\\l m\"", "'n\"o'", "p\\'q", "\"r\\\"s\"", "plain"};
  std::string text;
  for (const std::string& value : values) {
    text += "rocommunity  " + value + "\n";
  }
  const ServedFile daemon(text);
  for (const std::string& value : values) {
    const auto setting = ReadDirective("rocommunity  " + value);
    ASSERT_TRUE(setting);
    EXPECT_TRUE(daemon.LetsIn(AnsweredCommunity(*setting))) << value << " as " << AnsweredCommunity(*setting);
  }
}

TEST(TheDaemon, TakesASecondWordForAnAddress) {
  const ServedFile daemon(Example("community-of-several-words"));
  EXPECT_TRUE(daemon.ShutsOut("two"));
  EXPECT_TRUE(daemon.ShutsOut("two\twords.invalid"));
  EXPECT_TRUE(daemon.Says("line 2: Error: cannot resolve IPv4 source hostname")) << daemon.Log();
  EXPECT_TRUE(ServedFile("rocommunity  two\t127.0.0.2\n").ShutsOut("two"));
  EXPECT_TRUE(ServedFile("rocommunity  two\t127.0.0.1\n").LetsIn("two"));
}

TEST(TheDaemon, CutsALongCommunity) {
  EXPECT_TRUE(ServedFile(Example("community-too-long")).LetsIn(std::string(255, 'x')));
  EXPECT_TRUE(ServedFile(NearMiss("community-too-long")).LetsIn(std::string(255, 'x')));
}

TEST(TheDaemon, LetsNobodyWriteByTheReadCommunity) {
  EXPECT_EQ(ServedFile(Example("write-community-like-read")).As("reader").Set(e2e::kFailureTraps, "i", "1").error,
            "noAccess");
  EXPECT_EQ(ServedFile(NearMiss("write-community-like-read")).As("writer").Set(e2e::kFailureTraps, "i", "1").error, "");
}

TEST(TheDaemon, UsesTheFirstLineOfACommunity) {
  EXPECT_EQ(ServedFile(Example("first-community-wins")).As("reader").Get(e2e::kSysObjectId).error, "");
  const ServedFile limited(NearMiss("first-community-wins"));
  EXPECT_EQ(limited.As("reader").Get(e2e::kSysObjectId).error, "");
  EXPECT_NE(limited.As("limited").Get(e2e::kSysObjectId).error, "");
  EXPECT_TRUE(limited.LetsIn("limited"));
}

TEST(TheDaemon, LetsInWhereTheFirstLineIsForSomebodyElse) {
  const std::string text = "rocommunity  shared  10.0.0.0/8\nrwcommunity  shared  127.0.0.1\n";
  EXPECT_TRUE(LinesFound("write-community-like-read", text).empty());
  EXPECT_EQ(ServedFile(text).As("shared").Set(e2e::kFailureTraps, "i", "1").error, "");
}

TEST(TheDaemon, TakesWhatFollowsAMissingHostForTheHost) {
  EXPECT_THAT(TrapCommunities(Example("trap-without-target")), ElementsAre("public", "public"));
}

TEST(TheDaemon, TakesATrapPortForTheCommunity) {
  // The host has a port of its own here, since that of the rule's example is one that not everybody may open.
  const std::string text = Replaced(Example("trap-port-as-community"), "127.0.0.1  10162", "127.0.0.1:10162  162");
  EXPECT_EQ(LinesFound("trap-port-as-community", text).size(), 1u);
  EXPECT_THAT(TrapCommunities(text), ElementsAre("162", "162"));
}

TEST(TheDaemon, KnowsNoQuotesAroundATrapCommunity) {
  std::string log;
  EXPECT_THAT(TrapCommunities(Example("trap-community-quoted"), &log), ElementsAre("\"one\"", "\"one\""));
  EXPECT_TRUE(Holds(log, "line 2: Error: cannot create sink: 127.0.0.2")) << log;
  EXPECT_THAT(TrapCommunities(NearMiss("trap-community-quoted")), ElementsAre("it's", "it's"));
}

TEST(TheDaemon, SendsNothingToAWrongPort) {
  const ServedFile daemon(Example("trap-port-wrong"));
  EXPECT_TRUE(daemon.Says("line 2: Error: cannot create sink: 127.0.0.1")) << daemon.Log();
  EXPECT_TRUE(daemon.Says("send_trap: Failure in sendto")) << daemon.Log();
  EXPECT_TRUE(daemon.Says("line 4: Error: cannot create sink: 127.0.0.3")) << daemon.Log();
  EXPECT_TRUE(daemon.Says("line 5: Error: cannot create sink: 127.0.0.4:99999")) << daemon.Log();
  const ServedFile other(NearMiss("trap-port-wrong"));
  EXPECT_FALSE(other.Says("cannot create sink")) << other.Log();
}

TEST(TheDaemon, SendsNothingToAPortWithALeadingZero) {
  EXPECT_EQ(LinesFound("trap-port-wrong", "trap2sink  127.0.0.1  trapper  010162\n").size(), 1u);
  EXPECT_THAT(TrapCommunities("trap2sink  127.0.0.1  trapper  010162\n"), IsEmpty());
}

TEST(TheDaemon, AsksForNoPortBehindAPathOrAnAlias) {
  for (const char* const line : {"trap2sink  unix:/nonexistent/socket  trapper\n", "trap2sink  alias:mine  trapper\n"}) {
    EXPECT_THAT(LinesFound("trap-port-wrong", line), IsEmpty()) << line;
  }
  const ServedFile daemon("[snmp]  alias  mine  udp:127.0.0.1:9\ntrap2sink  alias:mine  trapper\n");
  EXPECT_FALSE(daemon.Says("cannot create sink")) << daemon.Log();
}

TEST(TheDaemon, SendsNothingToATargetWithTwoPorts) {
  std::string log;
  EXPECT_THAT(TrapCommunities(Example("trap-port-twice"), &log), IsEmpty());
  EXPECT_TRUE(Holds(log, "line 2: Error: cannot create sink")) << log;
  EXPECT_THAT(TrapCommunities(NearMiss("trap-port-twice")), ElementsAre("trapper", "trapper"));
}

TEST(TheDaemon, SendsNothingToABareAddressWithAPort) {
  const ServedFile daemon(Example("trap-address-without-brackets"));
  EXPECT_TRUE(daemon.Says("line 2: Error: cannot create sink: ::1")) << daemon.Log();
}

TEST(TheDaemon, SendsNothingWithALongCommunity) {
  EXPECT_THAT(TrapCommunities(Example("trap-community-too-long")), IsEmpty());
  EXPECT_EQ(TrapCommunities(NearMiss("trap-community-too-long")).size(), 2u);
}

TEST(TheDaemon, SendsEachTrapTwiceToATargetThatStandsTwice) {
  EXPECT_THAT(TrapCommunities(Example("trap-target-twice")),
              UnorderedElementsAre("trapper", "trapper", "another", "another"));
}

TEST(TheDaemon, TakesAValueThatBeginsWithHashForAComment) {
  const ServedFile daemon(Example("value-begins-with-hash"));
  EXPECT_TRUE(daemon.ShutsOut("#writer"));
  EXPECT_NE(daemon.Value(e2e::kSysContact), "#1");
  EXPECT_TRUE(daemon.Says("line 2: Error: Blank line following rwcommunity token")) << daemon.Log();
  EXPECT_TRUE(daemon.Says("line 3: Error: Blank line following sysContact token")) << daemon.Log();
  const ServedFile other(NearMiss("value-begins-with-hash"));
  EXPECT_TRUE(other.LetsIn("wri#ter"));
  EXPECT_EQ(other.Value(e2e::kSysContact), "room #1");
}

TEST(TheDaemon, RejectsALineWithoutValue) {
  const ServedFile daemon(Example("value-missing"));
  EXPECT_TRUE(daemon.Says("line 2: Error: Blank line following sysContact token")) << daemon.Log();
  EXPECT_TRUE(daemon.Says("line 3: Error: Blank line following rwcommunity token")) << daemon.Log();
}

TEST(TheDaemon, RejectsALongText) {
  const ServedFile daemon(Example("text-too-long"));
  EXPECT_TRUE(daemon.Says("line 2: Error: sysContact token too long")) << daemon.Log();
  EXPECT_NE(daemon.Value(e2e::kSysContact).substr(0, 2), "xx");
  EXPECT_EQ(ServedFile(NearMiss("text-too-long")).Value(e2e::kSysContact), std::string(255, 'x'));
}

TEST(TheDaemon, RejectsALongDescription) {
  const std::string text = "sysDescr  " + std::string(256, 'x') + "\n";
  EXPECT_EQ(LinesFound("text-too-long", text), std::vector<std::size_t>{1});
  EXPECT_TRUE(ServedFile(text).Says("line 1: Error: sysDescr token too long"));
}

TEST(TheDaemon, RejectsAnObjectIdByNameAndServesZeroServices) {
  const ServedFile daemon(Example("system-value-wrong"));
  EXPECT_TRUE(daemon.Says("line 1: Error: sysobjectid token not a parsable OID")) << daemon.Log();
  EXPECT_EQ(daemon.Value(".1.3.6.1.2.1.1.7.0"), "0");
  EXPECT_TRUE(daemon.Says("line 3: Error: Unsupported")) << daemon.Log();
  const ServedFile other(NearMiss("system-value-wrong"));
  EXPECT_FALSE(other.Says("Error")) << other.Log();
  EXPECT_EQ(other.Value(".1.3.6.1.2.1.1.7.0"), "72");
}

TEST(TheDaemon, KeepsTheFirstLimitOfAllDisks) {
  static constexpr char kLimits[] = ".1.3.6.1.4.1.2021.9.1.5";
  const auto limits = [](const ServedFile& daemon) {
    std::set<std::string> found;
    for (const auto& [object, value] : daemon.As(ServedFile::kAsker).Walk(kLimits)) {
      found.insert(value);
    }
    return found;
  };
  const ServedFile daemon(Example("first-disk-line-wins"));
  EXPECT_THAT(limits(daemon), ElementsAre("10"));
  EXPECT_TRUE(daemon.Says("line 6: Error: includeAllDisks already specified")) << daemon.Log();
  EXPECT_TRUE(daemon.Says("line 7: Error: includeAllDisks already specified")) << daemon.Log();
  // What the values mean.
  for (const char* const value : {"20", "5%", "5 % x", "abc"}) {
    EXPECT_THAT(limits(ServedFile(std::string("includeAllDisks  ") + value + "\n")), ElementsAre("5")) << value;
    EXPECT_EQ(DiskPercent(value), 5) << value;
  }
}

TEST(TheDaemon, LetsNobodyInFromNoHostAndTakesASecondAddressForASubtree) {
  const ServedFile daemon(Example("source-misread"));
  EXPECT_TRUE(daemon.ShutsOut("nobody"));
  EXPECT_FALSE(daemon.LetsIn("half"));
  const ServedFile other(NearMiss("source-misread"));
  EXPECT_TRUE(other.LetsIn("nobody"));
  EXPECT_TRUE(other.LetsIn("half"));
}

TEST(TheDaemon, TakesATypographicQuoteForALetter) {
  const ServedFile daemon(Example("typographic-quote"));
  EXPECT_TRUE(daemon.ShutsOut("reader"));
  EXPECT_TRUE(daemon.LetsIn("\xE2\x80\x9Creader\xE2\x80\x9D"));
  EXPECT_TRUE(ServedFile(NearMiss("typographic-quote")).LetsIn("reader"));
}

TEST(TheDaemon, RejectsATimeoutWithoutNumber) {
  const ServedFile daemon(Example("agentx-timeout"));
  EXPECT_TRUE(daemon.Says("line 2: Error: Blank line following agentXTimeout token")) << daemon.Log();
  EXPECT_TRUE(daemon.Says("line 4: Error: Invalid timeout value")) << daemon.Log();
  const ServedFile other(NearMiss("agentx-timeout"));
  EXPECT_FALSE(other.Says("Error")) << other.Log();
}

// A subagent's answer that takes its time: on a quick machine, one that does not may come within no time at all.
const char kSlowHello[] = "extend-sh hello sleep 0.3; echo hi";

TEST(TheDaemon, FailsEachRequestToASubagentWhenItsTimeoutIsNothing) {
  const std::string master = "master  agentx\nagentXRetries  0\n";
  ServedFile patient(master + "agentXTimeout  6\n");
  EXPECT_EQ(patient.AskSubagent(kSlowHello).value, "hi");
  const std::string text = master + "agentXTimeout  0\n";
  EXPECT_EQ(LinesFound("agentx-timeout", text).size(), 1u);
  ServedFile hasty(text);
  const e2e::Answer failure = hasty.AskSubagent(kSlowHello);
  EXPECT_EQ(failure.value, "");
  EXPECT_NE(failure.error, "timeout");
}

TEST(TheDaemon, UsesTheLastAgentXTimeout) {
  ServedFile hasty("master  agentx\nagentXRetries  0\nagentXTimeout  6\nagentXTimeout  0\n");
  const e2e::Answer failure = hasty.AskSubagent(kSlowHello);
  EXPECT_EQ(failure.value, "");
  EXPECT_NE(failure.error, "timeout");
}

// An answer comes while the request is asked again, if it is.
TEST(TheDaemon, UsesTheLastAgentXRetries) {
  const char kLate[] = "extend-sh hello sleep 1.4; echo hi";
  const std::string quick = "master  agentx\nagentXTimeout  1\n";
  ServedFile patient(quick + "agentXRetries  0\nagentXRetries  5\n");
  EXPECT_EQ(patient.AskSubagent(kLate).value, "hi");
  ServedFile hasty(quick + "agentXRetries  5\nagentXRetries  0\n");
  const e2e::Answer failure = hasty.AskSubagent(kLate);
  EXPECT_EQ(failure.value, "");
  EXPECT_NE(failure.error, "timeout");
}

TEST(TheDaemon, DoesNotKnowADirectiveBehindAByteOrderMark) {
  const ServedFile daemon(Example("byte-order-mark"));
  EXPECT_TRUE(daemon.ShutsOut("reader"));
  EXPECT_TRUE(daemon.Says("line 1: Warning: Unknown token")) << daemon.Log();
  const ServedFile comment("\xEF\xBB\xBF# A comment.\nrocommunity  reader\n");
  EXPECT_TRUE(comment.Says("line 1: Warning: Unknown token")) << comment.Log();
  EXPECT_TRUE(comment.LetsIn("reader"));
  EXPECT_TRUE(ServedFile(NearMiss("byte-order-mark")).LetsIn("reader"));
}

TEST(TheDaemon, FindsNoDirectiveInUtf16) {
  const std::string little = Example("utf-16");
  std::string big;
  for (std::size_t at = 2; at + 1 < little.size(); at += 2) {
    big += {little[at + 1], little[at]};
  }
  EXPECT_EQ(LinesFound("utf-16", big), std::vector<std::size_t>{0});
  for (const std::string& text : {little, big}) {
    const ServedFile daemon(text, ServedFile::Asker::None);
    EXPECT_TRUE(daemon.Says("no access control information configured")) << daemon.Log();
    EXPECT_EQ(daemon.As("reader").GetNothing(e2e::kSysName).error, "timeout");
  }
  EXPECT_TRUE(ServedFile(NearMiss("utf-16")).LetsIn("reader"));
}

TEST(TheDaemon, KnowsACommunityByItsBytes) {
  const ServedFile daemon(Example("not-utf-8"));
  EXPECT_TRUE(daemon.LetsIn("gr\xFCn"));
  EXPECT_TRUE(daemon.ShutsOut("gr\xC3\xBCn"));
  EXPECT_TRUE(ServedFile(NearMiss("not-utf-8")).LetsIn("gr\xC3\xBCn"));
}

TEST(TheDaemon, DoesNotEndALineAtACarriageReturn) {
  EXPECT_TRUE(ServedFile(Example("carriage-return-in-line")).ShutsOut("reader"));
  EXPECT_TRUE(ServedFile(NearMiss("carriage-return-in-line")).LetsIn("reader"));
  const ServedFile one("rocommunity  127.0.0.1\rrocommunity  reader\r\n");
  EXPECT_TRUE(one.ShutsOut("reader"));
}

TEST(TheDaemon, DoesNotJoinALineThatEndsInABackslash) {
  const ServedFile daemon("sysContact  Ada \\\n  Lovelace\nsysLocation  Attic \\\nrocommunity  reader\n");
  EXPECT_EQ(daemon.Value(e2e::kSysContact), "Ada \\");
  EXPECT_EQ(daemon.Value(e2e::kSysLocation), "Attic \\");
  EXPECT_TRUE(daemon.LetsIn("reader"));
  EXPECT_TRUE(daemon.Says("line 2: Error: Blank line following Lovelace token")) << daemon.Log();
  EXPECT_TRUE(ServedFile(Example("backslash-at-line-end")).Says("line 6: Error: Blank line following hello token"));
}

// Nothing to report: the daemon takes these as they are meant.
TEST(TheDaemon, ReadsALastLineWithoutLineFeedAndALineOfAnyLength) {
  const std::string text = "# " + std::string(100000, 'x') + "\nview  all  included  .1\nsysName  box\nsysContact  Ada";
  EXPECT_EQ(ServedFile("rocommunity  reader\n" + text).Value(e2e::kSysName), "box");
  const ServedFile daemon("rocommunity  asker\n" + text, ServedFile::Asker::None);
  EXPECT_EQ(daemon.Value(e2e::kSysContact), "Ada");
}

TEST(TheDaemon, IgnoresADirectiveThatItDoesNotKnow) {
  const ServedFile daemon(Example("unknown-directive"));
  EXPECT_TRUE(daemon.ShutsOut("reader"));
  for (const std::size_t line : LinesFound("unknown-directive", Example("unknown-directive"))) {
    EXPECT_TRUE(daemon.Says("line " + std::to_string(line) + ": Warning: Unknown token")) << line << "\n" << daemon.Log();
  }
  const ServedFile other(NearMiss("unknown-directive"));
  EXPECT_FALSE(other.Says("Unknown token")) << other.Log();
}

TEST(TheDaemon, IgnoresItsDirectivesInOtherSections) {
  const ServedFile daemon(Example("other-section"));
  EXPECT_TRUE(daemon.ShutsOut("reader"));
  EXPECT_TRUE(daemon.Says("line 2: Warning: Unknown token: rocommunity")) << daemon.Log();
  EXPECT_TRUE(daemon.Says("line 4: Warning: Unknown token: sysName")) << daemon.Log();
  const ServedFile other(NearMiss("other-section"));
  EXPECT_TRUE(other.LetsIn("reader"));
  EXPECT_EQ(other.Value(e2e::kSysName), "box");
}

TEST(TheDaemon, DoesNotChangeTheSectionForAnUnknownName) {
  const std::string text = "[SNMP]\nrocommunity  reader\n[snmp]\n[other]\n[snmpd]  sysName  box\nsysContact  Ada\n[snmpd]\n";
  EXPECT_EQ(LinesFound("other-section", text), std::vector<std::size_t>{6});
  const ServedFile daemon(text);
  EXPECT_TRUE(daemon.LetsIn("reader"));
  EXPECT_EQ(daemon.Value(e2e::kSysName), "box");
  EXPECT_NE(daemon.Value(e2e::kSysContact), "Ada");
}

TEST(TheDaemon, IgnoresASectionThatItDoesNotKnow) {
  const ServedFile daemon(Example("unknown-section"));
  EXPECT_TRUE(daemon.Says("line 2: Error: No handlers")) << daemon.Log();
  EXPECT_TRUE(daemon.Says("line 3: Error: No handlers")) << daemon.Log();
  EXPECT_TRUE(daemon.ShutsOut("reader"));
  EXPECT_TRUE(ServedFile(NearMiss("unknown-section")).LetsIn("reader"));
}

TEST(TheDaemon, LeavesAPassphraseInTheFileAndKeepsAKey) {
  ServedFile daemon(Example("plain-passphrase"));
  daemon.Stop();
  EXPECT_FALSE(daemon.Says("Error")) << daemon.Log();
  EXPECT_TRUE(Holds(daemon.Text(), "open-secret"));
  EXPECT_TRUE(Holds(daemon.Stored(), "\nusmUser "));
  EXPECT_FALSE(Holds(daemon.Stored(), "open-secret"));
  const ServedFile other(NearMiss("plain-passphrase"));
  EXPECT_FALSE(other.Says("Error")) << other.Log();
}

TEST(TheDaemon, UsesTheLastLineOfAnIncludedFile) {
  const testsupport::ScratchFolder folder;
  const std::string include = "includeFile " + folder.Write("more.conf", "sysName  other\nrocommunity  friend\n") + "\n";
  const std::string section = "# Halvoren Section Start\nsysName  box\n# Halvoren Section End\n";
  const ServedFile below(section + "\n" + include);
  EXPECT_EQ(below.Value(e2e::kSysName), "other");
  EXPECT_TRUE(below.LetsIn("friend"));
  EXPECT_EQ(ServedFile(include + section).Value(e2e::kSysName), "box");
}

TEST(TheDaemon, UsesTheFirstLineOfACommunityOfAnIncludedFile) {
  const testsupport::ScratchFolder folder;
  const std::string include = "includeFile " + folder.Write("more", "rwcommunity  same\n") + "\n";
  const auto canWrite = [](const ServedFile& daemon) {
    return daemon.As("same").Set(e2e::kFailureTraps, "i", "1").error.empty();
  };
  EXPECT_TRUE(canWrite(ServedFile(include + "rocommunity  same\n")));
  EXPECT_FALSE(canWrite(ServedFile("rocommunity  same\n" + include)));
}

TEST(TheDaemon, ReadsNoFileForTheseLines) {
  const std::string example = Example("include-not-read");
  const ServedFile daemon(example);
  EXPECT_TRUE(daemon.Says("line 4: Warning: Ambiguous token 'include'")) << daemon.Log();
  for (const std::size_t line : LinesFound("include-not-read", example)) {
    EXPECT_TRUE(line == 4 || daemon.Says("line " + std::to_string(line) + ": Error: ")) << line << "\n" << daemon.Log();
  }
}

TEST(TheDaemon, TakesBlanksAndACarriageReturnForThePartOfAName) {
  const testsupport::ScratchFolder folder;
  const std::string file = folder.Write("d/more.conf", "sysName  other\n");
  for (const std::string& line : {"includeFile " + file + " ", "includeFile " + file + "\r", "includeFile " + file + " # x",
                                  "includeDir " + folder.Path("d") + " "}) {
    const ServedFile daemon(line + "\n");
    EXPECT_NE(daemon.Value(e2e::kSysName), "other") << line;
    EXPECT_TRUE(daemon.Says("line 1: Error: ")) << daemon.Log();
  }
  EXPECT_EQ(ServedFile("includeDir " + folder.Path("d") + "\n").Value(e2e::kSysName), "other");
  EXPECT_NE(ServedFile("[snmp]\nincludeFile " + file + "\n[snmpd]\n").Value(e2e::kSysName), "other");
}

TEST(TheDaemon, StopsWhereFilesIncludeEachOtherTooDeeply) {
  const testsupport::ScratchFolder folder;
  folder.Write("17.conf", "sysContact  Ada\n");
  for (int number = 1; number != 17; ++number) {
    folder.Write(std::to_string(number) + ".conf", "includeFile " + std::to_string(number + 1) + ".conf\n");
  }
  const auto include = [&folder](int number) {
    return "includeFile " + folder.Path(std::to_string(number) + ".conf") + "\n";
  };
  EXPECT_EQ(ServedFile(include(2)).Value(e2e::kSysContact), "Ada");
  EXPECT_NE(ServedFile(include(1)).Value(e2e::kSysContact), "Ada");
}

TEST(TheDaemon, LetsInByAWellKnownCommunity) {
  const ServedFile daemon(Example("well-known-community"));
  EXPECT_TRUE(daemon.LetsIn("public"));
  EXPECT_TRUE(ServedFile(NearMiss("well-known-community")).ShutsOut("private"));
}

TEST(TheDaemon, StillLetsInWhoeverTheFileNames) {
  const ServedFile daemon(Example("still-lets-in"));
  EXPECT_TRUE(daemon.LetsIn("reader"));
  EXPECT_TRUE(daemon.LetsIn("friend"));
  const ServedFile other(NearMiss("still-lets-in"), ServedFile::Asker::None);
  EXPECT_TRUE(other.Says("no access control information configured")) << other.Log();
}

TEST(TheDaemon, ReadsALineUpToANulByte) {
  EXPECT_TRUE(ServedFile(Example("nul-byte")).LetsIn("rea"));
}

TEST(TheDaemon, TakesWhatFollowsALineFeedInASettingForALineOfItsOwn) {
  managed_section::Settings settings;
  settings.sysContact = "Ada\nrocommunity  injected";
  EXPECT_TRUE(ServedFile(Written(settings)).LetsIn("injected"));
}

TEST(TheDaemon, SaysThatItsFileLetsNobodyInAndAnswersNobody) {
  const ServedFile daemon(Example("no-access"), ServedFile::Asker::None);
  EXPECT_TRUE(daemon.Says("no access control information configured")) << daemon.Log();
  EXPECT_EQ(daemon.As("public").GetNothing(e2e::kSysName).error, "timeout");
}

}  // namespace
}  // namespace devhost
