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

TEST(AMisspeltDirective, IsNearTheOneThatWasMeant) {
  const DirectiveNames::Names& names = UsualDirectiveNames().daemon;
  const auto nearest = [&names](const char* word) { return std::string(NearestDirectiveName(word, names)); };
  EXPECT_EQ(nearest("rocomunity"), "rocommunity");
  EXPECT_EQ(nearest("rwcommunty"), "rwcommunity");
  EXPECT_EQ(nearest("rcoommunity"), "rocommunity");
  EXPECT_EQ(nearest("sys_contact"), "syscontact");
  EXPECT_EQ(nearest("agentadress"), "agentaddress");
  EXPECT_EQ(nearest("trapsinks"), "trapsink");
  EXPECT_EQ(nearest("vieew"), "view");
  EXPECT_EQ(nearest("rocommunity:"), "rocommunity");
  EXPECT_EQ(nearest("rocommunity=whatever-follows"), "rocommunity");
}

TEST(AWordThatIsNotNearADirective, HasNone) {
  const DirectiveNames::Names& names = UsualDirectiveNames().daemon;
  for (const std::string& word : {std::string("greeting"), std::string("x"), std::string("vi"), std::string("="),
                                  std::string(), std::string(100000, 'x')}) {
    EXPECT_EQ(NearestDirectiveName(word, names), "") << word.substr(0, 20);
  }
}

}  // namespace
}  // namespace devhost
