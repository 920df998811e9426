#include <gmock/gmock.h>

#include <algorithm>
#include <cctype>
#include <filesystem>

#include "tests/module/Shell.h"

namespace {

// Returns the names of the fuzzers, from their sources: "session" for fuzz/agent/SessionFuzzer.cpp.
std::vector<std::string> Fuzzers() {
  const std::string end = "Fuzzer.cpp";
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(SOURCE_FOLDER "/fuzz")) {
    std::string name = entry.path().filename().string();
    if (name.size() > end.size() && name.compare(name.size() - end.size(), end.size(), end) == 0) {
      name.resize(name.size() - end.size());
      std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::tolower(c); });
      names.push_back(name);
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

TEST(EachFuzzer, IsRunByTheCommand) {
  std::string line = "one fuzzer:";
  for (const std::string& name : Fuzzers()) {
    line += " " + name;
  }
  const ShellResult help = RunInShell("'" SOURCE_FOLDER "/scripts/fuzz' --help");
  EXPECT_EQ(help.status, 0);
  EXPECT_THAT(help.output, testing::HasSubstr(line + "\n"));
}

}  // namespace
