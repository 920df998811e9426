#include "devhost/check/ConfigText.h"

#include <algorithm>
#include <array>

#include "devhost/snmpd/LineCutter.h"
#include "devhost/snmpd/WordCutter.h"

namespace devhost {

namespace {

constexpr std::size_t kLongestDirective = 65536;

constexpr char kRuleLine[] = "###########################################################################";
constexpr std::array<std::string_view, 4> kHeader = {kRuleLine, "#", "# snmpd.conf", "#"};
constexpr std::array<std::string_view, 3> kTrailer = {
    "#", "#   File contents within the \"Halvoren Section\" will be overwritten by the",
    "#   SNMP Configuration Agent of Quentara."};

// Follows the agent's reader: a section runs from one start marker to the next end marker, other markers are ignored.
class Walk {
 public:
  Place Step(std::string_view line, std::size_t number) {
    if (m_open == 0) {
      m_open = Contains(line, kStartMarker) ? number : 0;
      return m_open == 0 ? Place::Outside : Place::StartMarker;
    }
    if (Contains(line, kEndMarker)) {
      m_open = 0;
      return Place::EndMarker;
    }
    return Place::Inside;
  }
  std::size_t Open() const { return m_open; }

 private:
  std::size_t m_open = 0;
};

// Follows the names of sections in brackets. Below the name of another section, or behind it, the daemon does not take its
// own directives. A name that it does not know changes nothing for the lines below.
class DaemonSection {
 public:
  // Whether the line is of another section.
  bool Step(std::string_view line) {
    WordCutter cutter(line);
    if (cutter.AtEnd() || line[cutter.At()] != '[') {
      return m_isOther;
    }
    const std::string name = cutter.Next().text;
    const bool isKnownOther = name == "[snmp]" || name == "[agentx]";
    if (!cutter.AtEnd()) {
      return name != "[snmpd]" && name.back() == ']';
    }
    m_isOther = isKnownOther || (m_isOther && name != "[snmpd]");
    return isKnownOther;
  }

 private:
  bool m_isOther = false;
};

// A file that was edited elsewhere may end its lines with a carriage return.
std::string_view WithoutReturn(std::string_view line) {
  return line.substr(0, line.size() - (!line.empty() && line.back() == '\r' ? 1 : 0));
}

// Counts how far the lines in front of the start marker are those that the agent writes there.
class HeaderSearch {
 public:
  void Step(std::string_view line) {
    line = WithoutReturn(line);
    if (m_matched == kHeader.size() || line != kHeader[m_matched]) {
      m_matched = line == kHeader.front() ? 0 : kHeader.size();
    }
    m_matched = m_matched == kHeader.size() ? 0 : m_matched + 1;
  }
  std::size_t Length() const { return m_matched == kHeader.size() ? kHeader.size() : 0; }

 private:
  std::size_t m_matched = 0;
};

// The lines below the first end marker, up to the first that is kept.
class TrailerWalk {
 public:
  explicit TrailerWalk(Layout& layout) : m_layout(layout) {}

  void Step(std::string_view line, std::size_t number) {
    if (m_done) {
      return;
    }
    if (m_matched < kTrailer.size() && WithoutReturn(line) == kTrailer[m_matched]) {
      ++m_matched;
      m_layout.trailer = number;
    } else {
      m_matched = kTrailer.size();
    }
    if (line.empty() || line.front() != '#') {
      m_layout.droppedSetting = number;
      m_layout.firstKept = number + 1;
      m_done = true;
    }
  }
  bool IsDone() const { return m_done; }

 private:
  Layout& m_layout;
  std::size_t m_matched = 0;
  bool m_done = false;
};

}  // namespace

bool IsUtf16(std::string_view text) {
  constexpr std::size_t kEnough = 32;
  constexpr std::size_t kFewest = 4;
  if (text.substr(0, 2) == "\xFF\xFE" || text.substr(0, 2) == "\xFE\xFF") {
    return true;
  }
  std::size_t zeros[2] = {0, 0};
  const std::size_t count = std::min(text.size() & ~std::size_t{1}, kEnough);
  for (std::size_t at = 0; at != count; ++at) {
    zeros[at % 2] += text[at] == '\0' ? 1 : 0;
  }
  return count >= kFewest && std::min(zeros[0], zeros[1]) == 0 && std::max(zeros[0], zeros[1]) == count / 2;
}

std::string_view TrimmedView(std::string_view text) {
  constexpr char kBlanks[] = " \t\n\v\f\r";
  const std::size_t first = text.find_first_not_of(kBlanks);
  return first == std::string_view::npos ? std::string_view()
                                         : text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

Layout LayOut(std::string_view text) {
  Layout layout;
  layout.isUtf16 = IsUtf16(text);
  if (layout.isUtf16) {
    return layout;
  }
  Walk walk;
  HeaderSearch header;
  TrailerWalk trailer(layout);
  LineCutter lines(text);
  while (lines.Next()) {
    const std::size_t number = lines.Number();
    walk.Step(lines.Line(), number);
    if (layout.firstEnd != 0) {
      trailer.Step(lines.Line(), number);
    } else if (Contains(lines.Line(), kEndMarker)) {
      layout.firstEnd = layout.trailer = number;
    }
    if (layout.firstStart == 0 && Contains(lines.Line(), kStartMarker)) {
      layout.firstStart = number;
      layout.header = number - header.Length();
    }
    header.Step(number == 1 ? WithoutByteOrderMark(lines.Line()) : lines.Line());
  }
  layout.unclosed = walk.Open();
  if (!layout.IsReplaced()) {
    layout.firstKept = 1;
    layout.droppedSetting = 0;
  } else if (!trailer.IsDone()) {
    layout.firstKept = lines.Number() + 1;
  }
  return layout;
}

void ForEachLine(std::string_view text, const std::function<void(const ConfigLine&)>& use) {
  Walk walk;
  DaemonSection daemonSection;
  LineCutter lines(text);
  while (lines.Next()) {
    ConfigLine line;
    line.number = line.anchor = lines.Number();
    line.text = lines.Line();
    const std::size_t open = walk.Open();
    line.place = walk.Step(line.text, line.number);
    line.section = line.place == Place::EndMarker ? open : walk.Open();
    // The daemon ends a line at a NUL byte.
    const std::string_view read = line.text.substr(0, std::min(line.text.find('\0'), kLongestDirective));
    (daemonSection.Step(read) ? line.elsewhere : line.setting) = ReadDirective(read);
    use(line);
  }
  use(ConfigLine());
}

}  // namespace devhost
