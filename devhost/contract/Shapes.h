#ifndef DEVHOST_CONTRACT_SHAPES_H
#define DEVHOST_CONTRACT_SHAPES_H

#include <cstddef>
#include <limits>
#include <string>
#include <vector>

#include "devhost/contract/TextKind.h"

// What passes between a tool and the agent, and what devhost reads of its users, as one table. The schemas in contract/ say
// the same for other programs; a test holds the two against each other.
namespace devhost {

struct AttributeShape {
  const char* name;
  TextKind kind;
  bool isRequired = true;
};

// Attributes that, taken together, no two of the children with these names may share.
struct UniqueShape {
  std::vector<std::string> children;
  std::vector<const char*> attributes;
};

// An element, as a child of the element around it.
struct ElementShape {
  enum class Holds { Text, Children, Nothing, Anything };
  static constexpr std::size_t kUnbounded = std::numeric_limits<std::size_t>::max();

  const char* name;
  Holds holds;
  TextKind text = TextKind::Any;  // for Holds::Text
  std::vector<AttributeShape> attributes = {};
  std::vector<ElementShape> children = {};  // for Holds::Children
  bool isOrdered = false;                   // the children stand in the order of the table
  std::vector<UniqueShape> unique = {};

  std::size_t least = 1;  // how often it stands in the element around it
  std::size_t most = 1;
  const char* ifMissing = nullptr;  // what becomes of a device when a request lacks it; null for nothing

  // The child with that name, or null.
  const ElementShape* FindChild(const std::string& childName) const;
};

// A kind of document, by its root element.
struct DocumentShape {
  ElementShape root;
  const char* schema;    // the name of the file in contract/ that says the same
  bool isReply = false;  // what the agent writes, where a request has the same root
};

// All documents.
const std::vector<DocumentShape>& Documents();

// Settings as a tool should send them: each child once.
const ElementShape& SettingsRequest();

// The shape of documents with that root, or null when there is none. Where a request and a reply have the same root,
// `asReply` chooses the reply.
const DocumentShape* FindDocument(const std::string& root, bool asReply);

}  // namespace devhost

#endif
