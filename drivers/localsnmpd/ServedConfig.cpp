#include "drivers/localsnmpd/ServedConfig.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <set>
#include <string_view>
#include <system_error>

#include "devhost/snmpd/Directive.h"
#include "devhost/snmpd/LineCutter.h"

namespace drivers {

namespace {

namespace fs = std::filesystem;
using devhost::Directive;

const std::size_t kMostFiles = 1000;
const std::uintmax_t kMostBytes = std::uintmax_t{16} * 1024 * 1024;

// Why the daemon must not get a line with this keyword; null for other keywords.
const char* WhyForbidden(const std::string& keyword) {
  if (keyword == "agentaddress") {
    return "would open other ports";
  }
  // Once the daemon becomes another user, the system no longer kills it with the host.
  return keyword == "agentuser" || keyword == "agentgroup" ? "would let the daemon outlive the host" : nullptr;
}

// Looks through included files, and those that they include, for lines that the daemon must not get.
class IncludeJudge {
 public:
  explicit IncludeJudge(const IncludePaths& paths) : m_paths(paths) {}

  // Why the daemon must not get an include in a file of `folder`; empty when it may, and for other lines.
  std::string Judge(const Directive& directive, std::string_view line, const fs::path& folder) {
    for (const fs::path& file : FilesOf(directive, line, folder)) {
      const std::string found = JudgeFile(file);
      if (!found.empty()) {
        return found;
      }
    }
    return std::string();
  }

 private:
  std::vector<fs::path> FilesOf(const Directive& directive, std::string_view line, const fs::path& folder) const {
    const fs::path name(directive.rest);
    if (directive.keyword == "includefile") {
      // The daemon takes the blanks at the end into the name.
      return {folder / line.substr(directive.restBegin), folder / name};
    }
    if (directive.keyword == "includesearch") {
      const fs::path base = fs::path(m_paths.search) / name;
      return {fs::path(base) += ".conf", fs::path(base) += ".local.conf"};
    }
    std::vector<fs::path> files;
    if (directive.keyword == "includedir") {
      std::error_code error;
      for (fs::directory_iterator entry(fs::path(m_paths.working) / name, error), end; !error && entry != end;
           entry.increment(error)) {
        const std::string file = entry->path().string();
        const std::string suffix = ".conf";
        if (file.size() > suffix.size() && file.compare(file.size() - suffix.size(), suffix.size(), suffix) == 0) {
          files.push_back(entry->path());
        }
      }
      std::sort(files.begin(), files.end());
    }
    return files;
  }

  std::string JudgeFile(const fs::path& file) {
    std::error_code error;
    const fs::path whole = fs::weakly_canonical(file, error);
    // The daemon does not read it either.
    if (error || !fs::is_regular_file(whole, error) || !m_seen.insert(whole).second) {
      return std::string();
    }
    if (m_seen.size() > kMostFiles || fs::file_size(whole, error) > kMostBytes) {
      return "the included files are too many or too large to be looked through";
    }
    std::ifstream stream(whole, std::ios::binary);
    const std::string text(std::istreambuf_iterator<char>(stream), {});
    if (text.find('\0') != std::string::npos) {
      return whole.string() + " holds a zero byte";
    }
    for (devhost::LineCutter lines(text); lines.Next();) {
      const std::optional<Directive> directive = devhost::ReadDirective(lines.Line());
      const char* const why = directive ? WhyForbidden(directive->keyword) : nullptr;
      if (why != nullptr) {
        return whole.string() + ":" + std::to_string(lines.Number()) + " holds " + directive->keyword + ", which " + why;
      }
      const std::string found = directive ? Judge(*directive, lines.Line(), file.parent_path()) : std::string();
      if (!found.empty()) {
        return found;
      }
    }
    return std::string();
  }

  const IncludePaths& m_paths;
  std::set<fs::path> m_seen;
};

}  // namespace

ServedConfig MakeServedConfig(const std::string& text, const IncludePaths& paths) {
  ServedConfig result;
  for (devhost::LineCutter lines(text); lines.Next();) {
    std::string served(lines.Line());
    if (served.find('\0') != std::string::npos) {
      std::replace(served.begin(), served.end(), '\0', '?');
      result.notes.push_back(
          {lines.Number(), served, "the line holds a zero byte; the daemon gets a question mark in its place"});
    }
    const std::optional<Directive> directive = devhost::ReadDirective(served);
    const std::string found = directive ? IncludeJudge(paths).Judge(*directive, served, paths.device) : std::string();
    const char* const why = directive ? WhyForbidden(directive->keyword) : nullptr;
    if (why != nullptr) {
      result.notes.push_back(
          {lines.Number(), served, directive->keyword + " " + why + "; the daemon does not get this line"});
    } else if (!found.empty()) {
      result.notes.push_back({lines.Number(), served, found + "; the daemon does not get this include"});
    }
    result.text += why != nullptr || !found.empty() ? "# " : "";
    result.text += served;
    result.text += '\n';
  }
  return result;
}

}  // namespace drivers
