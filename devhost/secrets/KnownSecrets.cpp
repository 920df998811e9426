#include "devhost/secrets/KnownSecrets.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <iterator>

#include "devhost/secrets/Keywords.h"

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

bool IsBlank(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

// What everybody writes: hiding it would make all texts unreadable.
bool IsCommon(std::string_view word) {
  constexpr std::string_view kWords[] = {"true", "false", "default", "localhost"};
  const bool isNumbers =
      word.find_first_not_of("0123456789.") == std::string_view::npos && std::count(word.begin(), word.end(), '.') > 1;
  return isNumbers || std::find(std::begin(kWords), std::end(kWords), word) != std::end(kWords) ||
         word.find_first_not_of('*') == std::string_view::npos;
}

std::string_view WithoutBlanksBehind(std::string_view text) {
  while (!text.empty() && IsBlank(text.back())) {
    text.remove_suffix(1);
  }
  return text;
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
  if (secret.find('%') != std::string_view::npos) {
    const std::string decoded = PercentDecoded(secret);
    if (decoded != secret) {
      Learn(decoded);
    }
  }
  LearnWord(secret);
  const auto learnPart = [this](std::string_view word) {
    // A line of a configuration that is not understood holds the names of its directives.
    if (word != "snmp" && word != "snmpd" && FindKeyword(word, Spelling::Exact) == Keyword::Unknown) {
      LearnWord(word);
    }
  };
  ForEachRun(
      secret, [](char c) { return !IsBlank(c); }, learnPart);
  ForEachRun(secret, IsPlainCharacter, learnPart);
}

void KnownSecrets::LearnWhole(std::string_view secret) {
  const std::string decoded = PercentDecoded(secret);
  const auto isControl = [](char c) { return static_cast<unsigned char>(c) < ' '; };
  if (std::any_of(decoded.begin(), decoded.end(), isControl)) {
    return Learn(secret);
  }
  LearnWord(secret);
  LearnWord(decoded);
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
  // The beginning of several words may be one that everybody writes.
  const bool isCut = length >= kShortestCut && !IsCommon(WithoutBlanksBehind(front.substr(0, length)));
  while (!isCut && length != 0 && m_secrets.count(front.substr(0, length)) == 0) {
    --length;
  }
  return length;
}

std::string KnownSecrets::Mask(std::string_view text) const {
  if (m_secrets.size() > kMostSecrets) {
    return text.empty() ? "" : kMask;
  }
  std::string masked;
  std::size_t hiddenTo = 0;
  for (std::size_t at = 0; at != text.size(); ++at) {
    const std::size_t length = m_secrets.empty() ? 0 : LengthAtFront(text.substr(at));
    // Secrets that overlap or touch are one.
    if (length != 0 && (at == 0 || at > hiddenTo)) {
      masked += kMask;
    }
    hiddenTo = length == 0 ? hiddenTo : std::max(hiddenTo, at + length);
    if (at >= hiddenTo) {
      masked += text[at];
    }
  }
  return masked;
}

std::string PercentDecoded(std::string_view text) {
  std::string decoded;
  for (std::size_t at = 0; at < text.size(); ++at) {
    unsigned char code = 0;
    const char* const digits = text.data() + at + 1;
    const bool isCode =
        text[at] == '%' && at + 2 < text.size() && std::from_chars(digits, digits + 2, code, 16).ptr == digits + 2;
    decoded += isCode ? static_cast<char>(code) : text[at];
    at += isCode ? 2 : 0;
  }
  return decoded;
}

}  // namespace devhost
