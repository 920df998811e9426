#ifndef TESTS_DRIVERS_HOSTPROBE_SKELETON_XML_H
#define TESTS_DRIVERS_HOSTPROBE_SKELETON_XML_H

#include <map>
#include <string>
#include <vector>

#include "host/INode.h"
#include "host/auto_com.h"

// The nodes of the skeleton host. It never frees one before the end of a test: a node that a broken host frees too early is
// only marked as gone, and reads as empty then.
namespace skeleton {

class Node final : public H7XML::INode {
 public:
  struct Attribute {
    std::string name;
    std::string value;
    const char* borrowed = nullptr;  // the driver's own text of the name, where the host should have copied it
  };

  // Makes a node with one reference for the caller.
  static Node* Make(const std::string& name, const std::string& text);
  // The node of a document, with one reference for the caller; null when `xml` is not well-formed.
  static Node* Parse(const std::string& xml);
  // A copy with its own tree, as it comes back from a file.
  Node* Copy() const;
  // The host frees the tree in spite of handles.
  void LoseTree() const;
  void Adopt(Node& child);
  void AddAttribute(const std::string& name, const std::string& value) { m_attributes.push_back({name, value}); }
  // Forgets all nodes.
  static void ForgetAll();

  void AddRef() const override;
  void Release() const override;
  std::string GetName() const override { return m_isGone ? "" : m_name; }
  void SetName(const std::string& name) override;
  std::string GetValue() const override { return m_isGone ? "" : m_text; }
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
  h7::auto_com<INode> GetChild(const char* name) const override;
  h7::auto_com<H7XML::INodeList> GetChildren() const override;
  void AppendChild(INode& child) override;

  const std::vector<Node*>& Children() const { return m_children; }
  Node* HandOut() const;

 private:
  Node* Find(const char* name) const;

  std::string m_name;
  std::string m_text;
  std::vector<Attribute> m_attributes;
  std::vector<Node*> m_children;
  Node* m_parent = nullptr;
  mutable int m_references = 1;
  mutable bool m_wasShared = false;
  mutable bool m_isGone = false;
};

// A text as the host's typed readers read it.
unsigned long NumberOf(const std::string& text);

}  // namespace skeleton

#endif
