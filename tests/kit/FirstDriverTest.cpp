// Runs the commands of the page "Your first driver", as a reader would.

#include <gmock/gmock.h>

#include <string>

#include "tests/docs/DocumentBlocks.h"
#include "tests/module/Shell.h"
#include "tests/support/ScratchFolder.h"

namespace {

using testing::HasSubstr;
using testsupport::DocumentBlock;
using testsupport::ScratchFolder;

TEST(TheFirstDriver, ComesOutAsThePageSays) {
  const ScratchFolder home;
  std::string script = "set -e\nexport HOME='" + home.Path() + "' CXX='" COMPILER "'\ncd '" SOURCE_FOLDER "'\n";
  std::string outputs;
  std::size_t commands = 0;
  for (const DocumentBlock& block :
       testsupport::ReadBlocks(ScratchFolder::ReadFile(SOURCE_FOLDER "/docs/first-driver.md"))) {
    const auto step = block.attributes.find("step");
    if (step == block.attributes.end()) {
      continue;
    }
    if (step->second == "install") {
      // The page builds with the release preset; what is tested is this build.
      std::string text = block.text;
      const std::string folder = "build/release";
      const std::size_t place = text.find(folder);
      ASSERT_NE(place, std::string::npos);
      script += text.replace(place, folder.size(), BUILD_FOLDER);
    } else if (step->second == "run") {
      script += block.text;
      ++commands;
    } else if (step->second == "edit") {
      // The reader puts these lines in the place of the one line that they replace.
      script += "sed -i -e '/int Reboot() override/{r " + home.Write("edit", block.text) + "' -e 'd}' Kettle.cpp\n";
    } else {
      ASSERT_EQ(step->second, "output") << block.line;
      outputs += block.text;
    }
  }
  ASSERT_GE(commands, 3U);
  const ShellResult result = RunInShell("bash '" + home.Write("script", script) + "'");
  EXPECT_EQ(result.status, 0) << result.output;
  ASSERT_NE(outputs, "");
  for (std::size_t begin = 0; begin < outputs.size(); begin = outputs.find('\n', begin) + 1) {
    EXPECT_THAT(result.output, HasSubstr(outputs.substr(begin, outputs.find('\n', begin) - begin)));
  }
}

}  // namespace
