#include "devhost/snmpd/Directive.h"

#include <algorithm>

namespace devhost {

namespace {

bool IsBlank(char character) {
  return character == ' ' || (character >= '\t' && character <= '\r');
}

// Reads one line from left to right.
class Cutter {
 public:
  explicit Cutter(std::string_view line) : m_line(line) { SkipBlanks(); }

  // What begins with # in front of a word is no word any more, on any place of the line.
  bool AtEnd() const { return m_at == m_line.size() || m_line[m_at] == '#'; }
  std::size_t At() const { return m_at; }

  DirectiveWord Word() {
    DirectiveWord word;
    word.begin = m_at;
    const char first = m_line[m_at];
    word.quote = first == '"' || first == '\'' ? first : '\0';
    m_at += word.quote != '\0' ? 1 : 0;
    while (m_at != m_line.size() && !(word.quote != '\0' ? m_line[m_at] == word.quote : IsBlank(m_line[m_at]))) {
      // A backslash at the very end stands for itself.
      m_at += m_line[m_at] == '\\' && m_at + 1 != m_line.size() ? 1 : 0;
      word.text += m_line[m_at++];
    }
    m_at += word.quote != '\0' && m_at != m_line.size() ? 1 : 0;
    word.end = m_at;
    SkipBlanks();
    return word;
  }

 private:
  void SkipBlanks() {
    while (m_at != m_line.size() && IsBlank(m_line[m_at])) {
      ++m_at;
    }
  }

  std::string_view m_line;
  std::size_t m_at = 0;
};

std::string LowerCase(std::string text) {
  // Not std::tolower: the daemon compares in its own locale, which knows these letters only.
  std::transform(text.begin(), text.end(), text.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return text;
}

}  // namespace

std::optional<Directive> ReadDirective(std::string_view line) {
  Cutter cutter(line);
  if (cutter.AtEnd()) {
    return std::nullopt;
  }
  std::string keyword = cutter.Word().text;
  if (keyword.size() > 1 && keyword.front() == '[' && keyword.back() == ']') {
    if (cutter.AtEnd()) {
      return std::nullopt;
    }
    keyword = cutter.Word().text;
  }
  Directive directive;
  directive.keyword = LowerCase(std::move(keyword));
  directive.restBegin = cutter.At();
  std::size_t end = line.size();
  while (end > directive.restBegin && IsBlank(line[end - 1])) {
    --end;
  }
  directive.rest = line.substr(directive.restBegin, end - directive.restBegin);
  while (!cutter.AtEnd()) {
    directive.words.push_back(cutter.Word());
  }
  return directive;
}

}  // namespace devhost
