#include "devhost/snmpd/DirectiveNames.h"

#include <gtest/gtest.h>

namespace devhost {
namespace {

constexpr char kList[] =
    "Turning on AgentX master support.\n"
    "Configuration directives understood:\n"
    "  In snmpd.conf and snmpd.local.conf:\n"
    "    authtrapenable           1 | 2\t\t(1 = enable, 2 = disable)\n"
    "    createUser               username\n"
    "  In snmp.conf and snmp.local.conf:\n"
    "    mibdirs                  [mib-dirs|+mib-dirs|-mib-dirs]\n"
    "  In agentx.conf and agentx.local.conf:\n"
    "    agentxperms              AgentX socket permissions\n"
    "\n"
    "NET-SNMP version:  5.9.3\n";

TEST(TheListOfADaemon, IsReadByItsHeadings) {
  const DirectiveNames names = ReadDirectiveNames(kList);
  EXPECT_EQ(names.daemon.count("authtrapenable"), 1U);
  EXPECT_EQ(names.daemon.count("createuser"), 1U);
  EXPECT_EQ(names.daemon.count("extend"), 1U) << "not listed by any daemon";
  EXPECT_EQ(names.daemon.count("mibdirs"), 0U);
  EXPECT_EQ(names.daemon.count("agentxperms"), 0U);
  EXPECT_EQ(names.programs, DirectiveNames::Names{"mibdirs"});
}

TEST(TheListOfADaemon, IsNothingWhenItIsSomethingElse) {
  EXPECT_TRUE(ReadDirectiveNames("").daemon.empty());
  EXPECT_TRUE(ReadDirectiveNames("snmpd: unknown option -H\n").daemon.empty());
}

struct Meant {
  const char* word;
  const char* name;
};

class AnUnknownDirective : public testing::TestWithParam<Meant> {};

TEST_P(AnUnknownDirective, IsNearTheOneThatWasMeant) {
  EXPECT_EQ(NearestDirectiveName(GetParam().word, UsualDirectiveNames().daemon), GetParam().name);
}

INSTANTIATE_TEST_SUITE_P(Words, AnUnknownDirective,
                         testing::Values(Meant{"rocomunity", "rocommunity"}, Meant{"rwcommunty", "rwcommunity"},
                                         Meant{"rcoommunity", "rocommunity"}, Meant{"sys_contact", "syscontact"},
                                         Meant{"agentadress", "agentaddress"}, Meant{"trapsinks", "trapsink"},
                                         Meant{"vieew", "view"}, Meant{"rocommunity:", "rocommunity"},
                                         Meant{"rocommunity=whatever-follows", "rocommunity"}, Meant{"greeting", ""},
                                         Meant{"x", ""}, Meant{"vi", ""}, Meant{"=", ""}, Meant{"", ""}));

bool operator==(const KnownName& left, const KnownName& right) {
  return left.follows == right.follows && left.spelling == right.spelling;
}

using Spelling = KnownName::Spelling;

struct Known {
  const char* word;
  KnownName expected;
};

class AWordInALine : public testing::TestWithParam<Known> {};

TEST_P(AWordInALine, SaysWhatFollowsIt) {
  EXPECT_TRUE(FindDirectiveName(GetParam().word) == GetParam().expected) << GetParam().word;
}

INSTANTIATE_TEST_SUITE_P(Exact, AWordInALine,
                         testing::Values(Known{"sysLocation", {Follows::Harmless, Spelling::Exact}},
                                         Known{"SYSLOCATION", {Follows::Harmless, Spelling::Exact}},
                                         Known{"extend", {Follows::Anything, Spelling::Exact}},
                                         Known{"RoCommunity6", {Follows::Secret, Spelling::Exact}},
                                         Known{"Community", {Follows::SecretOrText, Spelling::Exact}}));

INSTANTIATE_TEST_SUITE_P(Near, AWordInALine,
                         testing::Values(Known{"ocommunity", {Follows::Secret, Spelling::OneLetterOff}},
                                         Known{"rocomunty", {Follows::Secret, Spelling::Near}},
                                         Known{"old_rocommunity_2", {Follows::Secret, Spelling::Near}},
                                         Known{"communityRead", {Follows::SecretOrText, Spelling::Near}},
                                         // Of "interface" and nothing else; of "trapsink" as of "trap2sink".
                                         Known{"interfaces", {Follows::Harmless, Spelling::OneLetterOff}},
                                         Known{"trap1sink", {Follows::Secret, Spelling::OneLetterOff}}));

INSTANTIATE_TEST_SUITE_P(Other, AWordInALine,
                         testing::Values(Known{"kitchen", {}}, Known{"", {}},
                                         Known{"pas", {Follows::Anything, Spelling::OneLetterOff}}));

TEST(EachUsualDirective, IsKnown) {
  for (const auto* const names : {&UsualDirectiveNames().daemon, &UsualDirectiveNames().programs}) {
    EXPECT_GT(names->size(), 60U);
    for (const std::string& name : *names) {
      EXPECT_EQ(FindDirectiveName(name).spelling, Spelling::Exact) << name;
    }
  }
}

}  // namespace
}  // namespace devhost
