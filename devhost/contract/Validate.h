#ifndef DEVHOST_CONTRACT_VALIDATE_H
#define DEVHOST_CONTRACT_VALIDATE_H

#include <cstddef>
#include <string>
#include <vector>

#include "devhost/contract/Shapes.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

// One thing in which a document is not what its shape asks for. No text of the document is in it, apart from names.
struct Mismatch {
  enum class Kind {
    NotXml,
    UnknownRoot,
    UnknownElement,
    ElementTwice,
    MissingElement,
    WrongOrder,
    UnknownAttribute,
    MissingAttribute,
    MisplacedText,
    WrongValue,
    NotUnique
  };
  Kind kind;
  std::size_t line = 0;
  std::string element;  // the one that is wrong or missing
  std::string reason;
  std::string remedy;
};

// The name of a kind, for findings: "element-unknown".
const char* NameOf(Mismatch::Kind kind);

// At most this many mismatches of a document are returned: a document of nothing but mistakes must not fill the memory.
inline constexpr std::size_t kMostMismatches = 1000;

// Holds an element against its shape. The result is empty when it is right, and else in the order of the document, where
// what is missing stands at the element that lacks it.
std::vector<Mismatch> Validate(const XmlElement& element, const ElementShape& shape);

// Holds a whole document against the shape that its root element asks for; `asReply` as in FindDocument. Text that is not
// XML and a root element that no document has are mismatches, too. A document type is refused, since it can change what the
// document says.
std::vector<Mismatch> ValidateDocument(const std::string& text, bool asReply);

// The child of `shape` that was probably meant by a name, or "".
std::string MeantChild(const ElementShape& shape, const std::string& name);

}  // namespace devhost

#endif
