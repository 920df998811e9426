#include <gmock/gmock.h>

#include "tests/module/Shell.h"
#include "tests/support/ScratchFolder.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;

ShellResult Check(const std::string& folder) {
  return RunInShell("'" SOURCE_FOLDER "/scripts/check-includes' '" + folder + "'");
}

// Returns what the check says about one file with one include, in a tree where that include exists.
std::string Verdict(const std::string& file, const std::string& include) {
  const testsupport::ScratchFolder tree;
  if (include.front() == '"') {
    tree.Write(include.substr(1, include.size() - 2), "\n");
  }
  tree.Write("host/Clean.h", "\n");
  tree.Write(file, "// a line\n  #  include " + include + "\n");
  const ShellResult result = Check(tree.Path());
  EXPECT_EQ(result.status, result.output.empty() ? 0 : 1);
  return result.output;
}

TEST(TheIncludesOfTheProject, FollowTheArrows) {
  const ShellResult result = Check(SOURCE_FOLDER);
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_EQ(result.output, "");
}

TEST(AWrongInclude, IsNamedWithFileAndLine) {
  EXPECT_EQ(Verdict("host/A.h", "\"agent/B.h\""), "host/A.h:2: includes \"agent/B.h\"; host/* may include host/*\n");
}

TEST(TheArrows, LetRoomsSeeWhatStandsBelowThem) {
  EXPECT_EQ(Verdict("agent/A.cpp", "\"config/B.h\""), "");
  EXPECT_EQ(Verdict("config/A.cpp", "\"device/B.h\""), "");
  EXPECT_EQ(Verdict("variables/A.cpp", "\"host/B.h\""), "");
  EXPECT_EQ(Verdict("drivers/common/A.cpp", "\"device/TrapTarget.h\""), "");
  EXPECT_EQ(Verdict("devhost/xml/A.cpp", "<pugixml.hpp>"), "");
  EXPECT_EQ(Verdict("config/ConfigTransfer.cpp", "\"agent/SNMPConfigurationAgent.h\""), "");
  EXPECT_EQ(Verdict("tests/A.cpp", "\"devhost/xml/B.h\""), "");
  EXPECT_EQ(Verdict("agent/A.cpp", "<vector>"), "");
}

TEST(TheArrows, LetNoRoomSeeAnythingElse) {
  for (const char* wrong :
       {"device/A.cpp config/B.h", "device/A.h agent/SNMPConfigurationAgent.h",
        "config/SectionReader.cpp agent/SNMPConfigurationAgent.h", "config/A.cpp variables/B.h",
        "config/ConfigTransfer.cpp agent/DeviceMap.h", "variables/A.cpp device/B.h", "agent/A.cpp devhost/engine/B.h",
        "agent/A.cpp tests/B.h", "devhost/engine/A.cpp agent/B.h", "devhost/engine/A.cpp drivers/common/B.h",
        "devhost/text/A.cpp devhost/system/B.h", "devhost/engine/A.cpp devhost/report/B.h",
        "devhost/script/A.cpp devhost/commands/B.h", "devhost/check/A.cpp devhost/preview/B.h",
        "devhost/program/A.cpp devhost/engine/B.h", "drivers/common/A.cpp agent/SNMPConfigurationAgent.h",
        "drivers/common/A.cpp devhost/engine/B.h", "drivers/simulated/A.cpp drivers/localsnmpd/B.h"}) {
    const std::string text = wrong;
    const std::size_t space = text.find(' ');
    EXPECT_THAT(Verdict(text.substr(0, space), '"' + text.substr(space + 1) + '"'),
                StartsWith(text.substr(0, space) + ":2: includes"))
        << text;
  }
}

TEST(TheXmlLibrary, IsSeenByTheXmlRoomOnly) {
  for (const char* file : {"devhost/engine/A.cpp", "devhost/project/A.cpp", "agent/A.cpp", "tests/A.cpp", "drivers/A.h"}) {
    EXPECT_THAT(Verdict(file, "<pugixml.hpp>"), HasSubstr("which only devhost/xml/* may")) << file;
    EXPECT_THAT(Verdict(file, "\"pugixml.hpp\""), HasSubstr("which only devhost/xml/* may")) << file;
  }
}

TEST(APathThatIsNotFromTheRoot, IsRefused) {
  const testsupport::ScratchFolder tree;
  tree.Write("agent/A.cpp", "#include \"agent/Missing.h\"\n");
  EXPECT_THAT(Check(tree.Path()).output, HasSubstr("not a path from the project's root"));
}

TEST(ARoomWithoutARule, IsRefused) {
  EXPECT_THAT(Verdict("devhost/A.cpp", "\"devhost/text/B.h\""), HasSubstr("no rule in scripts/include-rules.txt"));
}

// Even arrows that the rules allow one by one may close a circle.
TEST(RoomsThatIncludeEachOther, AreNamed) {
  const testsupport::ScratchFolder tree;
  tree.Write("tests/A.h", "#include \"bench/B.h\"\n");
  tree.Write("bench/B.h", "\n");
  EXPECT_EQ(Check(tree.Path()).output, "");
  tree.Write("bench/C.h", "#include \"tests/D.h\"\n");
  tree.Write("tests/D.h", "\n");
  const ShellResult result = Check(tree.Path());
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.output, StartsWith("rooms include each other in a circle:"));
  EXPECT_THAT(result.output, testing::AllOf(HasSubstr(" tests/*"), HasSubstr(" bench/*")));
}

TEST(FilesThatIncludeEachOther, AreNamed) {
  const testsupport::ScratchFolder tree;
  tree.Write("host/A.h", "#include \"host/B.h\"\n");
  tree.Write("host/B.h", "#include \"host/C.h\"\n");
  tree.Write("host/C.h", "#include \"host/A.h\"\n");
  const ShellResult result = Check(tree.Path());
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.output, StartsWith("files include each other in a circle:"));
  EXPECT_THAT(result.output, testing::AllOf(HasSubstr(" host/A.h"), HasSubstr(" host/B.h"), HasSubstr(" host/C.h")));
}

TEST(AFolderWithoutRooms, Fails) {
  const testsupport::ScratchFolder tree;
  EXPECT_EQ(Check(tree.Path()).status, 1);
}

}  // namespace
