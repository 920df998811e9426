#include "devhost/secrets/ConfigSecrets.h"

#include <algorithm>
#include <unordered_map>

#include "devhost/secrets/Explanation.h"
#include "devhost/snmpd/DirectiveNames.h"
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

bool IsNameByte(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

bool IsWordByte(char c) {
  return static_cast<unsigned char>(c) >= 0x80 || IsNameByte(c);
}

// The word at the front of a text, with what may be letters of other scripts in it.
std::string_view WordAt(std::string_view text) {
  const auto end = std::find_if_not(text.begin(), text.end(), IsWordByte);
  return text.substr(0, static_cast<std::size_t>(end - text.begin()));
}

// What follows a word makes a secret of it: community=X, "value": "X", <community>X, passphrase: X.
bool HasSign(std::string_view word, std::string_view rest, Follows follows) {
  const std::size_t mark = rest.find_first_not_of("\"' \t");
  const bool isSecret = follows == Follows::SecretOrText || word.substr(0, 4) == "pass" || word.substr(0, 4) == "Pass";
  return mark != npos &&
         ((isSecret && std::string_view("=:>").find(rest[mark]) != npos) || (word == "value" && rest[mark] == '='));
}

// A program or a directive that takes a community behind an option, whatever stands for the blank between them.
bool TakesOptions(std::string_view word, std::string_view rest) {
  const auto next = std::find_if(rest.begin(), rest.end(), [](char c) { return c > ' ' && c < '\x7F'; });
  return (word.substr(0, 4) == "snmp" || word == "proxy") && next != rest.begin() && next != rest.end() && *next == '-';
}

// Where a secret may begin.
struct SecretPlace {
  std::size_t word;    // where the word in front of it begins; npos when there is none
  std::size_t secret;  // what is hidden
  bool isFirst;        // that word is the first one of the line
};

// `isComment` says that a directive may have been switched off, in whatever spelling.
SecretPlace FindSecretPlace(std::string_view line, WrittenBy author, bool isComment) {
  bool isFirst = true;
  // A long text has the same words many times.
  std::unordered_map<std::string_view, KnownName> names;
  for (std::size_t at = 0; at < line.size();) {
    const std::string_view word = WordAt(line.substr(at));
    if (word.empty()) {
      ++at;
      continue;
    }
    const auto [name, isNew] = names.try_emplace(word);
    if (isNew) {
      name->second = FindDirectiveName(word);
    }
    const KnownName& known = name->second;
    const std::string_view rest = line.substr(at + word.size());
    const bool isDirective = known.follows == Follows::Anything && isFirst &&
                             (isComment || (word.size() >= kShortestName && known.spelling == KnownName::Spelling::Exact));
    const bool isNamed =
        author == WrittenBy::Others && (known.follows == Follows::SecretOrText || (isComment && TellsOfSecret(word)));
    const bool isMarked = HasSign(word, rest, known.follows) || TakesOptions(word, rest);
    if (known.follows == Follows::Secret || isDirective || isNamed || isMarked) {
      // What is not quite a name may have the secret in it.
      const bool isShown = isMarked || known.spelling != KnownName::Spelling::Near;
      return {at, isShown ? AfterBlanks(line, at + word.size()) : at, isFirst};
    }
    isFirst = false;
    at += word.size();
  }
  return {npos, line.size(), false};
}

std::size_t ShownLengthOfComment(std::string_view line) {
  if (IsStockComment(line)) {
    return line.size();
  }
  const SecretPlace place = FindSecretPlace(line, WrittenBy::Others, true);
  if (place.word == npos) {
    return LengthOfExplanation(line);
  }
  // What stands in front of the directive may be about the secret, too.
  const auto first = static_cast<std::size_t>(std::find_if(line.begin(), line.end(), IsWordByte) - line.begin());
  return place.isFirst ? place.secret : first;
}

}  // namespace

std::string WhyNotPlain(std::string_view text) {
  const std::string_view start = text.substr(0, 2);
  return start == "\xFF\xFE" || start == "\xFE\xFF" ? "it begins with a byte order mark of UTF-16"
         : text.find('\0') != npos                  ? "it holds a NUL byte"
                                                    : "";
}

std::string_view NameAt(std::string_view text) {
  const auto end = std::find_if_not(text.begin(), text.end(), IsNameByte);
  return text.substr(0, static_cast<std::size_t>(end - text.begin()));
}

std::size_t LengthOfKeyword(std::string_view line) {
  std::size_t begin = 0;
  while (begin < line.size() && NameAt(line.substr(begin)).empty()) {
    ++begin;
  }
  const std::string_view name = NameAt(line.substr(begin));
  return FindDirectiveName(name).spelling == KnownName::Spelling::Near ? 0 : begin + name.size();
}

bool IsComment(std::string_view line) {
  const std::size_t begin = AfterBlanks(line, 0);
  return begin < line.size() && line[begin] == '#';
}

std::size_t ShownLength(std::string_view line) {
  const bool isUnderstood = IsUnderstood(line);
  if (IsComment(line)) {
    return isUnderstood ? ShownLengthOfComment(line) : 0;
  }
  const std::size_t begin = AfterBlanks(line, 0);
  const std::string_view name = NameAt(line.substr(begin));
  const std::size_t end = AfterBlanks(line, begin + name.size());
  const bool isWord = end == line.size() || end != begin + name.size();
  const KnownName known = FindDirectiveName(name);
  const bool isExact = known.spelling == KnownName::Spelling::Exact;
  if (begin == line.size() || (isExact && known.follows == Follows::Harmless && isWord && isUnderstood)) {
    return isUnderstood ? ShownLengthOfFreeText(line, WrittenBy::Others) : 0;
  }
  return known.spelling != KnownName::Spelling::Near ? end : 0;
}

std::size_t ShownLengthOfFreeText(std::string_view line, WrittenBy author) {
  return FindSecretPlace(line, author, false).secret;
}

}  // namespace devhost
