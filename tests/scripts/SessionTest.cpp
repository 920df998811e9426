// Plays the transcripts under tests/data/scripts through the real program, each in a fresh copy of that folder.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tests/scripts/Transcript.h"
#include "tests/support/ScratchFolder.h"

namespace testsupport {
namespace {

std::vector<std::string> Sessions() {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(SESSION_FOLDER)) {
    if (entry.path().extension() == ".golden") {
      names.push_back(entry.path().stem().string());
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

bool ContainsWord(const std::string& line, const std::string& word) {
  const auto isWordAt = [&line](std::size_t at) {
    return at < line.size() && std::isalnum(static_cast<unsigned char>(line[at])) != 0;
  };
  for (std::size_t at = line.find(word); at != std::string::npos; at = line.find(word, at + 1)) {
    if ((at == 0 || !isWordAt(at - 1)) && !isWordAt(at + word.size())) {
      return true;
    }
  }
  return false;
}

class ASession : public testing::TestWithParam<std::string> {};

TEST_P(ASession, PlaysAsItsGoldenTranscriptSays) {
  const ScratchFolder folder;
  std::filesystem::copy(SESSION_FOLDER, folder.Path(), std::filesystem::copy_options::recursive);
  const std::string golden = std::string(SESSION_FOLDER) + "/" + GetParam() + ".golden";
  const std::string expected = ScratchFolder::ReadFile(golden);
  const std::string played = PlayTranscript(expected, folder.Path());
  if (UpdateGoldens() && played != expected) {
    std::ofstream(golden, std::ios::binary) << played;
    GTEST_SKIP() << golden << " was written again: look at the change before you keep it";
  }
  if (played != expected) {
    ADD_FAILURE() << UnifiedDifference(expected, played) << "If the new output is right, write " << golden
                  << " again with UPDATE_GOLDENS=1.";
  }
}

INSTANTIATE_TEST_SUITE_P(Each, ASession, testing::ValuesIn(Sessions()),
                         [](const testing::TestParamInfo<std::string>& session) { return session.param; });

// Returns every community in the files of the sessions: in settings, XML, snmpd.conf or scripts.
std::set<std::string> Communities() {
  const std::regex places(
      "<(?:snmpCommunity(?:Read|Write)Setting|community)>([^<]+)<|community=\"([^\"]+)\"|"
      "name=\"community(?:Read|Write)\"\\s+value=\"([^\"]+)\"|r[ow]community\\s+(?:\"([^\"]+)\"|([^\\s\"]\\S*))|"
      "trap2sink\\s+\\S+\\s+(?:\"([^\"]+)\"|([^\\s\"]\\S*))|set community(?:Read|Write) (?:'([^']+)'|([^'\\s]\\S*))");
  std::set<std::string> communities;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(SESSION_FOLDER)) {
    if (!entry.is_regular_file() || entry.path().extension() == ".golden") {
      continue;
    }
    const std::string text = ScratchFolder::ReadFile(entry.path());
    for (std::sregex_iterator match(text.begin(), text.end(), places), end; match != end; ++match) {
      for (std::size_t group = 1; group != match->size(); ++group) {
        communities.insert((*match)[group].str());
      }
    }
  }
  communities.erase("");
  return communities;
}

// Returns what the sessions print, except those that ask for secrets.
TEST(NoSession, PrintsACommunityUnlessItIsAskedTo) {
  const std::set<std::string> communities = Communities();
  ASSERT_TRUE(communities.count("my house") == 1 && communities.count("byhand") == 1 &&
              communities.count("hidden one") == 1);
  std::size_t masked = 0;
  for (const std::string& session : Sessions()) {
    std::istringstream golden(ScratchFolder::ReadFile(std::string(SESSION_FOLDER) + "/" + session + ".golden"));
    bool asked = false;
    for (std::string line; std::getline(golden, line);) {
      if (line.compare(0, 2, "$ ") == 0) {
        asked = line.find("--show-secrets") != std::string::npos;
      } else if (!asked) {
        masked += line.find("*****") != std::string::npos ? 1 : 0;
        for (const std::string& community : communities) {
          EXPECT_FALSE(ContainsWord(line, community)) << session << " shows " << community << ": " << line;
        }
      }
    }
  }
  EXPECT_GE(masked, 15u);
}

TEST(Sessions, AreFound) {
  EXPECT_GE(Sessions().size(), 10u);
}

}  // namespace
}  // namespace testsupport
