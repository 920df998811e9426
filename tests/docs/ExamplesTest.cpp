// Runs the examples of every page. README.md describes how.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "drivers/localsnmpd/PortReservation.h"
#include "tests/docs/DocumentBlocks.h"
#include "tests/scripts/Transcript.h"
#include "tests/support/ScratchFolder.h"

namespace testsupport {
namespace {

const std::string kSource = SOURCE_FOLDER;

// Returns the pages with examples, relative to the project's folder.
std::vector<std::string> Pages() {
  std::vector<std::string> pages = {"tests/docs/README.md"};
  if (std::filesystem::exists(kSource + "/README.md")) {
    pages.push_back("README.md");
  }
  for (const auto& entry : std::filesystem::recursive_directory_iterator(kSource + "/docs")) {
    if (entry.path().extension() == ".md") {
      pages.push_back(entry.path().string().substr(kSource.size() + 1));
    }
  }
  std::sort(pages.begin(), pages.end());
  return pages;
}

// Returns what is wrong with the form of a block, or "".
std::string WhyWrong(const DocumentBlock& block) {
  for (const auto& [name, value] : block.attributes) {
    if ((name != "file" && name != "example" && name != "step") || value.empty() || value.find("..") != std::string::npos ||
        value.front() == '/') {
      return name + "=" + value + " is not an attribute; allowed: file=NAME, example=NAME, step=KIND";
    }
  }
  if (block.language == "console") {
    return block.text.compare(0, 2, "$ ") == 0 ? "" : "a console block starts with \"$ \" and a command";
  }
  return block.language == "devhost" && block.attributes.count("file") == 0 ? "a devhost block needs file=NAME" : "";
}

// Pages use this port where a daemon is needed. The examples run with a free one in its place.
const std::string kPort = "40161";

std::string Replaced(std::string text, const std::string& what, const std::string& by) {
  for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size())) {
    text.replace(at, what.size(), by);
  }
  return text;
}

class ThePage : public testing::TestWithParam<std::string> {};

TEST_P(ThePage, HasExamplesThatWork) {
  const ScratchFolder folder;
  std::string page = ScratchFolder::ReadFile(kSource + "/" + GetParam());
#ifdef WITHOUT_SNMP_CLIENT
  if (page.find(kPort) != std::string::npos) {
    GTEST_SKIP() << "the examples ask a daemon, which a build without the library of Net-SNMP cannot do";
  }
#endif
  std::vector<DocumentBlock> blocks = ReadBlocks(page);
  std::string updated = page;
  std::size_t shift = 0;
  // Of no other program, as long as this one lives: the daemon of a page comes and goes.
  const drivers::PortReservation reservation;
  const std::string port = std::to_string(reservation.GetPort());
  for (const DocumentBlock& block : blocks) {
    ASSERT_EQ(WhyWrong(block), "") << GetParam() << ":" << block.line;
    if (block.attributes.count("file") != 0) {
      folder.Write(block.attributes.at("file"), Replaced(block.text, kPort, port));
    }
    if (block.language != "console") {
      continue;
    }
    const std::string played = Replaced(PlayTranscript(Replaced(block.text, kPort, port), folder.Path()), port, kPort);
    updated.replace(block.begin + shift, block.text.size(), played);
    shift += played.size() - block.text.size();
    if (!UpdateGoldens() && played != block.text) {
      ADD_FAILURE() << GetParam() << ":" << block.line << "\n" << UnifiedDifference(block.text, played);
    }
  }
  if (UpdateGoldens() && updated != page) {
    std::ofstream(kSource + "/" + GetParam(), std::ios::binary) << updated;
    GTEST_SKIP() << GetParam() << " was written again: look at the change before you keep it";
  }
}

INSTANTIATE_TEST_SUITE_P(Each, ThePage, testing::ValuesIn(Pages()), [](const testing::TestParamInfo<std::string>& page) {
  std::string name = page.param;
  std::replace_if(
      name.begin(), name.end(), [](char c) { return c == '/' || c == '.' || c == '-'; }, '_');
  return name;
});

}  // namespace
}  // namespace testsupport
