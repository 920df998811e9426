#include <algorithm>
#include <string_view>

#include "devhost/check/Rules.h"
#include "devhost/xml/XmlCharacters.h"

// Bytes that editors and other systems leave in a file, and that the daemon does not take for what they are.
namespace devhost {

namespace {

bool HasNul(std::string_view text) {
  return Contains(text, std::string_view("\0", 1));
}

// Whether XML cannot carry a character of the text: bytes that are not UTF-8, and control characters.
bool IsUnfitForXml(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = XmlCharacterLength(text.substr(0, 4));
    if (length == 0) {
      return true;
    }
    text.remove_prefix(length);
  }
  return false;
}

void JudgeByteOrderMark(const Sight& sight, Report& report) {
  const std::string_view text = WithoutByteOrderMark(sight.line.text);
  if (text.size() == sight.line.text.size()) {
    return;
  }
  const std::string_view rest = TrimmedView(text);
  report.Add(
      std::string("a byte order mark in front of the line: the daemon takes it for the beginning of the first word, ") +
          (rest.empty()          ? "and rejects the line"
           : rest.front() == '#' ? "so this is not a comment, and it rejects the line"
                                 : "so it does not know the directive and ignores the line"),
      "save the file as UTF-8 without a byte order mark");
}

void JudgeUtf16(const Sight& sight, Report& report) {
  if (sight.isUtf16) {
    report.Add("the file is encoded in UTF-16: the daemon finds no directive in it, and the agent no section",
               "save the file as UTF-8 without a byte order mark");
  }
}

void JudgeEncoding(const Sight& sight, Report& report) {
  const ConfigLine& line = sight.line;
  if (HasNul(line.text)) {
    return;
  }
  const ReadBack& read = sight.read;
  const bool isTaken = line.IsInside() && read.sets;
  if (isTaken && (IsUnfitForXml(read.value) || IsUnfitForXml(read.target) || IsUnfitForXml(read.community))) {
    report.Add(
        "the value holds bytes that are not UTF-8, or control characters: the tool gets U+FFFD instead, and what it "
        "sends back is written into the file",
        "save the file as UTF-8");
  } else if (!line.IsInside() && !sight.grantKey.empty() && IsUnfitForXml(line.setting->words.front().text)) {
    report.Add(
        "the community holds bytes that are not UTF-8, or control characters: whoever sends the same text as UTF-8 is "
        "not let in",
        "choose a community of ASCII characters");
  }
}

void JudgeInnerReturn(const Sight& sight, Report& report) {
  std::string_view text = sight.line.text;
  text = text.substr(0, text.find_last_not_of('\r') + 1);
  const std::size_t found = text.find('\r');
  if (found != std::string_view::npos && !TrimmedView(text.substr(found)).empty()) {
    report.Add(
        std::string("a carriage return within the line: the daemon and the agent end lines at line feeds alone, so all "
                    "behind it is part of this ") +
            (sight.line.IsComment() ? "comment" : "line"),
        "end each line with a line feed");
  }
}

void JudgeBackslash(const Sight& sight, Report& report) {
  const std::string_view text = TrimmedView(sight.line.text);
  // In the agent's own lines it is part of a value that somebody has set.
  if (sight.line.setting && sight.read.kind == ReadBack::Kind::Nothing && text.back() == '\\') {
    report.Add(
        "a backslash at the end of the line: the daemon takes it for part of this line and does not join the next line "
        "to it",
        "write the directive on one line");
  }
}

void JudgeNul(const Sight& sight, Report& report) {
  if (!sight.above.hasNul && HasNul(sight.line.text)) {
    report.Add("a NUL byte: this is not a text file, and the daemon reads the line only up to it",
               "rewrite the file as plain text");
  }
}

}  // namespace

std::vector<Rule> EncodingRules() {
  using S = Severity;
  return {
      {"byte-order-mark", S::Error, JudgeByteOrderMark},
      {"utf-16", S::Error, JudgeUtf16},
      {"not-utf-8", S::Error, JudgeEncoding},
      {"carriage-return-in-line", S::Error, JudgeInnerReturn},
      {"backslash-at-line-end", S::Warning, JudgeBackslash},
      {"nul-byte", S::Error, JudgeNul},
  };
}

}  // namespace devhost
