#include "devhost/check/Owners.h"

#include <utility>

#include "devhost/check/ConfigText.h"
#include "devhost/check/Includes.h"

namespace devhost {

namespace {

class OwnerWalk {
 public:
  explicit OwnerWalk(const std::string& text) : m_layout(LayOut(text)), m_isTrailed(HasTextBehind(text)) {}

  // `includedBy` is "" for the file that is looked at.
  void File(const std::string& text, const std::string& path, const std::string& includedBy, int depth) {
    OwnedLines lines = {0, 0, Owner::Included, includedBy.empty() ? "" : path, includedBy};
    ForEachLine(text, [&](const ConfigLine& line) {
      const Owner owner = includedBy.empty() ? OwnerOf(line) : Owner::Included;
      if (line.number == 0 || owner != lines.owner) {
        End(lines);
      }
      lines.first = lines.first == 0 ? line.number : lines.first;
      lines.last = line.number;
      lines.owner = owner;
      if (!path.empty() && FindInclude(line) != nullptr) {
        Follow(line, path, includedBy, depth, lines);
      }
    });
  }

  std::vector<OwnedLines> owners;

 private:
  // In a file that the agent wrote, there is only the empty line that each write makes again.
  bool HasTextBehind(const std::string& text) const {
    bool hasText = false;
    ForEachLine(text, [&](const ConfigLine& line) {
      hasText =
          hasText || (line.number > m_layout.trailer && line.number < m_layout.firstKept && !TrimmedView(line.text).empty());
    });
    return hasText;
  }

  Owner OwnerOf(const ConfigLine& line) const {
    if (line.number >= m_layout.firstKept) {
      return line.place == Place::Outside ? Owner::Kept : Owner::OldSection;
    }
    if (line.number < m_layout.header || m_layout.firstStart > m_layout.firstEnd) {
      return Owner::AboveIt;
    }
    return line.number > m_layout.trailer && m_isTrailed ? Owner::BehindIt : Owner::Section;
  }

  void End(OwnedLines& lines) {
    if (lines.first != 0) {
      owners.push_back(lines);
    }
    lines.first = 0;
  }

  void Follow(const ConfigLine& line, const std::string& path, const std::string& includedBy, int depth, OwnedLines& lines) {
    const std::string number = std::to_string(line.number);
    for (const IncludedFiles::File& file : m_includes.Follow(line, path, depth).files) {
      if (!file.text.empty()) {
        End(lines);
      }
      File(file.text, file.path, includedBy.empty() ? "line " + number : path + ":" + number, depth + 1);
    }
  }

  const Layout m_layout;
  const bool m_isTrailed;
  Includes m_includes;
};

}  // namespace

std::vector<OwnedLines> OwnersOf(const std::string& text, const std::string& path) {
  OwnerWalk walk(text);
  walk.File(text, path, "", 0);
  return std::move(walk.owners);
}

}  // namespace devhost
