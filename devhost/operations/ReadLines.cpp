#include "devhost/operations/ReadLines.h"

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
        lines.push_back({line.number, depth > 0, depth > 0 ? path + ":" + number : "line " + number, *line.setting,
                         CommunityOf(*line.setting)});
      }
      if (FindInclude(line) != nullptr) {
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

std::size_t LineOfCommunity(const std::string& text, const std::string& community) {
  std::size_t number = 0;
  ForEachLine(text, [&](const ConfigLine& line) {
    const std::string key = line.setting && !line.IsInside() ? CommunityOf(*line.setting) : "";
    if (number == 0 && key.size() > 2 && key.substr(2) == community) {
      number = line.number;
    }
  });
  return number;
}

}  // namespace devhost
