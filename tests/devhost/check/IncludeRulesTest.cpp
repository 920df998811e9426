// What is found in files that the checked file includes.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "devhost/check/CheckFile.h"
#include "tests/devhost/check/Examples.h"

namespace devhost {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr char kSection[] = "# Halvoren Section Start\nrocommunity  reader\nsysName  box\n# Halvoren Section End\n\n";

class AnIncludedConfiguration : public testing::Test {
 protected:
  std::string Write(const std::string& name, const std::string& text) const {
    const std::string path = folder.Write(name, text);
    ::chmod(path.c_str(), 0600);
    return path;
  }

  // "FILE:LINE RULE" of each finding in a file of this text.
  std::vector<std::string> Found(const std::string& text) const {
    std::vector<std::string> found;
    const std::vector<Finding> findings = CheckFile(Write("snmpd.conf", text), {}).findings;
    found.reserve(findings.size());
    for (const Finding& finding : findings) {
      found.push_back(finding.file.substr(folder.Path().size() + 1) + ":" + std::to_string(finding.line) + " " +
                      finding.rule);
    }
    return found;
  }

  std::string Reason(const std::string& text) const {
    const std::vector<Finding> findings = CheckFile(Write("snmpd.conf", text), {}).findings;
    return findings.empty() ? "" : findings.front().reason;
  }

  const testsupport::ScratchFolder folder;
};

TEST_F(AnIncludedConfiguration, OverridesTheSection) {
  Write("more.conf", "\nsysName  other\nsysContact  Ada\n");
  const std::string text = std::string(kSection) + "includeFile more.conf\n";
  EXPECT_THAT(Found(text), ElementsAre("more.conf:2 overrides-section", "more.conf:3 will-override-section"));
  EXPECT_THAT(Reason(text), HasSubstr("wins over line 3 of " + folder.Path("snmpd.conf") + " of the section"));
}

TEST_F(AnIncludedConfiguration, DoesNotOverrideASectionBelowIt) {
  Write("more.conf", "sysName  other\nsysContact  Ada\n");
  EXPECT_THAT(Found("includeFile more.conf\n" + std::string(kSection)), ElementsAre("snmpd.conf:1 text-above-section"));
}

TEST_F(AnIncludedConfiguration, IsReadWhereTheLineStands) {
  Write("more.conf", "rwcommunity  same\n");
  EXPECT_THAT(Found("rocommunity  same\nincludeFile more.conf\n"), ElementsAre("more.conf:1 write-community-like-read"));
  EXPECT_THAT(Found("includeFile more.conf\nrocommunity  same\n"), ElementsAre("snmpd.conf:2 first-community-wins"));
  EXPECT_THAT(Reason("includeFile more.conf\nrocommunity  same\n"),
              HasSubstr("as in line 1 of " + folder.Path("more.conf") + ":"));
}

TEST_F(AnIncludedConfiguration, GivesAccess) {
  Write("more.conf", "rouser  boss\n");
  Write("none.conf", "# nobody\n");
  EXPECT_THAT(Found("includeFile more.conf\n"), IsEmpty());
  EXPECT_THAT(Found("includeFile none.conf\n"), ElementsAre("snmpd.conf:0 no-access"));
}

TEST_F(AnIncludedConfiguration, HasNoSections) {
  Write("more.conf", kSection);
  EXPECT_THAT(Found(std::string(kSection) + "includeFile more.conf\n"), IsEmpty());
}

TEST_F(AnIncludedConfiguration, IsJudgedAsAFile) {
  ::chmod(Write("mark.conf", "\xEF\xBB\xBFrouser  boss\n").c_str(), 0644);
  Write("wide.conf", std::string("r\0o\0u\0s\0e\0r\0 \0x\0\n\0", 18));
  EXPECT_THAT(Found("rocommunity  reader\nincludeFile mark.conf\nincludeFile wide.conf\nbogus  x\n"),
              ElementsAre("snmpd.conf:4 unknown-directive", "mark.conf:0 file-mode", "mark.conf:1 byte-order-mark",
                          "wide.conf:0 utf-16"));
}

TEST_F(AnIncludedConfiguration, IsListedOnceHoweverOftenItIsRead) {
  Write("more.conf", "bogus  x\nincludeFile more.conf\n");
  EXPECT_THAT(Found("rocommunity  reader\nincludeFile more.conf\nincludeFile more.conf\n"),
              ElementsAre("more.conf:1 unknown-directive", "more.conf:2 include-not-read"));
}

TEST_F(AnIncludedConfiguration, MayIncludeMore) {
  Write("d/a.conf", "includeFile ../b.conf\n");
  Write("b.conf", "\n\nbogus  x\n");
  EXPECT_THAT(Found("rocommunity  reader\nincludeDir " + folder.Path("d") + "\n"),
              ElementsAre("d/../b.conf:3 unknown-directive"));
}

TEST_F(AnIncludedConfiguration, IsNotReadForATextWithoutAFile) {
  Write("more.conf", "bogus  x\n");
  EXPECT_TRUE(CheckText("includeFile " + folder.Path("more.conf") + "\n", "a text", {}).findings.empty());
}

}  // namespace
}  // namespace devhost
