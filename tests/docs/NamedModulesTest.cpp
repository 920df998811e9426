// Checks that whoever has called scripts/run can play every example: it has built the modules that the examples load.
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/ScratchFolder.h"

namespace testsupport {
namespace {

namespace fs = std::filesystem;

const fs::path kSource = SOURCE_FOLDER;

// What people read before they try something: the pages, the man page, and the help, which stands in the sources.
std::vector<fs::path> TextsWithExamples() {
  std::vector<fs::path> texts = {kSource / "README.md"};
  for (const char* const folder : {"docs", "devhost/commands", "scripts/demo"}) {
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(kSource / folder)) {
      if (entry.is_regular_file()) {
        texts.push_back(entry.path());
      }
    }
  }
  return texts;
}

// The modules without a folder that a text names as a project file does, also inside a literal of a source.
std::set<std::string> NamedModules(const std::string& text) {
  static const std::regex kModule("module=\\\\?[\"']([A-Za-z0-9_]+)\\.so");
  std::set<std::string> modules;
  for (std::sregex_iterator match(text.begin(), text.end(), kModule), end; match != end; ++match) {
    modules.insert((*match)[1]);
  }
  return modules;
}

// What a script builds.
std::set<std::string> BuiltTargets(const std::string& script) {
  static const std::regex kBuild("(?:^|\\n)build release ([^#\\n]*)");
  std::smatch build;
  std::set<std::string> targets;
  if (std::regex_search(script, build, kBuild)) {
    std::istringstream words(build[1]);
    for (std::string word; words >> word;) {
      targets.insert(word);
    }
  }
  return targets;
}

TEST(EachExample, LoadsOnlyModulesThatScriptsRunHasBuilt) {
  const std::set<std::string> built = BuiltTargets(ScratchFolder::ReadFile(kSource / "scripts/run"));
  std::size_t count = 0;
  for (const fs::path& path : TextsWithExamples()) {
    for (const std::string& module : NamedModules(ScratchFolder::ReadFile(path))) {
      EXPECT_EQ(built.count(module), 1U) << path << " loads " << module;
      ++count;
    }
  }
  EXPECT_GT(count, 5U);
}

TEST(TheModulesThatATextNames, AreThoseOfItsProjectFiles) {
  EXPECT_EQ(
      NamedModules("<driver module=\"one.so\"/> \"module=\\\"two.so\\\"\" module='three.so' module=\"/x/four.so\" five.so"),
      (std::set<std::string>{"one", "two", "three"}));
}

TEST(TheTargetsThatAScriptBuilds, StandBehindTheWordRelease) {
  EXPECT_EQ(BuiltTargets("x=1\nbuild release one two  # three\nfour\n"), (std::set<std::string>{"one", "two"}));
}

}  // namespace
}  // namespace testsupport
