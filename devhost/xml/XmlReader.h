#ifndef DEVHOST_XML_XML_READER_H
#define DEVHOST_XML_XML_READER_H

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "host/INode.h"
#include "host/auto_com.h"

// XML for the host's own use: its files in, its messages out. What drivers see is host/H7XML.h.
namespace devhost {

struct XmlAttribute {
  std::string name;
  std::string value;
};

// What one element holds, apart from its children.
struct XmlContent {
  std::string name;
  // The element's own text, references resolved, line ends as "\n". White space that only lays child elements out is not
  // text.
  std::string text;
  std::vector<XmlAttribute> attributes;  // in the order of the file; names are unique

  // The value of that attribute, borrowed from this element; null when it has none of that name.
  const std::string* FindAttribute(std::string_view attributeName) const;
};

// One element of a file, as a plain value.
struct XmlElement : XmlContent {
  std::vector<XmlElement> children;  // in the order of the file
  // Where the element's start tag stands, counted from 1. The column counts bytes.
  std::size_t line = 0;
  std::size_t column = 0;
};

// Text that is not a well-formed XML document. `what()` says what is wrong, without the place.
class XmlError : public std::runtime_error {
 public:
  XmlError(const std::string& problem, std::size_t errorLine, std::size_t errorColumn);
  // Counted from 1. The column counts bytes.
  std::size_t Line() const { return m_line; }
  std::size_t Column() const { return m_column; }

 private:
  std::size_t m_line;
  std::size_t m_column;
};

// An element takes many times its size in the text. As many as a large project and its states have.
inline constexpr std::size_t kMostXmlElements = 4000000;
inline constexpr std::size_t kMostXmlAttributes = 10000000;

// Reads a whole document (UTF-8, a byte order mark is skipped) and returns its root element. Comments, processing
// instructions and the document type are passed over. Throws XmlError, also for elements nested more than 1000 deep and
// for more than kMostXmlElements or kMostXmlAttributes. What passes here may not be XML to other programs: StrictXml.h.
XmlElement ReadXml(const std::string& text);

// The same as a node for a driver; never an empty handle. Any depth.
h7::auto_com<H7XML::INode> ReadXmlNode(const std::string& text);

// An element as a node for a driver; never an empty handle.
h7::auto_com<H7XML::INode> MakeXmlNode(const XmlElement& element);

enum class XmlStyle {
  Compact,  // on one line, as long as no text holds a line feed
  Indented  // two spaces per level, line feeds between elements; an element with text and children stays on its line
};

// The element as text, without declaration and without a final line feed. Reading it back gives the same element: attributes
// keep their order, carriage returns are written as references. What XML cannot carry is replaced: a control character or
// a byte that is not UTF-8 by U+FFFD, a character that cannot stand in a name by "_". Throws std::invalid_argument for a
// node that this host has not made.
std::string XmlText(const H7XML::INode& node, XmlStyle style);
std::string XmlText(const XmlElement& element, XmlStyle style);

// Appends a blank and name="value", both written as above: for lists too long to be made of elements first.
void AppendXmlAttribute(std::string& xml, std::string_view name, std::string_view value);

}  // namespace devhost

#endif
