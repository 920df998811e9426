#include "devhost/operations/Adopter.h"

#include <gmock/gmock.h>

namespace devhost {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// The lines of a file, by number, that do not stay.
std::vector<std::size_t> GoneOf(const Adopter& adopter, const std::vector<ReadLine>& lines) {
  std::vector<std::size_t> gone;
  for (const ReadLine& line : lines) {
    if (adopter.IsGone(line.number)) {
      gone.push_back(line.number);
    }
  }
  return gone;
}

TEST(AnAdopter, TakesTheLastOfSeveralTextsAndLosesTheOthers) {
  const std::vector<ReadLine> lines = ReadLinesOf("sysName first\nsysName\nsysName last", "");
  Adopter adopter(lines);
  adopter.TakeText("sysName", "snmpSysNameSetting", adopter.answers.sysName);
  adopter.NameStaying();
  EXPECT_EQ(adopter.answers.sysName.value, "last");
  EXPECT_THAT(GoneOf(adopter, lines), ElementsAre(1U, 3U));  // the daemon rejects the other
  EXPECT_THAT(adopter.adoption.becoming, ElementsAre("line 3: sysname becomes snmpSysNameSetting"));
  EXPECT_THAT(adopter.adoption.going, ElementsAre("line 1: sysname: no effect, since the last one wins: line 3"));
}

TEST(AnAdopter, TakesTheFirstLineOfACommunity) {
  const std::vector<ReadLine> lines = ReadLinesOf(
      "rwcommunity both\nrocommunity both\nrocommunity both 192.0.2.1\nrocommunity other\nrocommunity third\n", "");
  Adopter adopter(lines);
  adopter.TakeCommunities();
  adopter.NameStaying();
  EXPECT_EQ(adopter.answers.communityWrite.value, "both");
  EXPECT_EQ(adopter.answers.communityRead.value, "other");
  EXPECT_THAT(GoneOf(adopter, lines), ElementsAre(1U, 2U, 3U, 4U));
  EXPECT_EQ(adopter.adoption.going.size(), 2U);
  EXPECT_THAT(adopter.adoption.staying, ElementsAre("line 5: rocommunity: the section has room for one, and that is taken"));
}

TEST(AnAdopter, LeavesTrapTargetsThatAreMoreThanThreeWords) {
  const std::vector<ReadLine> lines = ReadLinesOf(
      "trapcommunity secret\ntrap2sink 192.0.2.5\ntrap2sink -Ci 192.0.2.6 secret\ntrapsink 192.0.2.7\n"
      "trap2sink 192.0.2.8 secret\n",
      "");
  Adopter adopter(lines);
  adopter.TakeTraps();
  adopter.NameStaying();
  EXPECT_THAT(GoneOf(adopter, lines), ElementsAre(5U));
  EXPECT_THAT(adopter.adoption.staying, ElementsAre("line 2: trap2sink: its community is the one of trapcommunity",
                                                    "line 3: trap2sink: it is more than target, community and port",
                                                    "trapcommunity: line 1", "trapsink: line 4"));
}

TEST(AnAdopter, TakesNothingThatIsNotThere) {
  const std::vector<ReadLine> lines = ReadLinesOf("agentaddress 127.0.0.1\n", "");
  Adopter adopter(lines);
  adopter.TakeText("sysName", "snmpSysNameSetting", adopter.answers.sysName);
  adopter.TakeCommunities();
  adopter.TakeTraps();
  EXPECT_TRUE(adopter.TakeSame("master", "agentx"));
  EXPECT_FALSE(adopter.TakeSame("agentaddress", "127.0.0.2"));
  EXPECT_THAT(GoneOf(adopter, lines), IsEmpty());
}

}  // namespace
}  // namespace devhost
