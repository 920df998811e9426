#include "devhost/xml/XmlPlaces.h"

#include <algorithm>
#include <cstring>

#include "devhost/xml/XmlReader.h"

namespace devhost {

void XmlPlaces::MoveTo(std::size_t offset) {
  while (m_lineEnd < offset) {
    const void* const found = std::memchr(m_text.data() + m_lineEnd, '\n', offset - m_lineEnd);
    if (found == nullptr) {
      break;
    }
    m_lineEnd = static_cast<std::size_t>(static_cast<const char*>(found) - m_text.data()) + 1;
    m_lineStart = m_lineEnd;
    ++m_line;
  }
  m_lineEnd = std::max(m_lineEnd, offset);
  m_column = offset - m_lineStart + 1;
}

void ThrowXmlError(const std::string& text, std::size_t offset, const std::string& problem) {
  XmlPlaces places(text);
  places.MoveTo(std::min(offset, text.size()));
  throw XmlError(problem, places.Line(), places.Column());
}

}  // namespace devhost
