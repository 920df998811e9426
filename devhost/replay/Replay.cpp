#include "devhost/replay/Replay.h"

#include <fcntl.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

#include "devhost/project/Project.h"
#include "devhost/replay/Conversation.h"
#include "devhost/report/JsonWriter.h"
#include "devhost/script/ScriptRunner.h"
#include "devhost/state/StateStore.h"
#include "devhost/system/FileText.h"
#include "devhost/system/PrivateFolder.h"

namespace devhost {

namespace {

namespace fs = std::filesystem;

// Somebody may have put the conversation into a folder that holds everything.
constexpr std::size_t kMostFiles = 1000;
constexpr std::size_t kMostBytes = std::size_t{64} * 1024 * 1024;

// Copies regular files and folders.
void CopyFolder(const std::string& from, const std::string& to) {
  std::size_t files = 0;
  std::size_t bytes = 0;
  for (fs::recursive_directory_iterator entry(from), end; entry != end; ++entry) {
    const fs::path target = fs::path(to) / entry->path().lexically_relative(from);
    if (entry->is_directory() && !entry->is_symlink()) {
      fs::create_directory(target);
      continue;
    }
    const std::string text = ReadRegularFileAt(AT_FDCWD, entry->path().string(), kMostBytes);
    bytes += text.size();
    if (++files > kMostFiles || bytes > kMostBytes) {
      throw FileError(from, "the folder of the conversation has too much in it; allowed: " + std::to_string(kMostFiles) +
                                " files of " + std::to_string(kMostBytes / 1024 / 1024) + " MiB in all");
    }
    std::ofstream copy(target, std::ios::binary);
    copy << text << std::flush;
    if (!copy) {
      throw FileError(target.string(), "cannot write it");
    }
  }
}

// Holds what happens against the lines of a conversation.
class Comparison : public Reporter {
 public:
  Comparison(const Conversation& conversation, std::string folder, Masker& secrets)
      : m_lines(conversation.lines), m_folder(std::move(folder)), m_secrets(secrets) {}

  void Report(const Occurrence& occurrence, const Where& where) override { Take(JsonLine(1, occurrence, where)); }
  void Report(const ScriptOccurrence& occurrence, const Where& where) override { Take(JsonLine(1, occurrence, where)); }
  bool Failed() const override { return !m_result.difference.what.empty(); }

  // All that comes before the line at `next`, or before the end, has come.
  void ExpectAt(std::size_t next) {
    if (!Failed() && m_result.lines < next) {
      Compare("");
    }
  }
  const ReplayResult& Result() const { return m_result; }

 private:
  void Take(const std::string& json) {
    const std::string found = Failed() ? "" : ComparedLine(json, m_folder);
    if (!found.empty()) {
      Compare(found);
    }
  }

  void Compare(const std::string& found) {
    const bool isOver = m_result.lines == m_lines.size();
    m_result.difference = CompareLines(isOver ? "" : m_lines[m_result.lines].json, found, m_secrets);
    if (!Failed()) {
      ++m_result.lines;
    } else {
      m_result.line = isOver ? (m_lines.empty() ? 0 : m_lines.back().number) + 1 : m_lines[m_result.lines].number;
    }
  }

  const std::vector<ConversationLine>& m_lines;
  std::string m_folder;
  Masker& m_secrets;
  ReplayResult m_result;
};

}  // namespace

std::vector<std::string> FindConversations(const std::string& path) {
  if (!fs::is_directory(path)) {
    return {path};
  }
  const std::string own = path + "/" + kConversationFile;
  if (fs::exists(own)) {
    return {own};
  }
  std::vector<std::string> files;
  for (const auto& entry : fs::directory_iterator(path)) {
    if (fs::exists(entry.path() / kConversationFile)) {
      files.push_back((entry.path() / kConversationFile).string());
    }
  }
  if (files.empty()) {
    throw FileError(path, std::string("neither the folder nor a folder in it has a file ") + kConversationFile);
  }
  std::sort(files.begin(), files.end());
  return files;
}

ReplayResult Replay(const std::string& file, const std::string& moduleFolder, Masker& secrets) {
  const std::string text = ReadRegularFile(file);
  const std::string folder = fs::absolute(FolderOf(file)).lexically_normal().string();
  const PrivateFolder copy;
  CopyFolder(folder, copy.Path());
  const Project project = ReadProject(PathIn(FolderOf(file), kConversationProject), moduleFolder, copy.Path());
  const DriverNames names(project.drivers);
  const Conversation conversation = ReadConversation(file, text, names, folder);
  for (const DriverEntry& driver : project.drivers) {
    secrets.Xml(driver.configXml);
  }
  Comparison comparison(conversation, copy.Path(), secrets);
  Masker shown(true);
  StateMemory states;
  ScriptRunner runner(project, names, states, comparison, shown);
  runner.Start();
  for (std::size_t i = 0; i != conversation.lines.size() && !comparison.Failed(); ++i) {
    const ConversationLine& line = conversation.lines[i];
    if (line.action) {
      comparison.ExpectAt(i);
      if (!comparison.Failed()) {
        runner.Play(*line.action, {file + ":" + std::to_string(line.number), line.number});
      }
    }
  }
  runner.Stop();
  comparison.ExpectAt(conversation.lines.size());
  return comparison.Result();
}

}  // namespace devhost
