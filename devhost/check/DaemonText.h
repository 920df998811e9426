#ifndef DEVHOST_CHECK_DAEMON_TEXT_H
#define DEVHOST_CHECK_DAEMON_TEXT_H

#include <cstddef>
#include <string>
#include <vector>

#include "devhost/check/ConfigText.h"

namespace devhost {

// What the daemon's parser may read of a file without doing what the file says: directives that the daemon only remembers,
// and that make it neither ask a name server nor crash. It names no other file; those that it includes are part of it.
class DaemonText {
 public:
  // Whether the daemon gets a line with this directive.
  static bool Takes(const Directive& setting);

  // Appends the line, or an empty one in its place.
  void Add(const ConfigLine& line);

  const std::string& Text() const { return m_text; }
  // The number in the report of a line of the text, which is counted from 1; 0 when there is no such line.
  std::size_t NumberOf(std::size_t line) const { return line == 0 || line > m_numbers.size() ? 0 : m_numbers[line - 1]; }

 private:
  std::string m_text;
  std::vector<std::size_t> m_numbers;
};

}  // namespace devhost

#endif
