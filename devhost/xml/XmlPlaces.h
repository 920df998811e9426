#ifndef DEVHOST_XML_XML_PLACES_H
#define DEVHOST_XML_XML_PLACES_H

#include <cstddef>
#include <string>

namespace devhost {

// Turns rising offsets in a text into lines and columns, in one walk over the text, which must outlive this object.
class XmlPlaces {
 public:
  explicit XmlPlaces(const std::string& text) : m_text(text) {}

  // To an offset that is not before the last one.
  void MoveTo(std::size_t offset);

  // Counted from 1. The column counts bytes.
  std::size_t Line() const { return m_line; }
  std::size_t Column() const { return m_column; }

 private:
  const std::string& m_text;
  std::size_t m_line = 1;
  std::size_t m_column = 1;
  std::size_t m_lineStart = 0;
  std::size_t m_lineEnd = 0;  // everything before it has been searched
};

// Throws XmlError for that offset, or for the end of a shorter text.
[[noreturn]] void ThrowXmlError(const std::string& text, std::size_t offset, const std::string& problem);

}  // namespace devhost

#endif
