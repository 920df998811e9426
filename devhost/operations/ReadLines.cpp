#include "devhost/operations/ReadLines.h"

#include <utility>

#include "devhost/check/Includes.h"
#include "devhost/check/Rules.h"

namespace devhost {

namespace {

std::string CommunityOf(const Directive& setting) {
  if (setting.keyword != "com2sec" && setting.keyword != "com2sec6") {
    return GrantKey(setting);
  }
  const std::size_t first = !setting.words.empty() && setting.words.front().text == "-Cn" ? 2 : 0;
  const bool hasOne = setting.words.size() > first + 2;
  return hasOne ? (setting.keyword.back() == '6' ? "6 " : "4 ") + setting.words[first + 2].text : "";
}

class Walk {
 public:
  void File(const std::string& text, const std::string& path, int depth) {
    ForEachLine(text, [&](const ConfigLine& line) {
      if (line.setting) {
        const std::string number = std::to_string(line.number);
        lines.push_back({line.number, depth > 0, line.IsInside(), depth > 0 ? path + ":" + number : "line " + number,
                         *line.setting, CommunityOf(*line.setting)});
      }
      if (FindInclude(line) != nullptr && !path.empty()) {
        for (const IncludedFiles::File& file : m_includes.Follow(line, path, depth).files) {
          File(file.text, file.path, depth + 1);
        }
      }
    });
  }

  std::vector<ReadLine> lines;

 private:
  Includes m_includes;
};

}  // namespace

std::vector<ReadLine> ReadLinesOf(const std::string& text, const std::string& path) {
  Walk walk;
  walk.File(text, path, 0);
  return std::move(walk.lines);
}

std::vector<ReadLine> LinesOfCommunity(const std::string& text, const std::string& path, const std::string& community) {
  std::vector<ReadLine> found;
  for (ReadLine& line : ReadLinesOf(text, path)) {
    const std::size_t family = 2;  // "4 " or "6 "
    if (!line.isInSection && line.community.size() > family && line.community.substr(family) == community) {
      found.push_back(std::move(line));
    }
  }
  return found;
}

}  // namespace devhost
