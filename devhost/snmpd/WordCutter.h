#ifndef DEVHOST_SNMPD_WORD_CUTTER_H
#define DEVHOST_SNMPD_WORD_CUTTER_H

#include <cstddef>
#include <string_view>

#include "devhost/snmpd/Directive.h"

namespace devhost {

// Whether the daemon separates words at this character.
inline bool IsConfigBlank(char character) {
  return character == ' ' || (character >= '\t' && character <= '\r');
}

// Cuts words off the front of a line, as the daemon does. The line must outlive it.
class WordCutter {
 public:
  explicit WordCutter(std::string_view line, std::size_t from = 0) : m_line(line), m_at(from) { SkipBlanks(); }

  // Whether no word is left. A comment is not a word.
  bool AtEnd() const { return AtLineEnd() || m_line[m_at] == '#'; }
  bool AtLineEnd() const { return m_at == m_line.size(); }
  // Where the next word begins.
  std::size_t At() const { return m_at; }

  // The next word; not at the end of the line.
  DirectiveWord Next();

 private:
  void SkipBlanks();

  std::string_view m_line;
  std::size_t m_at;
};

}  // namespace devhost

#endif
