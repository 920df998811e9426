#include "devhost/snmpd/PassiveDirectives.h"

#include <gtest/gtest.h>

#include "devhost/snmpd/DirectiveNames.h"

namespace devhost {
namespace {

TEST(APassiveDirective, IsOneThatTheDaemonOnlyRemembers) {
  for (const char* const name : {"rocommunity", "view", "load", "sysname", "createuser"}) {
    EXPECT_TRUE(IsPassiveDirective(name)) << name;
  }
}

TEST(APassiveDirective, RunsNothingOpensNothingAndNamesNoFile) {
  for (const char* const name :
       {"perl", "dlmod", "extend", "sh", "pass", "agentaddress", "agentxsocket", "master", "trapsess", "trap2sink", "proxy",
        "agentuser", "includefile", "includedir", "logoption", "persistentdir", "logmatch", "nothing", ""}) {
    EXPECT_FALSE(IsPassiveDirective(name)) << name;
  }
}

TEST(APassiveDirective, IsADirectiveOfTheDaemonAndOfNoOtherProgram) {
  std::size_t count = 0;
  for (const std::string& name : UsualDirectiveNames().daemon) {
    count += IsPassiveDirective(name) ? 1U : 0U;
  }
  EXPECT_GT(count, 60U);
  for (const std::string& name : UsualDirectiveNames().programs) {
    EXPECT_FALSE(IsPassiveDirective(name)) << name;
  }
}

}  // namespace
}  // namespace devhost
