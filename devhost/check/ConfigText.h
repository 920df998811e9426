#ifndef DEVHOST_CHECK_CONFIG_TEXT_H
#define DEVHOST_CHECK_CONFIG_TEXT_H

#include <cstddef>
#include <functional>
#include <optional>
#include <string_view>

#include "devhost/snmpd/Directive.h"

// An snmpd.conf as the agent sees it: where its sections are, and what its next write drops.
namespace devhost {

inline constexpr char kStartMarker[] = "Halvoren Section Start";
inline constexpr char kEndMarker[] = "Halvoren Section End";

inline bool Contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

// Without white space at both ends.
std::string_view TrimmedView(std::string_view text);

// Without the UTF-8 byte order mark that some editors put in front of a text.
inline std::string_view WithoutByteOrderMark(std::string_view text) {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";
  return text.substr(text.substr(0, kMark.size()) == kMark ? kMark.size() : 0);
}

// Where things are in the whole text; lines are counted from 1, and 0 means that there is none.
struct Layout {
  std::size_t firstStart = 0;  // the first line with the start marker
  std::size_t firstEnd = 0;    // the first line with the end marker
  std::size_t unclosed = 0;    // the start of a section that is open at the end of the text
  // The first line that the next write keeps. It keeps all lines unless both markers are there.
  std::size_t firstKept = 1;
  // The first line below the section that is not a comment: the next write drops it, too.
  std::size_t droppedSetting = 0;
  // The first line of the header that the agent writes above its start marker; without it, the start marker's own line.
  std::size_t header = 0;
  // The last line of the trailer; without it, the end marker's own line.
  std::size_t trailer = 0;
  bool isUtf16 = false;  // nothing else is known of such a text

  // The next write replaces a section. Otherwise it puts a new one above everything.
  bool IsReplaced() const { return firstStart != 0 && firstEnd != 0; }
};

enum class Place { Outside, StartMarker, Inside, EndMarker };

// One line, in turn.
struct ConfigLine {
  // Counted from 1; 0 after the last line, for what concerns the whole text. Those of included files are counted on from the
  // end of the file that is checked; the number in front of their first line is for what concerns their whole text.
  std::size_t number = 0;
  // The line of the file that is checked: this one, or the one that includes its file.
  std::size_t anchor = 0;
  bool isIncluded = false;
  std::string_view text;             // without its line feed
  Place place = Place::Outside;      // as the agent's reader sees it
  std::size_t section = 0;           // the line of the start marker that opened the section around this line, or 0
  std::optional<Directive> setting;  // nothing on comments and empty lines
  // A directive below a line like [snmp], or behind such a word: one of other programs than the daemon.
  std::optional<Directive> elsewhere;

  bool IsInside() const { return place == Place::Inside; }
  bool IsComment() const { return !TrimmedView(text).empty() && !setting && !elsewhere; }
};

// Finds the sections, and what the next write keeps.
Layout LayOut(std::string_view text);

// Whether the text begins with the byte order mark of UTF-16, or with ASCII characters in it.
bool IsUtf16(std::string_view text);

// Calls `use` with every line in order, then with the line 0. Of a line that is longer than any daemon takes, only the
// beginning is cut into words.
void ForEachLine(std::string_view text, const std::function<void(const ConfigLine&)>& use);

}  // namespace devhost

#endif
