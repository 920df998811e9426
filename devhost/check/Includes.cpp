#include "devhost/check/Includes.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

namespace devhost {

namespace {

// The daemon's own bound.
constexpr int kDeepest = 16;

constexpr char kWriteFile[] = "write includeFile with the path of a file, or includeDir with that of a folder";

// All of the line behind the keyword: the daemon knows no quotes, comments and blanks there.
std::string NameIn(const ConfigLine& line, const Directive& include) {
  return std::string(line.text.substr(include.restBegin));
}

bool HasOddEnd(const std::string& name) {
  return name.find_first_of("\"'#") != std::string::npos || TrimmedView(name).size() != name.size();
}

// Where the daemon looks for files that are to be searched.
std::string SearchPath() {
  const char* const path = std::getenv("SNMPCONFPATH");
  return path != nullptr ? path : "/etc/snmp:/usr/share/snmp";
}

}  // namespace

bool IsInclude(std::string_view keyword) {
  return keyword == "includefile" || keyword == "includedir" || keyword == "includesearch" || keyword == "include";
}

const Directive* FindInclude(const ConfigLine& line) {
  const bool isInclude = line.setting && IsInclude(line.setting->keyword) && TrimmedView(line.text).front() != '[';
  return isInclude && !line.setting->rest.empty() ? &*line.setting : nullptr;
}

void Includes::Search(const std::string& name, Found& found) {
  constexpr std::string_view kSuffix = ".conf";
  const bool hasSuffix =
      name.size() > kSuffix.size() && std::string_view(name).substr(name.size() - kSuffix.size()) == kSuffix;
  const std::string stem = name.substr(0, name.size() - (hasSuffix ? kSuffix.size() : 0));
  const std::string path = SearchPath();
  for (std::size_t at = 0; at <= path.size();) {
    const std::size_t end = std::min(path.find(':', at), path.size());
    for (const char* const ending : {".conf", ".local.conf"}) {
      m_files.Read(path.substr(at, end - at) + "/" + stem + ending, found.files);
    }
    at = end + 1;
  }
  found.problem = found.files.empty() ? "no file that the daemon would look for under this name can be read" : "";
}

Includes::Found Includes::Follow(const ConfigLine& line, const std::string& path, int depth) {
  const Directive& include = *FindInclude(line);
  const std::string name = NameIn(line, include);
  Found found;
  found.remedy = "correct the name, or remove the line";
  if (include.keyword == "include") {
    found.problem = "the daemon has several directives of this kind and ignores this one";
    found.remedy = kWriteFile;
  } else if (depth == kDeepest) {
    found.problem = "files include each other too deeply: the daemon stops here";
    found.remedy = "remove the line, or the one that leads here";
  } else if (include.keyword == "includesearch") {
    Search(name, found);
  } else if (include.keyword == "includedir") {
    found.problem = m_files.ReadFolder(name, found.files);
  } else {
    found.problem = m_files.Read((std::filesystem::path(path).parent_path() / name).string(), found.files);
  }
  if (!found.problem.empty() && include.keyword != "include" && HasOddEnd(name)) {
    found.problem += "; the daemon takes all that follows for the name: quotes, comments and blanks, a carriage return, too";
  }
  return found;
}

}  // namespace devhost
