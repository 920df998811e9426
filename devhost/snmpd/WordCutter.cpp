#include "devhost/snmpd/WordCutter.h"

namespace devhost {

DirectiveWord WordCutter::Next() {
  DirectiveWord word;
  word.begin = m_at;
  const char first = m_line[m_at];
  word.quote = first == '"' || first == '\'' ? first : '\0';
  m_at += word.quote != '\0' ? 1 : 0;
  while (!AtLineEnd() && !(word.quote != '\0' ? m_line[m_at] == word.quote : IsConfigBlank(m_line[m_at]))) {
    // A backslash at the very end stands for itself.
    m_at += m_line[m_at] == '\\' && m_at + 1 != m_line.size() ? 1 : 0;
    word.text += m_line[m_at++];
  }
  m_at += word.quote != '\0' && !AtLineEnd() ? 1 : 0;
  word.end = m_at;
  SkipBlanks();
  return word;
}

void WordCutter::SkipBlanks() {
  while (!AtLineEnd() && IsConfigBlank(m_line[m_at])) {
    ++m_at;
  }
}

}  // namespace devhost
