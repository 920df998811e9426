#include "devhost/check/CheckFile.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>

#include "devhost/system/FileText.h"
#include "tests/devhost/check/Examples.h"

namespace devhost {
namespace {

using testing::HasSubstr;
using testsupport::ScratchFolder;

class ACheckedFile : public testing::Test {
 protected:
  // A file that only its owner may read.
  std::string File(const std::string& text) const {
    const std::string path = folder.Write("snmpd.conf", text);
    ::chmod(path.c_str(), 0600);
    return path;
  }

  const ScratchFolder folder;
};

TEST_F(ACheckedFile, IsJudgedByItsTextAndItsMode) {
  const std::string file = File("rocommunity  it's\n");
  ::chmod(file.c_str(), 0644);
  const std::vector<Finding> findings = CheckFile(file, {}).findings;
  ASSERT_EQ(findings.size(), 2u);
  EXPECT_EQ(findings[0].file, file);
  EXPECT_EQ(findings[0].line, 0u);
  EXPECT_EQ(findings[0].rule, kFileModeRule);
  EXPECT_EQ(findings[0].severity, Severity::Warning);
  EXPECT_EQ(findings[1].line, 1u);
  EXPECT_EQ(findings[1].rule, "community-misread");
}

TEST_F(ACheckedFile, ShowsItsCommunitiesWhenAsked) {
  const std::string file = File("rocommunity  it's\n");
  EXPECT_THAT(CheckFile(file, {}).findings.at(0).reason, HasSubstr("instead of *****"));
  EXPECT_THAT(CheckFile(file, {false, true}).findings.at(0).reason, HasSubstr("instead of \"it's\""));
}

TEST_F(ACheckedFile, IsReadByTheDaemonWhenAsked) {
  const std::string file = File("rocommunity  reader\nrouser\n");
  const auto daemonsWords = [](const CheckResult& result) {
    std::vector<std::size_t> lines;
    for (const Finding& finding : result.findings) {
      if (finding.rule == kDaemonRule) {
        lines.push_back(finding.line);
      }
    }
    return lines;
  };
  EXPECT_EQ(daemonsWords(CheckFile(file, {})), std::vector<std::size_t>());
  EXPECT_EQ(daemonsWords(CheckFile(file, {true, false})), std::vector<std::size_t>{2});
  EXPECT_EQ(daemonsWords(CheckText(ScratchFolder::ReadFile(file), "a text", {true, false})), std::vector<std::size_t>{2});
}

TEST_F(ACheckedFile, IsReadByTheDaemonWithTheFilesThatItIncludes) {
  const std::string included = folder.Write("included.conf", "\niqueryVersion 4\n");
  ::chmod(included.c_str(), 0600);
  const std::vector<Finding> findings =
      CheckFile(File("rocommunity  reader\nincludeFile included.conf\n"), {true, false}).findings;
  ASSERT_EQ(findings.size(), 1u);
  EXPECT_EQ(findings[0].file, included);
  EXPECT_EQ(findings[0].line, 2u);
  EXPECT_EQ(findings[0].reason, "the daemon says: Error: Unknown/disabled version: *****");
}

TEST_F(ACheckedFile, ThatTheDaemonCannotBeAskedAboutStillGivesWhatTheRulesFind) {
  const std::string program = folder.Write("snmpd", "#!/bin/sh\nkill -9 $$\n");
  ::chmod(program.c_str(), 0700);
  const std::string before = ::getenv("PATH");
  ::setenv("PATH", folder.Path().c_str(), 1);
  const CheckResult result = CheckText("rocommunity  it's\n", "a text", {true, false});
  ::setenv("PATH", before.c_str(), 1);
  EXPECT_THAT(result.daemonError, HasSubstr("snmpd was killed when it read"));
  ASSERT_EQ(result.findings.size(), 1u);
  EXPECT_EQ(result.findings[0].rule, "community-misread");
  EXPECT_EQ(result.findings[0].file, "a text");
}

TEST_F(ACheckedFile, ThatCannotBeReadIsAnError) {
  EXPECT_THROW(CheckFile(folder.Path("missing"), {}), FileError);
  EXPECT_THROW(CheckFile(folder.Path(), {}), FileError);
}

TEST_F(ACheckedFile, KeepsEachByte) {
  const std::string text = Example("marker-in-text") + std::string("\0\xFF\r", 3);
  const std::string file = File(text);
  const auto time = std::filesystem::last_write_time(file);
  CheckFile(file, {true, false});
  EXPECT_EQ(ScratchFolder::ReadFile(file), text);
  EXPECT_EQ(std::filesystem::last_write_time(file), time);
}

TEST_F(ACheckedFile, IsFoundWhenItIsWiderThanItsGroupMayRead) {
  const std::pair<mode_t, const char*> expected[] = {
      {0644, "the file's mode is 0644: others besides its owner and group may read the communities"},
      {0604, "the file's mode is 0604: others besides its owner and group may read the communities"},
      {0660, "the file's mode is 0660: others besides its owner may change it"},
      {0666, "the file's mode is 0666: others besides its owner may change it"},
      {0602, "the file's mode is 0602: others besides its owner may change it"},
      {0641, "the file's mode is 0641: nobody needs to execute it"},
      {0750, "the file's mode is 0750: nobody needs to execute it"}};
  const std::string file = File("rocommunity  reader\n");
  for (const auto& [mode, reason] : expected) {
    ::chmod(file.c_str(), mode);
    const std::vector<Finding> findings = CheckFile(file, {}).findings;
    ASSERT_EQ(findings.size(), 1u) << reason;
    EXPECT_EQ(findings[0].reason, reason);
  }
}

TEST_F(ACheckedFile, IsNotFoundWhenAtMostItsGroupMayRead) {
  const std::string file = File("rocommunity  reader\n");
  for (const mode_t mode : {0640U, 0600U, 0400U, 0440U}) {
    ::chmod(file.c_str(), mode);
    EXPECT_TRUE(CheckFile(file, {}).findings.empty()) << std::oct << mode;
  }
}

}  // namespace
}  // namespace devhost
