#include "devhost/secrets/ConfigSecrets.h"

#include <algorithm>

#include "devhost/secrets/Keywords.h"
#include "devhost/xml/XmlCharacters.h"

namespace devhost {

namespace {

constexpr std::size_t npos = std::string_view::npos;
constexpr char kBlanks[] = " \t";
// The daemon's own buffer.
constexpr std::size_t kLongestLine = 1024;
// Of shorter names, too many are ordinary words: "sh ended", "pass 3".
constexpr std::size_t kShortestName = 5;

std::size_t AfterBlanks(std::string_view line, std::size_t at) {
  return std::min(line.find_first_not_of(kBlanks, at), line.size());
}

// A character of several bytes that looks like a blank or like nothing.
bool IsInvisible(std::string_view character) {
  constexpr std::string_view kOthers[] = {"\xC2\xAD", "\xE1\x9A\x80", "\xE1\xA0\x8E", "\xE3\x80\x80", "\xEF\xBB\xBF"};
  const bool isControl = character.front() == '\xC2' && static_cast<unsigned char>(character[1]) <= 0xA0;
  const bool isSpace = character.substr(0, 2) == "\xE2\x80" && (character[2] <= '\x8F' || (character[2] & 0xF8) == 0xA8);
  return isControl || isSpace || character.substr(0, 2) == "\xE2\x81" || character.substr(0, 2) == "\xEF\xBF" ||
         character.front() == '\xF3' || std::find(std::begin(kOthers), std::end(kOthers), character) != std::end(kOthers);
}

bool IsUnderstood(std::string_view line) {
  if (line.size() > kLongestLine || (!line.empty() && line.back() == '\\')) {
    return false;
  }
  while (!line.empty()) {
    const std::size_t length = XmlCharacterLength(line.substr(0, 4));
    if (length == 0 || line.front() == '\r' || line.front() == '\x7f' ||
        (length > 1 && IsInvisible(line.substr(0, length)))) {
      return false;
    }
    line.remove_prefix(length);
  }
  return true;
}

// What stands between a # and the first word of a comment: people mark what they have switched off in many ways.
std::size_t BeginOfComment(std::string_view line, std::size_t at) {
  while (at < line.size() && NameAt(line.substr(at)).empty() && static_cast<unsigned char>(line[at]) < 0x80) {
    ++at;
  }
  return at;
}

// Text that follows a name which only texts about secrets have: community=X, "value": "X", <community>X, passphrase: X.
bool IsLabel(std::string_view name, std::string_view rest) {
  const bool tells = name.find("ommunity") != npos || name.substr(0, 4) == "pass" || name.substr(0, 4) == "Pass";
  const std::size_t mark = rest.find_first_not_of("\"' \t");
  return mark != npos &&
         ((tells && std::string_view("=:>").find(rest[mark]) != npos) || (name == "value" && rest[mark] == '='));
}

// A program or a directive that takes a community behind an option, whatever stands for the blank between them.
bool TakesOptions(std::string_view name, std::string_view rest) {
  const auto next = std::find_if(rest.begin(), rest.end(), [](char c) { return c > ' ' && c < '\x7F'; });
  return (name.substr(0, 4) == "snmp" || name == "proxy") && next != rest.begin() && next != rest.end() && *next == '-';
}

// As a receiver says it: "TRAP, SNMP v1, community X".
bool IsReceived(std::string_view before, std::string_view name) {
  return name == "community" && before.size() > 4 &&
         (before.substr(before.size() - 4) == "v1, " || before.substr(before.size() - 4) == "2c, ");
}

}  // namespace

std::string WhyNotPlain(std::string_view text) {
  const std::string_view start = text.substr(0, 2);
  return start == "\xFF\xFE" || start == "\xFE\xFF" ? "it begins with a byte order mark of UTF-16"
         : text.find('\0') != npos                  ? "it holds a NUL byte"
                                                    : "";
}

bool IsComment(std::string_view line) {
  const std::size_t begin = AfterBlanks(line, 0);
  return begin < line.size() && line[begin] == '#';
}

std::size_t ShownLength(std::string_view line) {
  const bool understood = IsUnderstood(line);
  const bool isComment = IsComment(line);
  const std::size_t begin = isComment ? BeginOfComment(line, 0) : AfterBlanks(line, 0);
  const std::string_view name = NameAt(line.substr(begin));
  const std::size_t end = AfterBlanks(line, begin + name.size());
  const Keyword exact = FindKeyword(name, Spelling::Exact);
  const Keyword near = FindKeyword(name, Spelling::Near);
  const bool isWord = end == line.size() || end != begin + name.size();
  if (begin == line.size() || (isComment ? near <= Keyword::Harmless : exact == Keyword::Harmless && isWord)) {
    return understood ? ShownLengthOfFreeText(line) : exact == Keyword::Unknown ? 0 : end;
  }
  return near == Keyword::Unknown ? 0 : end;
}

std::size_t ShownLengthOfFreeText(std::string_view line) {
  bool isFirst = true;
  for (std::size_t at = 0; at < line.size();) {
    const std::string_view name = NameAt(line.substr(at));
    const std::string_view rest = line.substr(at + name.size());
    if (!name.empty()) {
      const bool isDirective =
          FindKeyword(name, Spelling::Near) == Keyword::Secret ||
          (isFirst && name.size() >= kShortestName && FindKeyword(name, Spelling::Exact) == Keyword::Hidden);
      if (isDirective || IsLabel(name, rest) || TakesOptions(name, rest) || IsReceived(line.substr(0, at), name)) {
        return AfterBlanks(line, at + name.size());
      }
      isFirst = false;
    }
    at += std::max<std::size_t>(name.size(), 1);
  }
  return line.size();
}

}  // namespace devhost
