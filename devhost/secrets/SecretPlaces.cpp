#include "devhost/secrets/SecretPlaces.h"

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <utility>

#include "devhost/secrets/SecretOptions.h"
#include "devhost/secrets/Secrets.h"
#include "devhost/snmpd/WordCutter.h"

namespace devhost {

namespace {

constexpr std::size_t npos = std::string_view::npos;

// Where the secrets of a directive stand: in one of its words, as in one of its forms below, or in all of its rest.
enum class Kind { First, Second, Third, Sink, Options, User, StoredUser, Rest };

Kind const* FindKind(std::string_view keyword) {
  static const std::unordered_map<std::string_view, Kind> kKinds = {
      {"rocommunity", Kind::First},       {"rocommunity6", Kind::First},     {"rwcommunity", Kind::First},
      {"rwcommunity6", Kind::First},      {"trapcommunity", Kind::First},    {"authcommunity", Kind::Second},
      {"smuxpeer", Kind::Second},         {"com2sec", Kind::Third},          {"com2sec6", Kind::Third},
      {"com2secunix", Kind::Third},       {"trapsink", Kind::Sink},          {"trap2sink", Kind::Sink},
      {"informsink", Kind::Sink},         {"trapsess", Kind::Options},       {"proxy", Kind::Options},
      {"createuser", Kind::User},         {"usmuser", Kind::StoredUser},     {"defcommunity", Kind::Rest},
      {"defpassphrase", Kind::Rest},      {"defauthpassphrase", Kind::Rest}, {"defprivpassphrase", Kind::Rest},
      {"defauthmasterkey", Kind::Rest},   {"defprivmasterkey", Kind::Rest},  {"defauthlocalizedkey", Kind::Rest},
      {"defprivlocalizedkey", Kind::Rest}};
  const auto found = kKinds.find(keyword);
  return found == kKinds.end() ? nullptr : &found->second;
}

bool IsLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// Returns a word as a keyword, in lower case. Leaves out the marks that may stand around it in a comment, a difference or a
// message, and those that the daemon ignores. Returns "" when the word is too long for a keyword.
std::string_view Normal(std::string_view word, char (&space)[24]) {
  constexpr std::string_view kMarks = "#\"'\\`+-<>()|,";
  std::size_t size = 0;
  for (const char c : word) {
    if (kMarks.find(c) != npos) {
      continue;
    }
    if (size == sizeof(space)) {
      return "";
    }
    space[size++] = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  }
  return {space, size};
}

// Returns the name in front of `end`: the letters that stand there.
std::string_view NameBefore(std::string_view text, std::size_t end) {
  std::size_t begin = end;
  while (begin > 0 && IsLetter(text[begin - 1])) {
    --begin;
  }
  return text.substr(begin, end - begin);
}

bool NamesCommunity(std::string_view name) {
  return name.find("ommunity") != npos;
}

class Scanner {
 public:
  explicit Scanner(std::string_view line) : m_line(line), m_end(line.size()) {
    while (m_end > 0 && IsConfigBlank(line[m_end - 1])) {
      --m_end;
    }
    m_lastOdd = line.substr(0, m_end).find_last_of("\"'\\\t");
  }

  std::vector<SecretPlace> Scan() {
    std::size_t at = 0;
    for (;;) {
      while (at < m_end && IsConfigBlank(m_line[at])) {
        ++at;
      }
      if (at >= std::min(m_end, m_restFrom)) {
        break;
      }
      std::size_t end = at;
      while (end < m_end && !IsConfigBlank(m_line[end])) {
        ++end;
      }
      LookAt(at, end);
      m_before = m_line.substr(at, end - at);
      at = end;
    }
    return MergedPlaces(std::move(m_places));
  }

 private:
  void LookAt(std::size_t begin, std::size_t end) {
    const std::string_view word = m_line.substr(begin, end - begin);
    char space[24];
    const Kind* const kind = FindKind(Normal(word, space));
    if (kind != nullptr) {
      return Follow(*kind, end);
    }
    if (word.find("snmp") != npos && IsCommand(word)) {
      return Options(end);
    }
    if (NamesCommunity(word)) {
      Told(begin, end);
    }
    if (word.find('=') != npos) {
      Values(begin, end);
    }
  }

  void Follow(Kind kind, std::size_t from) {
    switch (kind) {
      case Kind::First:
        return Word(from, 0);
      case Kind::Second:
        return Word(from, 1);
      case Kind::Third:
        return Word(from, 2);
      case Kind::Sink:
        return Sink(from);
      case Kind::Options:
        return Options(from);
      case Kind::User:
        return User(from);
      case Kind::StoredUser:
        return StoredUser(from);
      case Kind::Rest:
        break;
    }
    const WordCutter cutter(m_line, from);
    if (cutter.At() < m_end && m_line.substr(cutter.At(), m_end - cutter.At()) != "\"\"") {
      HideFrom(cutter.At());
    }
  }

  // Returns the next word behind a directive. A line may have many directives, so none of them may read far. A word that is
  // too long for any use is hidden with all that follows it.
  DirectiveWord Cut(WordCutter& cutter) {
    constexpr std::size_t kLongestWord = 1024;
    DirectiveWord word = cutter.Next();
    if (word.end - word.begin > kLongestWord) {
      HideFrom(word.begin);
    }
    return word;
  }

  // Hides the word behind `others` other words, not counting a context (-Cn NAME).
  void Word(std::size_t from, std::size_t others) {
    WordCutter cutter(m_line, from);
    for (std::size_t i = 0; i != others && !cutter.AtLineEnd(); ++i) {
      if (Cut(cutter).text != "-Cn" || cutter.AtLineEnd()) {
        continue;
      }
      Cut(cutter);
      if (others++ == kMostOptions) {
        return HideFrom(cutter.At());
      }
    }
    if (!cutter.AtLineEnd()) {
      Hide(Cut(cutter));
    }
  }

  // TARGET [COMMUNITY [PORT]]. The daemon cuts this directive only at blanks, so with quotes the parts are not certain.
  void Sink(std::size_t from) {
    WordCutter cutter(m_line, from);
    for (std::size_t i = 0; !cutter.AtLineEnd() && IsSinkOption(cutter); ++i) {
      Cut(cutter);
      if (i == kMostOptions) {
        return HideFrom(cutter.At());
      }
    }
    if (cutter.AtLineEnd()) {
      return;
    }
    const std::size_t gap = cutter.At() - from;
    const DirectiveWord target = Cut(cutter);
    if (m_line.substr(target.begin, target.end - target.begin).find_first_of("\"'\\") != npos) {
      return HideFrom(target.begin);
    }
    // When the target is empty, the agent's line has the community in its place, behind twice as many blanks.
    const bool noTarget = gap == 4 || (gap > 4 && m_line.substr(from, gap).find('\t') != npos);
    if (noTarget && (cutter.AtLineEnd() || cutter.At() - target.end == 2)) {
      Hide(target);
    } else if (noTarget && IsUnclearFrom(from)) {
      HideFrom(target.begin);
    }
    if (m_restFrom != npos || cutter.AtLineEnd()) {
      return;
    }
    const DirectiveWord community = Cut(cutter);
    Hide(community);
    if (m_restFrom == npos && !cutter.AtLineEnd()) {
      const std::string port = Cut(cutter).text;
      const bool isPort = port == kMask || std::all_of(port.begin(), port.end(), IsDigit);
      if (!isPort || !cutter.AtLineEnd()) {
        HideFrom(community.begin);
      }
    }
  }

  // Moves `cutter` behind the name of an option, when it has a value, and returns whether there was one.
  bool IsSinkOption(WordCutter& cutter) {
    WordCutter ahead = cutter;
    const std::string word = Cut(ahead).text;
    if ((word != "-name" && word != "-tag" && word != "-profile") || ahead.AtLineEnd()) {
      return false;
    }
    cutter = ahead;
    return true;
  }

  void Options(std::size_t from) {
    if (m_optionsSeen) {
      return;  // the first search went to the end of the line
    }
    m_optionsSeen = true;
    SecretOptionWalk walk;
    for (WordCutter cutter(m_line, from); !cutter.AtLineEnd();) {
      DirectiveWord word = cutter.Next();
      const std::optional<std::size_t> offset = walk.Step(word.text);
      if (offset) {
        const bool plain = m_line.substr(word.begin, word.end - word.begin) == word.text;
        word.begin += plain ? *offset : 0;
        HideWord(word);
      }
    }
  }

  // NAME [-e ENGINE] (PROTOCOL PASSPHRASE)...; a key instead of a passphrase stands behind -m or -l.
  void User(std::size_t from) {
    WordCutter cutter(m_line, from);
    bool named = false;
    bool protocol = true;  // whether a protocol may come next
    for (int i = 0; i != 12 && !cutter.AtLineEnd(); ++i) {
      const DirectiveWord word = Cut(cutter);
      if (word.text == "-e" && !cutter.AtLineEnd()) {
        Cut(cutter);
      } else if (!named) {
        named = true;
      } else if (protocol && IsProtocol(word.text)) {
        protocol = false;
      } else if (word.text != "-m" && word.text != "-l") {
        HideWord(word);
        protocol = true;
      }
    }
  }

  static bool IsProtocol(std::string_view word) {
    char space[24];
    const std::string_view name = Normal(word, space);
    const std::string_view start = name.substr(0, 3);
    return start == "md5" || start == "sha" || start == "des" || start == "aes" || name == "default";
  }

  // A user as the daemon stores it: the keys are the eighth word and the words from the tenth on.
  void StoredUser(std::size_t from) {
    WordCutter cutter(m_line, from);
    for (int i = 0; i != 16 && !cutter.AtLineEnd(); ++i) {
      const DirectiveWord word = Cut(cutter);
      if (i == 7 || i >= 9) {
        HideWord(word);
      }
    }
  }

  // Returns whether the word contains an snmp command, even inside a shell's quotes and brackets.
  static bool IsCommand(std::string_view word) {
    const std::size_t begin = word.find("snmp");
    std::size_t end = begin;
    while (end < word.size() && IsLetter(word[end])) {
      ++end;
    }
    const char before = begin == 0 ? ' ' : word[begin - 1];
    return !IsLetter(before) && !IsDigit(before) && before != '_' && before != '-' &&
           IsSnmpCommand(word.substr(begin, end - begin));
  }

  // "SNMP v2c, community X", as a trap receiver prints it. X may have blanks, so it is hidden up to the next bar.
  void Told(std::size_t begin, std::size_t end) {
    if (m_line.substr(begin, end - begin) == "community" && (m_before == "v1," || m_before == "v2c,")) {
      const std::size_t from = m_line.find_first_not_of(' ', end);
      if (from == npos || from >= m_end) {
        return;
      }
      if (m_bar < from) {
        m_bar = std::min(m_line.find('|', from), m_end);
      }
      if (from < m_bar) {
        Place(from, m_bar);
      }
    }
  }

  // community=X and similar names, and value=X behind name=communityRead.
  void Values(std::size_t begin, std::size_t end) {
    for (std::size_t equals = m_line.find('=', begin); equals < end; equals = m_line.find('=', equals + 1)) {
      const std::string_view name = NameBefore(m_line, equals);
      const std::size_t valueEnd = ValueEnd(equals + 1);
      if (NamesCommunity(name) || (name == "value" && m_namesCommunity)) {
        HideValue(equals + 1, valueEnd);
      } else if (name == "name") {
        const std::string_view value = m_line.substr(equals + 1, valueEnd - equals - 1);
        m_namesCommunity = value.size() > kLongestName || NamesCommunity(value);
      }
    }
  }

  std::size_t ValueEnd(std::size_t begin) {
    const std::string_view mask = kMask;
    if (m_line.substr(begin, mask.size()) == mask) {
      return begin + mask.size();
    }
    const char quote = begin < m_end ? m_line[begin] : '\0';
    if (quote != '"' && quote != '\'') {
      if (m_valueEnd < begin) {
        m_valueEnd = std::min(m_line.find_first_of(" \t,;<>", begin), m_end);
      }
      return std::max(begin, m_valueEnd);
    }
    std::size_t at = begin + 1;
    while (at < m_end && m_line[at] != quote) {
      at += quote == '"' && m_line[at] == '\\' ? 2 : 1;
    }
    return std::min(at + 1, m_end);
  }

  void HideValue(std::size_t begin, std::size_t end) {
    const std::string_view value = m_line.substr(begin, end - begin);
    const bool quoted = value.size() > 1 && (value.front() == '"' || value.front() == '\'') && value.front() == value.back();
    const std::string_view inside = quoted ? value.substr(1, value.size() - 2) : value;
    if (!inside.empty() && inside != kMask) {
      Place(begin, end);
    }
  }

  // Hides a word that is a secret. With quotes, backslashes or tabs, its author may have meant more than this word.
  void Hide(const DirectiveWord& word) {
    const bool alone = word.end >= m_end || IsConfigBlank(m_line[word.end]);
    if (!alone || IsUnclearFrom(word.end)) {
      return HideFrom(word.begin);
    }
    HideWord(word);
  }

  bool IsUnclearFrom(std::size_t at) const { return m_lastOdd != npos && m_lastOdd >= at; }

  // Merges the places now and then, because directives in a row hide the same words again and again.
  void Place(std::size_t begin, std::size_t end) {
    if (m_places.size() == m_mostPlaces) {
      m_places = MergedPlaces(std::move(m_places));
      m_mostPlaces = std::max(m_mostPlaces, 2 * m_places.size());
    }
    m_places.push_back({begin, end});
  }

  void HideWord(const DirectiveWord& word) {
    std::size_t end = std::min(word.end, m_end);
    while (end < m_end && !IsConfigBlank(m_line[end])) {
      ++end;
    }
    if (!word.text.empty() && word.begin < end) {
      Place(word.begin, end);
    }
  }

  void HideFrom(std::size_t begin) {
    if (begin < m_end) {
      Place(begin, m_end);
    }
    m_restFrom = std::min(m_restFrom, begin);
  }

  std::string_view m_line;
  // More options than the daemon knows. Behind them, the rest of the line is hidden.
  static constexpr std::size_t kMostOptions = 8;
  static constexpr std::size_t kLongestName = 256;  // of a setting

  std::size_t m_end;              // the end of the line without its last blanks
  std::size_t m_lastOdd = npos;   // the last quote, backslash or tab
  std::string_view m_before;      // the word before the current one
  bool m_namesCommunity = false;  // whether the last name= is that of a community
  bool m_optionsSeen = false;
  std::size_t m_bar = 0;          // the first bar behind the last place where one was searched for, or the end
  std::size_t m_valueEnd = 0;     // the same for the end of a value without quotes
  std::size_t m_restFrom = npos;  // from here on, everything is hidden
  std::vector<SecretPlace> m_places;
  std::size_t m_mostPlaces = 1024;  // at this number they are merged
};

}  // namespace

std::vector<SecretPlace> MergedPlaces(std::vector<SecretPlace> places) {
  std::sort(places.begin(), places.end(),
            [](const SecretPlace& left, const SecretPlace& right) { return left.begin < right.begin; });
  std::vector<SecretPlace> merged;
  for (const SecretPlace& place : places) {
    if (!merged.empty() && place.begin <= merged.back().end) {
      merged.back().end = std::max(merged.back().end, place.end);
    } else {
      merged.push_back(place);
    }
  }
  return merged;
}

std::string Masked(std::string_view text, const std::vector<SecretPlace>& places) {
  std::string masked;
  masked.reserve(text.size());
  std::size_t copied = 0;
  for (const SecretPlace& place : places) {
    masked.append(text, copied, place.begin - copied).append(kMask);
    copied = place.end;
  }
  return masked.append(text, copied, npos);
}

std::vector<SecretPlace> SecretPlaces(std::string_view line) {
  return Scanner(line).Scan();
}

std::vector<SecretPlace> SecretPlacesInText(std::string_view text) {
  std::vector<SecretPlace> places;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    for (const SecretPlace& place : SecretPlaces(text.substr(at, end - at))) {
      places.push_back({at + place.begin, at + place.end});
    }
    at = end + 1;
  }
  return places;
}

}  // namespace devhost
