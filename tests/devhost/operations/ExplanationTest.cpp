#include "devhost/operations/Explanation.h"

#include <gmock/gmock.h>

#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const char kSection[] =
    "# Halvoren Section Start\n"
    "rocommunity  hidden1\n"
    "rwcommunity  hidden1\n"
    "agentXSocket  tcp:127.0.0.1:705\n"
    "sysContact  Ada\n"
    "sysName  kitchen\n"
    "# Halvoren Section End\n"
    "\n";

TEST(AnExplanation, NamesTheForeignLineThatTheDaemonUses) {
  const Explanation file(std::string(kSection) + "sysContact Bob\nSYSCONTACT Eve\n", "", false);
  EXPECT_EQ(file.Of("syscontact"), "shadowed by line 10 of the foreign text");
  EXPECT_EQ(file.Of("sysname"), "");
}

TEST(AnExplanation, NamesTheLineOfAnIncludedFileThatTheDaemonUses) {
  const testsupport::ScratchFolder folder;
  const std::string part = folder.Write("conf.d/part.conf", "sysContact Bob\nagentXSocket unix:/run/agentx\n");
  const std::string text = std::string(kSection) + "includeDir " + folder.Path("conf.d") + "\nincludeFile more.conf\n";
  folder.Write("more.conf", "sysName elsewhere\n");
  const Explanation file(text, folder.Path("snmpd.conf"), false);
  EXPECT_EQ(file.Of("syscontact"), "shadowed by " + part + ":1");
  EXPECT_EQ(file.Of("sysname"), "shadowed by " + folder.Path("more.conf") + ":1");
  EXPECT_EQ(file.LastValue("agentxsocket"), "unix:/run/agentx");
  EXPECT_EQ(Explanation(text, "", false).Of("syscontact"), "") << "nobody knows where the file is";
}

TEST(AnExplanation, NamesWhatIsWrongWithTheLineOfTheSection) {
  const Explanation file(kSection, "", false);
  EXPECT_THAT(file.Of("rwcommunity"), StartsWith("line 3: the write community is also the read community"));
  EXPECT_THAT(file.Of("rwcommunity"), Not(HasSubstr("hidden1")));
  EXPECT_EQ(file.Of("rocommunity"), "");
}

TEST(AnExplanation, KnowsTheValueThatTheDaemonUses) {
  const Explanation file(std::string(kSection) + "agentXSocket unix:/run/agentx\n", "", false);
  EXPECT_EQ(file.LastValue("agentxsocket"), "unix:/run/agentx");
  EXPECT_EQ(file.LastValue("sysname"), "kitchen");
  EXPECT_EQ(file.LastValue("syslocation"), "");
}

}  // namespace
}  // namespace devhost
