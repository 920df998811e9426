#ifndef DEVHOST_XML_XML_PARSER_H
#define DEVHOST_XML_XML_PARSER_H

#include <cstddef>
#include <string>

namespace devhost {

// Receives a document while it is parsed. An exception ends the parsing and passes through.
class XmlParserSink {
 public:
  virtual ~XmlParserSink() = default;
  virtual void OnOpen(const char* name, std::size_t line, std::size_t column) = 0;
  // Comes after OnOpen of its element, in the order of the document.
  virtual void OnAttribute(const char* name, const char* value) = 0;
  // A piece of the text of the element opened last and not yet closed.
  virtual void OnText(const char* text) = 0;
  virtual void OnClose() = 0;
};

// Parses a whole document: exactly one root element. Throws XmlError (devhost/xml/XmlReader.h) before the sink has heard
// anything, and std::bad_alloc.
void ParseXml(const std::string& text, XmlParserSink& sink);

}  // namespace devhost

#endif
