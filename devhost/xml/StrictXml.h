#ifndef DEVHOST_XML_STRICT_XML_H
#define DEVHOST_XML_STRICT_XML_H

#include <cstddef>
#include <string>

#include "devhost/xml/XmlReader.h"

namespace devhost {

// Elements of a document may be nested this deep, as far as xmllint reads them.
inline constexpr std::size_t kDeepestStrictXml = 257;

// Reads a whole document that every program reads alike: XML 1.0, fifth edition, in UTF-8, without a document type. Returns
// its root element, whose texts are exact: comments and instructions cut nothing, and only in an element with children is
// white space left out. Throws XmlError for all else, where ReadXml is lenient, and for more elements or attributes than
// ReadXml takes. `what()` quotes nothing of the text: markup may be a part of a value that was not escaped.
XmlElement ReadStrictXml(const std::string& text);

}  // namespace devhost

#endif
