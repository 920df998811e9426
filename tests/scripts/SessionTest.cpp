// Plays the transcripts under tests/data/scripts through the real program, each in a fresh copy of that folder.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
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

class ASession : public testing::TestWithParam<std::string> {};

TEST_P(ASession, PlaysAsItsGoldenTranscriptSays) {
  const ScratchFolder folder;
  std::filesystem::copy(SESSION_FOLDER, folder.Path(), std::filesystem::copy_options::recursive);
  const std::string golden = std::string(SESSION_FOLDER) + "/" + GetParam() + ".golden";
  const std::string expected = ScratchFolder::ReadFile(golden);
  const std::string played = PlayTranscript(expected, folder.Path());
  if (UpdateGoldens() && played != expected) {
    std::ofstream(golden, std::ios::binary) << played;
    GTEST_SKIP() << golden << " was written anew: look at the change before you keep it";
  }
  if (played != expected) {
    ADD_FAILURE() << UnifiedDifference(expected, played) << "If the new output is right, write " << golden
                  << " anew with UPDATE_GOLDENS=1.";
  }
}

INSTANTIATE_TEST_SUITE_P(Each, ASession, testing::ValuesIn(Sessions()),
                         [](const testing::TestParamInfo<std::string>& session) { return session.param; });

TEST(Sessions, AreFound) {
  EXPECT_GE(Sessions().size(), 10u);
}

}  // namespace
}  // namespace testsupport
