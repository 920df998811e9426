#ifndef DEVHOST_XML_XML_PARSER_H
#define DEVHOST_XML_XML_PARSER_H

#include <cstddef>
#include <string>

#include "devhost/xml/XmlReader.h"

namespace devhost {

// Builds a document while it is parsed. An exception ends the parsing and passes through.
class XmlBuilder {
 public:
  virtual ~XmlBuilder() = default;
  // Begins an element inside the one that is open, the first time the root.
  virtual void Open(std::size_t line, std::size_t column) = 0;
  // The element that is open; the parser fills it.
  virtual XmlContent& Current() = 0;
  // Ends it: the element around it is open again.
  virtual void Close() = 0;
};

// Parses a whole document: exactly one root element. Throws XmlError before anything was built, and std::bad_alloc.
void ParseXml(const std::string& text, XmlBuilder& builder);

}  // namespace devhost

#endif
