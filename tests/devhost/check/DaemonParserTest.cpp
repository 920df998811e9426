// What snmpd itself complains of.
#include "devhost/check/DaemonParser.h"

#include <gmock/gmock.h>
#include <stdlib.h>

#include <filesystem>
#include <optional>

#include "devhost/check/Rules.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testsupport::ScratchFolder;

// The findings, as "LINE: REASON".
std::vector<std::string> Said(const std::string& path, const std::string& text, bool showSecrets = false) {
  Report report("snmpd.conf", showSecrets);
  EXPECT_EQ(AskDaemon(path, text, report), "");
  std::vector<std::string> said;
  for (const Finding& finding : report.Take()) {
    EXPECT_EQ(finding.rule, kDaemonRule);
    EXPECT_EQ(finding.severity, Severity::Error);
    said.push_back(std::to_string(finding.line) + ": " + finding.reason);
  }
  return said;
}

TEST(TheDaemon, NamesTheLineThatItRejects) {
  EXPECT_THAT(Said("", "rocommunity  reader\nsysObjectID  bogus\n# a comment\nrouser\n"),
              ElementsAre("2: the daemon says: Error: sysobjectid token not a parsable OID:",
                          "4: the daemon says: Error: Blank line following *****"));
}

// It reads some from its own store alone, and crashes on other values than it has stored; it crashes on a repair without a
// program, too. It is asked without smux.
TEST(TheDaemon, KnowsTheDirectivesThatTheRulesKnow) {
  std::string text;
  for (const std::string& name : UsualDirectiveNames().daemon) {
    const bool isStored = name.compare(0, 4, "vacm") == 0 || name == "usmuser";
    const bool isSkipped = isStored || name == "procfix" || name.compare(0, 4, "smux") == 0;
    text += isSkipped ? "" : name + " x\n";
  }
  EXPECT_THAT(Said("", text), Not(Contains(HasSubstr("Unknown token"))));
  EXPECT_THAT(Said("", "bogus x\n"), ElementsAre(HasSubstr("Unknown token")));
}

TEST(TheDaemon, DoesNotReportPortsThatItCallsDeprecated) {
  EXPECT_THAT(Said("", "rocommunity  reader\ntrap2sink  127.0.0.1  trapper  162\n"), ElementsAre());
}

TEST(TheDaemon, ReadsAFileWithACommaInItsName) {
  const ScratchFolder folder;
  const std::string text = "rocommunity  reader\nrouser\n";
  EXPECT_THAT(Said(folder.Write("a,b.conf", text), text),
              ElementsAre("2: the daemon says: Error: Blank line following *****"));
}

TEST(TheDaemon, ReadsAFileInAFolderWithACommaInItsName) {
  const ScratchFolder folder;
  const std::string text = "rocommunity  reader\nrouser\n";
  folder.Write("a,b/snmpd.conf", text);
  const std::string before = std::filesystem::current_path();
  std::filesystem::current_path(folder.Path("a,b"));
  EXPECT_THAT(Said("snmpd.conf", text), ElementsAre("2: the daemon says: Error: Blank line following *****"));
  std::filesystem::current_path(before);
}

TEST(TheDaemon, IsQuotedWithoutCommunities) {
  // The daemon repeats the host, which is where the community comes to stand when the host is missing.
  const std::string text = "rocommunity  reader\n\n\ntrap2sink    127.0.0.1:s3cret  162\n";
  EXPECT_THAT(Said("", text), ElementsAre("4: the daemon says: Error: cannot create sink: *****"));
  EXPECT_THAT(Said("", text, true), ElementsAre("4: the daemon says: Error: cannot create sink: 127.0.0.1:s3cret"));
}

class ATemporaryFolder : public testing::TestWithParam<const char*> {
 protected:
  ATemporaryFolder() : m_before(std::filesystem::current_path()) {
    std::filesystem::create_directory(m_folder.Path("a,b"));
    std::filesystem::current_path(m_folder.Path());
    const char* const value = ::getenv("TMPDIR");
    m_value = value == nullptr ? std::optional<std::string>() : value;
    ::setenv("TMPDIR", GetParam(), 1);
  }
  ~ATemporaryFolder() override {
    m_value ? ::setenv("TMPDIR", m_value->c_str(), 1) : ::unsetenv("TMPDIR");
    std::filesystem::current_path(m_before);
  }

  const ScratchFolder m_folder;

 private:
  const std::filesystem::path m_before;
  std::optional<std::string> m_value;
};

TEST_P(ATemporaryFolder, IsNotNeeded) {
  EXPECT_THAT(Said("", "rouser\n"), ElementsAre("1: the daemon says: Error: Blank line following *****"));
  EXPECT_TRUE(std::filesystem::is_empty(m_folder.Path("a,b")));
}

INSTANTIATE_TEST_SUITE_P(Names, ATemporaryFolder, testing::Values("a,b", "./a,b", "/nonexistent", ""));

}  // namespace
}  // namespace devhost
