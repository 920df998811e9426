#include "devhost/secrets/KnownSecrets.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "devhost/snmpd/DirectiveNames.h"
#include "devhost/xml/XmlCharacters.h"

namespace devhost {

namespace {

constexpr std::size_t kShortest = 4;
// Of a secret that was cut off, this much gives it away.
constexpr std::size_t kShortestCut = 8;
// What is longer is learnt in pieces.
constexpr std::size_t kLongestPiece = 64;
constexpr std::size_t kMostSecrets = 250000;

// What no encoding changes.
bool IsPlainCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

// What everybody writes: hiding it would make all texts unreadable.
bool IsCommon(std::string_view word) {
  constexpr std::string_view kWords[] = {"true", "false", "default", "localhost"};
  const bool isNumbers =
      word.find_first_not_of("0123456789.") == std::string_view::npos && std::count(word.begin(), word.end(), '.') > 1;
  return isNumbers || std::find(std::begin(kWords), std::end(kWords), word) != std::end(kWords) ||
         word.find_first_not_of('*') == std::string_view::npos;
}

// Without the blanks and quotes around it, which readers of a text take away.
std::string_view Inner(std::string_view text) {
  constexpr char kAround[] = " \t\n\v\f\r\"'";
  const std::size_t begin = std::min(text.find_first_not_of(kAround), text.size());
  return text.substr(begin, text.find_last_not_of(kAround) + 1 - begin);
}

// A byte that XML cannot carry, or that begins a line.
bool HoldsOddBytes(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = XmlCharacterLength(text.substr(0, 4));
    if (length == 0 || static_cast<unsigned char>(text.front()) < ' ') {
      return true;
    }
    text.remove_prefix(length);
  }
  return false;
}

// Calls `use` with each longest run of characters for which `belongs` holds.
template <class Belongs, class Use>
void ForEachRun(std::string_view text, Belongs belongs, Use use) {
  for (auto at = text.begin(); at != text.end();) {
    const auto begin = std::find_if(at, text.end(), belongs);
    at = std::find_if_not(begin, text.end(), belongs);
    use(text.substr(static_cast<std::size_t>(begin - text.begin()), static_cast<std::size_t>(at - begin)));
  }
}

// The first bytes of a secret, as a number.
std::uint32_t StartOf(std::string_view secret) {
  std::uint32_t start = 0;
  static_assert(sizeof(start) == kShortest);
  std::memcpy(&start, secret.data(), kShortest);
  return start;
}

std::size_t CommonLength(std::string_view left, std::string_view right) {
  const auto end = left.begin() + static_cast<std::ptrdiff_t>(std::min(left.size(), right.size()));
  return static_cast<std::size_t>(std::mismatch(left.begin(), end, right.begin()).first - left.begin());
}

}  // namespace

void KnownSecrets::Learn(std::string_view secret) {
  LearnText(secret);
  // A reading takes many times the memory of a text, which may be a whole file in one line.
  if (secret.find_first_of("%&\\") != std::string_view::npos) {
    for (const Reading& reading : Unescaped(secret)) {
      LearnText(reading.text);
    }
  }
}

void KnownSecrets::LearnShort(std::string_view secret) {
  const std::string_view inner = Inner(secret);
  if (!inner.empty() && inner.size() < kShortest && !IsCommon(inner)) {
    m_short.emplace(inner);
  }
}

void KnownSecrets::LearnText(std::string_view text) {
  LearnWord(Inner(text));
  if (HoldsOddBytes(text)) {
    ForEachRun(
        text, [](char c) { return c > ' ' && c < '\x7F'; },
        [this](std::string_view word) {
          // What follows a line feed may be a directive.
          if (FindDirectiveName(word).spelling != KnownName::Spelling::Exact) {
            LearnWord(word);
          }
        });
  }
}

void KnownSecrets::LearnWord(std::string_view word) {
  if (IsCommon(word)) {
    return;
  }
  for (; word.size() >= kShortest && m_secrets.size() <= kMostSecrets;
       word.remove_prefix(std::min(word.size(), kLongestPiece))) {
    m_secrets.emplace(word.substr(0, kLongestPiece));
    m_starts.insert(StartOf(word));
  }
}

std::size_t KnownSecrets::LengthAtFront(std::string_view text) const {
  if (text.size() < kShortest || m_starts.count(StartOf(text)) == 0) {
    return 0;
  }
  // The two neighbours in the order of the set have more in common with the text than all others.
  const std::string_view front = text.substr(0, kLongestPiece);
  const auto next = m_secrets.upper_bound(front);
  std::size_t length = next == m_secrets.end() ? 0 : CommonLength(*next, front);
  length = next == m_secrets.begin() ? length : std::max(length, CommonLength(*std::prev(next), front));
  // A secret that was cut off ends where a word ends. The beginning of several words may be one that everybody writes.
  const bool isInWord =
      length != 0 && length < text.size() && IsPlainCharacter(text[length - 1]) && IsPlainCharacter(text[length]);
  const bool isCut = length >= kShortestCut && !isInWord && !IsCommon(Inner(front.substr(0, length)));
  while (!isCut && length != 0 && m_secrets.count(front.substr(0, length)) == 0) {
    --length;
  }
  return length;
}

void KnownSecrets::MarkIn(const std::vector<Reading>& readings, std::vector<bool>& hidden) const {
  for (const Reading& reading : readings) {
    for (std::size_t at = 0; at != reading.text.size(); ++at) {
      const std::size_t length = LengthAtFront(std::string_view(reading.text).substr(at));
      if (length != 0) {
        std::fill(hidden.begin() + static_cast<std::ptrdiff_t>(reading.places[at].begin),
                  hidden.begin() + static_cast<std::ptrdiff_t>(reading.places[at + length - 1].end), true);
      }
    }
  }
}

void KnownSecrets::MarkShort(std::string_view text, Short where, std::vector<bool>& hidden) const {
  const auto isInWord = [text](std::size_t at) {
    return at != 0 && at != text.size() && IsPlainCharacter(text[at - 1]) && IsPlainCharacter(text[at]);
  };
  bool isQuoted = where == Short::Everywhere;
  for (std::size_t at = 0; at != text.size(); ++at) {
    isQuoted = isQuoted != (where == Short::InQuotes && text[at] == '"');
    for (std::size_t length = 1; isQuoted && length < kShortest && at + length <= text.size(); ++length) {
      if (!isInWord(at) && !isInWord(at + length) && m_short.count(text.substr(at, length)) != 0) {
        std::fill_n(hidden.begin() + static_cast<std::ptrdiff_t>(at), length, true);
      }
    }
  }
}

std::string KnownSecrets::Mask(std::string_view text, Short where) const {
  if (m_secrets.size() > kMostSecrets) {
    return text.empty() ? "" : kMask;
  }
  if (m_secrets.empty() && m_short.empty()) {
    return std::string(text);
  }
  std::vector<bool> hidden(text.size());
  if (!m_secrets.empty()) {
    MarkIn(Unescaped(text), hidden);
    MarkIn(Decoded(text), hidden);
  }
  if (!m_short.empty()) {
    MarkShort(text, where, hidden);
  }
  std::string masked;
  for (std::size_t at = 0; at != text.size(); ++at) {
    if (!hidden[at]) {
      masked += text[at];
    } else if (at == 0 || !hidden[at - 1]) {  // secrets that overlap or touch are one
      masked += kMask;
    }
  }
  return masked;
}

}  // namespace devhost
