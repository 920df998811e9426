// Runs a fuzzer once on each file. So a corpus is a test that does not need libFuzzer.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "fuzz/support/Input.h"

namespace {

std::vector<std::filesystem::path> FilesOf(const std::filesystem::path& path) {
  if (!std::filesystem::is_directory(path)) {
    return {path};
  }
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(path)) {
    files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

void Run(const std::filesystem::path& path) {
  // The name is printed first, because a sanitizer's message does not say which file it was.
  std::printf("%s\n", path.c_str());
  std::fflush(stdout);
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    throw std::runtime_error("cannot be read");
  }
  const std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  const std::vector<std::uint8_t> data(bytes.begin(), bytes.end());
  LLVMFuzzerTestOneInput(data.data(), data.size());
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: %s FILE|FOLDER...\n", argv[0]);
    return 2;
  }
  int bad = 0;
  int run = 0;
  for (int argument = 1; argument != argc; ++argument) {
    for (const std::filesystem::path& path : FilesOf(argv[argument])) {
      try {
        ++run;
        Run(path);
      } catch (const std::exception& error) {
        ++bad;
        std::printf("%s: %s\n", path.c_str(), error.what());
      }
    }
  }
  std::printf("%d inputs, %d bad\n", run, bad);
  return run == 0 || bad != 0 ? 1 : 0;
}
