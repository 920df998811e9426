// The conversations in contract/conversations/ are what the agent says today.
#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "devhost/contract/Validate.h"
#include "tests/scripts/Transcript.h"
#include "tests/support/ScratchFolder.h"

namespace devhost {
namespace {

using testsupport::ScratchFolder;

constexpr char kFolder[] = SOURCE_FOLDER "/contract/conversations/";

std::vector<std::string> Names() {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(kFolder)) {
    if (entry.is_directory()) {
      names.push_back(entry.path().filename().string());
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

// What the drivers say today.
std::string Recorded(const std::string& name) {
  const ScratchFolder folder;
  std::filesystem::copy(kFolder + name, folder.Path(), std::filesystem::copy_options::recursive);
  const std::string run = "$ devhost run --json --show-secrets --project project.xml script.devhost\n";
  return testsupport::PlayTranscript(run, folder.Path()).substr(run.size());
}

class AConversation : public testing::TestWithParam<std::string> {};

TEST_P(AConversation, IsWhatTheAgentSaysToday) {
  const std::string file = kFolder + GetParam() + "/conversation.ndjson";
  const std::string recorded = Recorded(GetParam());
  if (testsupport::UpdateGoldens()) {
    std::ofstream(file, std::ios::binary) << recorded;
    GTEST_SKIP() << file << " was written again: look at the change before you keep it";
  }
  EXPECT_EQ(testsupport::UnifiedDifference(ScratchFolder::ReadFile(file), recorded), "")
      << "If the new output is right, write " << file << " again with UPDATE_GOLDENS=1.";
}

TEST_P(AConversation, IsReplayedWithoutADifferenceAndStaysAsItIs) {
  const ScratchFolder folder;
  std::filesystem::copy(kFolder + GetParam(), folder.Path(), std::filesystem::copy_options::recursive);
  const testsupport::ShellResult result = testsupport::RunShell("devhost replay .", folder.Path());
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_EQ(testsupport::RunShell("diff -r . '" + (kFolder + GetParam()) + "'", folder.Path()).output, "");
}

// The XML in a line that has `begin`, behind the member `xml`.
std::vector<std::string> XmlIn(const std::string& ndjson) {
  const std::string member = "\"xml\":\"";
  std::vector<std::string> found;
  std::istringstream lines(ndjson);
  for (std::string line; std::getline(lines, line);) {
    const std::size_t at = line.find(member);
    if (line.find("\"driver\":\"agent\"") != std::string::npos && line.find("\"kind\":\"command\"") == std::string::npos &&
        at != std::string::npos) {
      std::string xml = line.substr(at + member.size(), line.rfind("\"}") - at - member.size());
      for (std::size_t quote = xml.find("\\\""); quote != std::string::npos; quote = xml.find("\\\"", quote)) {
        xml.erase(quote, 1);
      }
      found.push_back(xml);
    }
  }
  return found;
}

TEST_P(AConversation, HoldsOnlyXmlThatTheContractAllows) {
  const std::vector<std::string> all = XmlIn(ScratchFolder::ReadFile(kFolder + GetParam() + "/conversation.ndjson"));
  EXPECT_FALSE(all.empty());
  for (const std::string& xml : all) {
    EXPECT_THAT(ValidateDocument(xml, true), testing::IsEmpty()) << xml;
  }
}

INSTANTIATE_TEST_SUITE_P(Each, AConversation, testing::ValuesIn(Names()),
                         [](const testing::TestParamInfo<std::string>& conversation) {
                           std::string name = conversation.param;
                           std::replace(name.begin(), name.end(), '-', '_');
                           return name;
                         });

TEST(TheConversations, AreAllInThePageAndNoOther) {
  const std::vector<std::string> names = Names();
  EXPECT_GE(names.size(), 12U);
  std::istringstream page(ScratchFolder::ReadFile(std::string(kFolder) + "README.md"));
  std::vector<std::string> described;
  for (std::string line; std::getline(page, line);) {
    if (line.compare(0, 3, "| `") == 0) {
      described.push_back(line.substr(3, line.find('`', 3) - 3));
    }
  }
  std::sort(described.begin(), described.end());
  EXPECT_EQ(described, names);
}

}  // namespace
}  // namespace devhost
