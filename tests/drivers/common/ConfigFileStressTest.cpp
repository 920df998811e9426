// A writer that takes no lock adds lines to a file while that is replaced again and again: how many lines are lost.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <iostream>
#include <set>
#include <sstream>
#include <string>
#include <thread>

#include "drivers/common/ConfigFile.h"
#include "tests/drivers/support/TemporaryFolder.h"

namespace {

using drivers::ConfigFile;

const int kLines = 1000;

// Adds one line and says whether it could.
using Append = std::function<bool(const TemporaryFolder&, const std::string& line)>;

bool AppendByRename(const TemporaryFolder& folder, const std::string& line) {
  std::string text;
  if (ConfigFile(folder.Path()).Read(text) != 0) {
    return false;
  }
  folder.Write("snmpd.conf.editor", text + line + "\n");
  std::filesystem::rename(folder.Path("snmpd.conf.editor"), folder.Path("snmpd.conf"));
  return true;
}

bool AppendInPlace(const TemporaryFolder& folder, const std::string& line) {
  const int file = ::open(folder.Path("snmpd.conf").c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
  const std::string text = line + "\n";
  const bool isWritten = file >= 0 && ::write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  ::close(file);
  return isWritten;
}

// What the agent does: read, put a first line of its own in, give back. Returns how often that succeeded.
int ReplaceUntil(const std::atomic<bool>& isDone, const ConfigFile& file) {
  int replaced = 0;
  for (int number = 0; !isDone || replaced == 0; ++number) {
    std::string text;
    if (file.Read(text) == 0) {
      const std::string changed = "section " + std::to_string(number) + text.substr(text.find('\n'));
      replaced += file.ReplaceExpected(text, changed) == 0 ? 1 : 0;
    }
  }
  return replaced;
}

// Prints what was lost and returns its share.
double ShareOfLostLines(const Append& append, std::chrono::microseconds pause) {
  const TemporaryFolder folder;
  folder.Write("snmpd.conf", "section\n");
  std::atomic<bool> isDone{false};
  int replaced = 0;
  std::thread agent([&] { replaced = ReplaceUntil(isDone, ConfigFile(folder.Path())); });
  std::set<std::string> lines;
  for (int number = 0; number < kLines; ++number) {
    const std::string line = "line " + std::to_string(number);
    if (append(folder, line)) {
      lines.insert(line);
    }
    std::this_thread::sleep_for(pause);
  }
  isDone = true;
  agent.join();
  std::istringstream stream(folder.Read("snmpd.conf"));
  const std::size_t written = lines.size();
  for (std::string line; std::getline(stream, line);) {
    lines.erase(line);
  }
  std::cout << lines.size() << " of " << written << " lines lost; " << replaced << " replacements\n";
  EXPECT_GT(replaced, 0);
  EXPECT_EQ(static_cast<std::size_t>(kLines), written);
  return static_cast<double>(lines.size()) / static_cast<double>(kLines);
}

TEST(AWriterWithoutALock, LosesHardlyAnyLineThatItAddsByRename) {
  EXPECT_LT(ShareOfLostLines(AppendByRename, std::chrono::microseconds(500)), 0.02);
}

TEST(AWriterWithoutALock, LosesHardlyAnyLineThatItAddsInPlace) {
  EXPECT_LT(ShareOfLostLines(AppendInPlace, std::chrono::microseconds(500)), 0.02);
}

}  // namespace
