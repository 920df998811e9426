#include "devhost/text/Words.h"

#include <charconv>
#include <cstdio>
#include <system_error>

namespace devhost {

namespace {

// A word of one letter takes many times its own size in memory.
constexpr std::size_t kMostWords = 200000;

constexpr char kEscapes[] =
    "in double quotes, a backslash is allowed before \\ \" n r t and xNN only (single quotes take everything)";

constexpr char kUnclosed[] = "a double quote is never closed: close it on the same line, or write \\\" for a quote itself";

bool IsBlank(char character) {
  return character == ' ' || character == '\t';
}

bool IsControl(char character) {
  const unsigned char code = static_cast<unsigned char>(character);
  return code < 0x20 || code == 0x7f;
}

// Reads one line from left to right.
class Splitter {
 public:
  explicit Splitter(std::string_view line) : m_line(line) {}

  std::vector<std::string> Split() {
    std::vector<std::string> words;
    for (;;) {
      while (!AtEnd() && IsBlank(m_line[m_at])) {
        ++m_at;
      }
      if (AtEnd() || m_line[m_at] == '#') {
        return words;
      }
      if (words.size() == kMostWords) {
        throw WordError("the line has more than " + std::to_string(kMostWords) + " words; allowed: at most this many");
      }
      words.push_back(Word());
    }
  }

 private:
  bool AtEnd() const { return m_at == m_line.size(); }

  std::string Word() {
    std::string word;
    while (!AtEnd() && !IsBlank(m_line[m_at])) {
      const char character = m_line[m_at++];
      if (character == '\'') {
        SingleQuoted(word);
      } else if (character == '"') {
        DoubleQuoted(word);
      } else if (character == '\\') {
        Escaped(word);
      } else {
        word += character;
      }
    }
    return word;
  }

  void Escaped(std::string& word) {
    if (AtEnd()) {
      throw WordError("a backslash ends the line: an action stands on one line, and a backslash itself is written \\\\");
    }
    word += m_line[m_at++];
  }

  void SingleQuoted(std::string& word) {
    const std::size_t end = m_line.find('\'', m_at);
    if (end == std::string_view::npos) {
      throw WordError("a single quote is never closed: close it on the same line, or write \\' for a quote itself");
    }
    word.append(m_line.substr(m_at, end - m_at));
    m_at = end + 1;
  }

  void DoubleQuoted(std::string& word) {
    while (!AtEnd()) {
      const char character = m_line[m_at++];
      if (character == '"') {
        return;
      }
      word += character == '\\' ? Escape() : character;
    }
    throw WordError(kUnclosed);
  }

  char Escape() {
    if (AtEnd()) {
      throw WordError(kUnclosed);
    }
    switch (m_line[m_at++]) {
      case '\\':
        return '\\';
      case '"':
        return '"';
      case 'n':
        return '\n';
      case 'r':
        return '\r';
      case 't':
        return '\t';
      case 'x':
        return HexCode();
      default:
        throw WordError("\\" + OneLine(m_line.substr(m_at - 1, 1)) + " is not an escape: " + kEscapes);
    }
  }

  char HexCode() {
    unsigned int code = 0;
    const std::string_view digits = m_line.substr(m_at, 2);
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), code, 16);
    if (error != std::errc() || end != digits.data() + 2) {
      throw WordError("\\x takes two hexadecimal digits, for example \\x1b");
    }
    m_at += 2;
    return static_cast<char>(static_cast<unsigned char>(code));
  }

  std::string_view m_line;
  std::size_t m_at = 0;
};

std::string Escaped(char character) {
  switch (character) {
    case '\n':
      return "\\n";
    case '\r':
      return "\\r";
    case '\t':
      return "\\t";
    default:
      break;
  }
  if (!IsControl(character)) {
    return std::string("\\") + character;
  }
  char code[8];
  std::snprintf(code, sizeof(code), "\\x%02x", static_cast<unsigned int>(static_cast<unsigned char>(character)));
  return code;
}

// `text` with control characters and those of `others` escaped. Texts may be whole files: what needs no escape is copied in
// one piece.
std::string Shown(std::string_view text, std::string_view others) {
  std::string shown;
  shown.reserve(text.size());
  std::size_t copied = 0;
  for (std::size_t at = 0; at != text.size(); ++at) {
    if (IsControl(text[at]) || (!others.empty() && others.find(text[at]) != std::string_view::npos)) {
      shown.append(text, copied, at - copied).append(Escaped(text[at]));
      copied = at + 1;
    }
  }
  return shown.append(text, copied, std::string_view::npos);
}

}  // namespace

std::vector<std::string> SplitWords(std::string_view line) {
  return Splitter(line).Split();
}

std::string AsWord(std::string_view text) {
  bool bare = !text.empty() && text.front() != '#';
  bool controls = false;
  for (const char character : text) {
    controls = controls || IsControl(character);
    bare = bare && !IsBlank(character) && character != '\'' && character != '"' && character != '\\';
  }
  if (controls || text.find('\'') != std::string_view::npos) {
    return "\"" + Shown(text, "\"\\") + "\"";
  }
  return bare ? std::string(text) : "'" + std::string(text) + "'";
}

std::string Quoted(std::string_view text) {
  if (text.size() <= kMostQuoted) {
    return "\"" + Shown(text, "") + "\"";
  }
  return "\"" + Shown(text.substr(0, kMostQuoted), "") + "...\" (" + std::to_string(text.size()) + " bytes)";
}

std::string OneLine(std::string_view text) {
  return Shown(text, "");
}

std::string Counted(std::size_t count, std::string_view what) {
  return std::to_string(count) + " " + std::string(what) + (count == 1 ? "" : "s");
}

bool StartsWith(std::string_view text, std::string_view start) noexcept {
  return text.substr(0, start.size()) == start;
}

}  // namespace devhost
