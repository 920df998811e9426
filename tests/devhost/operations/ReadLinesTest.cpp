#include "devhost/operations/ReadLines.h"

#include <gmock/gmock.h>

#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using testing::ElementsAre;

TEST(TheLinesThatADaemonReads, AreThoseOfIncludedFilesInTheirPlace) {
  const testsupport::ScratchFolder folder;
  const std::string inner = folder.Write("inner.conf", "# a comment\nsysContact Ada\n");
  const std::string outer = folder.Write("outer.conf", "includeFile " + inner + "\nsysName outer\n");
  std::vector<std::string> places;
  std::vector<bool> included;
  for (const ReadLine& line :
       ReadLinesOf("sysName first\nincludeFile " + outer + "\n\nsysName last\n", folder.Path("snmpd.conf"))) {
    places.push_back(line.place + " " + line.setting.keyword);
    included.push_back(line.isIncluded);
  }
  EXPECT_THAT(places, ElementsAre("line 1 sysname", "line 2 includefile", outer + ":1 includefile", inner + ":2 syscontact",
                                  outer + ":2 sysname", "line 4 sysname"));
  EXPECT_THAT(included, ElementsAre(false, false, true, true, true, false));
}

TEST(TheLinesThatADaemonReads, SayWhichCommunityTheyGiveSomethingTo) {
  std::vector<std::string> communities;
  for (const ReadLine& line : ReadLinesOf("rocommunity one\nrwcommunity6 'one' ::1\ncom2sec name default two\n"
                                          "com2sec6 -Cn context name ::1 three\ncom2sec name\nsysName x\n",
                                          "/nowhere/snmpd.conf")) {
    communities.push_back(line.community);
  }
  EXPECT_THAT(communities, ElementsAre("4 one", "6 one", "4 two", "6 three", "", ""));
}

std::vector<std::string> PlacesOf(const std::string& text, const std::string& path, const std::string& community) {
  std::vector<std::string> places;
  for (const ReadLine& line : LinesOfCommunity(text, path, community)) {
    places.push_back(line.place);
  }
  return places;
}

TEST(TheLinesOfACommunity, AreThoseOutsideTheSection) {
  const std::string text =
      "# Halvoren Section Start\nrocommunity one\n# Halvoren Section End\n# rocommunity one\n"
      "rocommunity6 'one' ::1\nrwcommunity one\ncom2sec name default two\n[snmp]\nrocommunity three\n";
  EXPECT_THAT(PlacesOf(text, "", "one"), ElementsAre("line 5", "line 6"));
  EXPECT_THAT(PlacesOf(text, "", "two"), ElementsAre("line 7"));
  EXPECT_THAT(PlacesOf(text, "", "three"), ElementsAre());
  EXPECT_THAT(PlacesOf(text, "", ""), ElementsAre());
}

TEST(TheLinesOfACommunity, AreLookedForInIncludedFilesWhereTheFileIsKnown) {
  const testsupport::ScratchFolder folder;
  const std::string part = folder.Write("conf.d/part.conf", "sysName x\nrwcommunity one\n");
  const std::string text = "includeDir " + folder.Path("conf.d") + "\n";
  EXPECT_THAT(PlacesOf(text, folder.Path("snmpd.conf"), "one"), ElementsAre(part + ":2"));
  EXPECT_THAT(PlacesOf(text, "", "one"), ElementsAre());
}

}  // namespace
}  // namespace devhost
