#ifndef DEVHOST_XML_XML_NODE_H
#define DEVHOST_XML_XML_NODE_H

#include <string>
#include <utility>

#include "devhost/xml/XmlCounted.h"
#include "devhost/xml/XmlReader.h"
#include "host/INode.h"

namespace devhost {

// One element: the object behind every `INode`.
//
// The element itself is the counted object, linked into its tree by plain pointers. So moving it to another parent changes a
// few links, and every handle still names it. An element exists as long as it has a parent or a handle. When the top of a
// tree loses its last handle, the tree falls apart: what is still held becomes the top of its own tree, the rest goes.
//
// The XML library's own tree is used for parsing only: it can move elements within one document only, and it has no place
// for a count.
class XmlNode final : public XmlObject<H7XML::INode> {
 public:
  explicit XmlNode(XmlContent content = {}) : m_content(std::move(content)) {}

  std::string GetName() const override;
  void SetName(const std::string& name) override;
  std::string GetValue() const override;
  void SetValue(const std::string& value) override;
  unsigned long GetValueULong() const override;
  std::string GetNamedString(const char* name) const override;
  unsigned long GetNamedULong(const char* name) const override;
  bool GetNamedBool(const char* name) const override;
  void SetNamedString(const char* name, const std::string& value) override;
  void SetNamedULong(const char* name, unsigned long value) override;
  void AddChildString(const char* name, const std::string& value) override;
  void AddChildInt(const char* name, int value) override;
  std::string GetChildString(const char* name) const override;
  unsigned long GetChildULong(const char* name) const override;
  bool GetChildBool(const char* name) const override;
  h7::auto_com<H7XML::INode> GetChild(const char* name) const override;
  h7::auto_com<H7XML::INodeList> GetChildren() const override;
  void AppendChild(H7XML::INode& child) override;

  // The tree as the host walks it: no counting, no observer.
  const XmlContent& Content() const { return m_content; }
  XmlContent& Content() { return m_content; }
  XmlNode* Parent() const { return m_parent; }
  XmlNode* FirstChild() const { return m_firstChild; }
  XmlNode* NextSibling() const { return m_nextSibling; }
  // A new last child, which belongs to this node.
  XmlNode& AddChild(XmlContent content = {});

 private:
  ~XmlNode() override = default;
  void OnUnused() const noexcept override;
  void Clear() const noexcept override;
  std::string Describe() const override;

  void SetAttribute(const char* name, const std::string& value);
  XmlNode* FindChild(const char* name) const;
  bool IsInside(const XmlNode& other) const;
  void Link(XmlNode& child) noexcept;
  void Unlink() noexcept;
  void FallApart() noexcept;

  XmlContent m_content;
  XmlNode* m_parent = nullptr;
  XmlNode* m_firstChild = nullptr;
  XmlNode* m_lastChild = nullptr;
  XmlNode* m_previousSibling = nullptr;
  XmlNode* m_nextSibling = nullptr;
};

}  // namespace devhost

#endif
