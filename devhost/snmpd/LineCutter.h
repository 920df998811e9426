#ifndef DEVHOST_SNMPD_LINE_CUTTER_H
#define DEVHOST_SNMPD_LINE_CUTTER_H

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace devhost {

// Cuts a text at its line feeds. A line feed at the very end does not begin another line. The text must outlive it.
class LineCutter {
 public:
  explicit LineCutter(std::string_view text) : m_rest(text) {}

  // Goes to the next line, or to the first. Returns false when none is left.
  bool Next() {
    if (m_rest.empty()) {
      return false;
    }
    m_line = m_rest.substr(0, m_rest.find('\n'));
    m_rest.remove_prefix(std::min(m_line.size() + 1, m_rest.size()));
    ++m_number;
    return true;
  }
  // The line without its line feed.
  std::string_view Line() const { return m_line; }
  // Counted from 1; the last line's after the end, and 0 for an empty text.
  std::size_t Number() const { return m_number; }

 private:
  std::string_view m_rest;
  std::string_view m_line;
  std::size_t m_number = 0;
};

}  // namespace devhost

#endif
