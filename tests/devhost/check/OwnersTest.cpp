#include "devhost/check/Owners.h"

#include <gmock/gmock.h>

#include <algorithm>

#include "config/ManagedSection.h"
#include "config/SectionMerge.h"
#include "config/SectionWriter.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string kStart = "# Halvoren Section Start\n";
const std::string kEnd = "# Halvoren Section End\n";

std::vector<std::string> Owned(const std::string& text, const std::string& path = "") {
  const char* const names[] = {"section", "above", "behind", "old", "kept", "included"};
  std::vector<std::string> owned;
  for (const OwnedLines& lines : OwnersOf(text, path)) {
    owned.push_back(std::to_string(lines.first) + "-" + std::to_string(lines.last) + " " +
                    names[static_cast<std::size_t>(lines.owner)] + (lines.file.empty() ? "" : " " + lines.file) +
                    (lines.includedBy.empty() ? "" : " by " + lines.includedBy));
  }
  return owned;
}

std::size_t LinesOf(const std::string& text) {
  return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

// What the agent writes belongs to it, and nothing else: the next write keeps what is kept.
TEST(TheOwners, OfAFileThatTheAgentHasWritten) {
  const std::string section = managed_section::Write(managed_section::FixedTexts(), {}, "now");
  const std::string own = "# mine\n\nview x included .1\n";
  const std::string file = managed_section::Merge(section, own);
  const std::size_t last = LinesOf(file) - LinesOf(own);
  const std::vector<std::string> expected = {"1-" + std::to_string(last) + " section",
                                             std::to_string(last + 1) + "-" + std::to_string(last + 3) + " kept"};
  EXPECT_EQ(Owned(file), expected);
  EXPECT_EQ(Owned(managed_section::Merge(section, file)), expected);
}

TEST(TheOwners, OfTextThatTheNextWriteDrops) {
  const std::string text =
      "# mine\nview x included .1\n" + kStart + "sysName x\n" + kEnd + "# behind\nsysServices 3\n# kept\n";
  EXPECT_THAT(Owned(text), ElementsAre("1-2 above", "3-5 section", "6-7 behind", "8-8 kept"));
  const std::string written = managed_section::Merge("NEW\n", text);
  EXPECT_EQ(written.find("mine"), std::string::npos);
  EXPECT_EQ(written.find("behind"), std::string::npos);
  EXPECT_EQ(written.find("sysServices"), std::string::npos);
  EXPECT_NE(written.find("# kept"), std::string::npos);
}

TEST(TheOwners, OfSectionsThatAreNotReplaced) {
  EXPECT_THAT(Owned("# mine\n" + kStart + "sysName x\n"), ElementsAre("1-1 kept", "2-3 old"));
  EXPECT_THAT(Owned(kStart + kEnd + "\n# mine\n" + kStart + kEnd), ElementsAre("1-3 section", "4-4 kept", "5-6 old"));
  EXPECT_THAT(Owned("# mine\n" + kEnd + "\n" + kStart + "sysName x\n"), ElementsAre("1-3 above", "4-5 old"));
  const std::string header = std::string(75, '#') + "\n#\n# snmpd.conf\n#\n";
  EXPECT_THAT(Owned(kEnd + header + kStart + "sysName x\nsysName y\n"), ElementsAre("1-7 above", "8-8 old"));
}

TEST(TheOwners, OfFilesThatIncludeEachOther) {
  const testsupport::ScratchFolder folder;
  const std::string deep = folder.Write("deep.conf", "# deep\n");
  const std::string part = folder.Write("part.conf", "# first\nincludeFile deep.conf\n# last");
  folder.Write("empty.conf", "");
  const std::string text = "# mine\nincludeFile part.conf\nincludeFile empty.conf\n# mine\nincludeFile missing.conf\n";
  EXPECT_THAT(Owned(text, folder.Path("snmpd.conf")),
              ElementsAre("1-2 kept", "1-2 included " + part + " by line 2", "1-1 included " + deep + " by " + part + ":2",
                          "3-3 included " + part + " by line 2", "3-5 kept"));
  EXPECT_THAT(Owned(text), ElementsAre("1-5 kept"));
}

TEST(TheOwners, OfNothing) {
  EXPECT_THAT(Owned(""), IsEmpty());
}

}  // namespace
}  // namespace devhost
