// Checks that every file that a page names exists, so that whoever moves a file also corrects the pages.
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <string>
#include <vector>

#include "tests/support/ScratchFolder.h"

namespace testsupport {
namespace {

namespace fs = std::filesystem;

const fs::path kSource = SOURCE_FOLDER;

std::vector<fs::path> Pages() {
  std::vector<fs::path> pages = {kSource / "README.md"};
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(kSource / "docs")) {
    if (entry.path().extension() == ".md") {
      pages.push_back(entry.path());
    }
  }
  return pages;
}

// Returns the paths from the project's folder that a page names: `config/SectionMerge.cpp`, docs/ui-commands.md.
std::vector<std::string> NamedFiles(const std::string& page) {
  static const std::regex kPath(
      "`((?:agent|bench|config|device|devhost|drivers|fuzz|host|reentry|scripts|tests|variables)/[A-Za-z0-9_./-]*)`|"
      "[^/](docs/[A-Za-z0-9_/-]+\\.md)");
  std::vector<std::string> files;
  for (std::sregex_iterator match(page.begin(), page.end(), kPath), end; match != end; ++match) {
    files.push_back((*match)[1].matched ? (*match)[1] : (*match)[2]);
  }
  return files;
}

TEST(EachPage, NamesOnlyFilesThatExist) {
  for (const fs::path& page : Pages()) {
    for (const std::string& file : NamedFiles(ScratchFolder::ReadFile(page))) {
      EXPECT_TRUE(fs::exists(kSource / file)) << page << " names " << file;
    }
  }
}

TEST(TheFilesThatAPageNames, AreItsPathsInBackticksAndItsPages) {
  EXPECT_EQ(NamedFiles("`config/A.cpp` config/B.cpp `docs/c.md` docs/d.md `devhost/engine/` `scripts/test all` `other/E.h`"),
            (std::vector<std::string>{"config/A.cpp", "docs/c.md", "docs/d.md", "devhost/engine/"}));
}

}  // namespace
}  // namespace testsupport
