// Hand-written files become managed ones, and a real daemon serves the same as before.
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "devhost/operations/Adopt.h"
#include "devhost/operations/Drift.h"
#include "devhost/operations/FileTarget.h"
#include "devhost/project/Project.h"
#include "tests/devhost/check/ServedFile.h"

namespace devhost {
namespace {

constexpr std::int64_t kNow = 1790000000;

class AnAdoptedFile : public testing::Test {
 protected:
  // What a daemon serves with this file: three texts, and which of the communities read and write.
  static std::vector<std::string> Served(const std::string& text, const std::vector<std::string>& communities) {
    const ServedFile served(text);
    std::vector<std::string> seen;
    for (const char* const object : {e2e::kSysContact, e2e::kSysName, e2e::kSysLocation}) {
      seen.push_back(served.Value(object));
    }
    for (const std::string& community : communities) {
      const e2e::SnmpClient client = served.As(community);
      const std::string reads = client.GetNothing(e2e::kSysName).error;
      const bool writes = reads.empty() && client.Set(e2e::kFailureTraps, "i", "2").error.empty();
      seen.push_back(community + ": " + (reads.empty() ? "reads" : reads) + (writes ? ", writes" : ""));
    }
    return seen;
  }

  // Adopts the file, gives it the settings, and compares.
  void BecomesManaged(const std::string& text, const std::vector<std::string>& communities) {
    const std::string path = folder.Write("etc/snmpd.conf", text);
    const Adoption adoption = Adopt({path, text}, path, AgentAlone(MODULE_FOLDER).drivers.front());
    EXPECT_THAT(adoption.winning, testing::IsEmpty());
    folder.Write("etc/snmpd.conf", adoption.text);
    Change change;
    change.target = TargetOfFile(path, MODULE_FOLDER);
    change.settings = {"settings.xml", adoption.settings};
    change.accepted = {"no-access"};
    const Plan plan = PlanChange(change);
    ASSERT_EQ(ApplyChange(change, plan, kNow).verdict, Applied::Verdict::Done) << testing::PrintToString(plan.messages);
    EXPECT_EQ(FindDrift(change.target).verdict, Drift::Verdict::None);
    EXPECT_EQ(PlanChange(change).verdict, Plan::Verdict::Nothing);
    // The socket for subagents is one of the machine: ServedFile gives each daemon its own.
    EXPECT_EQ(Served(folder.Read("etc/snmpd.conf"), communities), Served(text, communities));
  }

  const testsupport::ScratchFolder folder;
};

// What Debian installs, but for its comments.
TEST_F(AnAdoptedFile, OfAStockSystemServesTheSame) {
  BecomesManaged(
      "# snmpd.conf\n"
      "sysLocation    Sitting on the Dock of the Bay\n"
      "sysContact     Me <me@example.org>\n"
      "sysServices    72\n"
      "master  agentx\n"
      "agentaddress  127.0.0.1,[::1]\n"
      "view   systemonly  included   .1.3.6.1.2.1.1\n"
      "view   systemonly  included   .1.3.6.1.2.1.25.1\n"
      "rocommunity  public default -V systemonly\n"
      "rocommunity6 public default -V systemonly\n"
      "rouser authPrivUser authpriv -V systemonly\n"
      "includeDir " +
          folder.Path("none") + "\n",
      {"public", "private"});
}

TEST_F(AnAdoptedFile, WithUsersAndCommunitiesServesTheSame) {
  BecomesManaged(
      "createUser monitor SHA \"a long passphrase\" AES \"another one here\"\n"
      "rouser monitor authPriv .1.3.6.1.2.1\n"
      "sysName first\n"
      "sysContact Ada\n"
      "rwcommunity writer\n"
      "rocommunity writer\n"
      "rocommunity guarded 127.0.0.1 .1.3.6.1.2.1.25\n"
      "rocommunity guarded\n"
      "rocommunity reader\n"
      "rocommunity second\n"
      "sysName last\n",
      {"writer", "reader", "second", "guarded", "stranger"});
}

TEST_F(AnAdoptedFile, WithIncludedFilesServesTheSame) {
  const std::string names = folder.Write("more/names.conf", "sysName included\nrocommunity shared\n");
  const std::string access = folder.Write("more/access.conf", "rocommunity inner\nincludeFile " + names + "\n");
  BecomesManaged("sysName mine\nsysContact Ada\nrocommunity shared 192.0.2.1\nincludeFile " + access +
                     "\nsysLocation Attic\nrocommunity reader\nsysName mine too\n",
                 {"shared", "inner", "reader", "stranger"});
}

}  // namespace
}  // namespace devhost
