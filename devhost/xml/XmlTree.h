#ifndef DEVHOST_XML_XML_TREE_H
#define DEVHOST_XML_XML_TREE_H

#include <string>

#include "devhost/xml/XmlNode.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {

// A tree of nodes that nobody outside holds yet. The owner pins the root, so the tree goes with it unless somebody else
// holds on to it.
class XmlTree {
 public:
  explicit XmlTree(XmlNode* root) : m_root(root) { m_root->Pin(); }
  XmlTree(XmlTree&& other) noexcept : m_root(other.m_root) { other.m_root = nullptr; }
  XmlTree& operator=(XmlTree&&) = delete;
  ~XmlTree() {
    if (m_root != nullptr) {
      m_root->Unpin();
    }
  }
  XmlNode& Root() const { return *m_root; }

 private:
  XmlNode* m_root;
};

// Throws XmlError.
XmlTree ParseXmlTree(const std::string& text);
XmlTree MakeXmlTree(const XmlElement& element);

}  // namespace devhost

#endif
