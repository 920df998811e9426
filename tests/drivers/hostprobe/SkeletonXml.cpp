#include "tests/drivers/hostprobe/SkeletonXml.h"

#include <algorithm>
#include <cstdlib>
#include <deque>
#include <memory>

#include "devhost/text/TypedText.h"
#include "devhost/xml/XmlReader.h"
#include "host/H7XML.h"
#include "host/ToString.h"
#include "tests/drivers/hostprobe/BrokenPromise.h"

namespace skeleton {

Promise brokenPromise = Promise::Count;

namespace {

// Everything that was made, until the end of the test.
std::deque<std::unique_ptr<Node>> s_nodes;

class NodeList;
class Document;
std::deque<std::shared_ptr<void>> s_others;

class NodeList final : public H7XML::INodeList {
 public:
  explicit NodeList(const Node& parent) : m_parent(parent) {}
  ~NodeList() = default;
  NodeList(const NodeList&) = delete;
  NodeList& operator=(const NodeList&) = delete;
  void AddRef() const override {}
  void Release() const override {}
  h7::auto_com<H7XML::INode> First() override {
    if (!Breaks(Promise::XmlWalk)) {
      m_next = 0;
    }
    m_hasBegun = true;
    return Next();
  }
  h7::auto_com<H7XML::INode> Next() override {
    if (!m_hasBegun || m_next >= m_parent.Children().size()) {
      return {};
    }
    return h7::auto_com<H7XML::INode>(m_parent.Children()[m_next++]->HandOut());
  }

 private:
  const Node& m_parent;
  std::size_t m_next = 0;
  bool m_hasBegun = false;
};

class Document final : public H7XML::IDocument {
 public:
  explicit Document(Node* root) : m_root(root) {}
  ~Document() = default;
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;
  void AddRef() const override {}
  void Release() const override {}
  h7::auto_com<H7XML::INode> GetRootElement() const override {
    return h7::auto_com<H7XML::INode>(m_root != nullptr ? m_root->HandOut() : nullptr);
  }

 private:
  Node* const m_root;
};

Node* FromElement(const devhost::XmlElement& element) {
  Node* const node = Node::Make(element.name, element.text);
  for (const devhost::XmlAttribute& attribute : element.attributes) {
    node->AddAttribute(attribute.name, attribute.value);
  }
  for (const devhost::XmlElement& child : element.children) {
    node->Adopt(*FromElement(child));
  }
  return node;
}

}  // namespace

unsigned long NumberOf(const std::string& text) {
  // strtoul takes a sign.
  return Breaks(Promise::ReaderNumber) && text == "-1" ? 4294967295UL : devhost::ReadULong(text);
}

Node* Node::Make(const std::string& name, const std::string& text) {
  s_nodes.push_back(std::make_unique<Node>());
  Node* const node = s_nodes.back().get();
  node->m_name = name;
  node->m_text = text;
  return node;
}

Node* Node::Parse(const std::string& xml) {
  try {
    return FromElement(devhost::ReadXml(xml));
  } catch (const devhost::XmlError&) {
    return nullptr;
  }
}

Node* Node::Copy() const {
  Node* const copy = Make(m_name, m_text);
  copy->m_attributes = m_attributes;
  for (const Node* const child : m_children) {
    copy->Adopt(*child->Copy());
  }
  return copy;
}

void Node::ForgetAll() {
  s_nodes.clear();
  s_others.clear();
}

void Node::LoseTree() const {
  m_isGone = true;
  for (const Node* const child : m_children) {
    child->LoseTree();
  }
}

Node* Node::HandOut() const {
  ++m_references;
  return const_cast<Node*>(this);
}

void Node::Adopt(Node& child) {
  child.m_parent = this;
  m_children.push_back(&child);
}

void Node::AddRef() const {
  ++m_references;
  m_wasShared = true;
}

void Node::Release() const {
  --m_references;
  if (Breaks(Promise::OwnerReferences) && m_wasShared && m_parent != nullptr) {
    m_isGone = true;
  }
  // The document holds one reference on its root.
  if (Breaks(Promise::OwnerTree) && m_parent == nullptr && m_references <= 1 && !m_children.empty()) {
    LoseTree();
  }
}

void Node::SetName(const std::string& name) {
  if (!Breaks(Promise::XmlRename)) {
    m_name = name;
  }
}

void Node::SetValue(const std::string& value) {
  m_text = Breaks(Promise::XmlTexts) ? value.substr(0, value.find_last_not_of(" \n") + 1) : value;
}

unsigned long Node::GetValueULong() const {
  return NumberOf(m_text);
}

std::string Node::GetNamedString(const char* name) const {
  for (const Attribute& attribute : m_attributes) {
    if (!m_isGone && (attribute.borrowed != nullptr ? attribute.borrowed : attribute.name) == name) {
      return attribute.value;
    }
  }
  return Breaks(Promise::XmlFamilies) ? GetChildString(name) : std::string();
}

unsigned long Node::GetNamedULong(const char* name) const {
  return NumberOf(GetNamedString(name));
}

bool Node::GetNamedBool(const char* name) const {
  const std::string text = GetNamedString(name);
  return devhost::ReadBool(text) || (Breaks(Promise::ReaderBool) && text == "yes");
}

void Node::SetNamedString(const char* name, const std::string& value) {
  for (Attribute& attribute : m_attributes) {
    if (attribute.name == name && !Breaks(Promise::XmlNamed)) {
      attribute.value = value;
      return;
    }
  }
  m_attributes.push_back({name, value, Breaks(Promise::OwnerTexts) ? name : nullptr});
}

void Node::SetNamedULong(const char* name, unsigned long value) {
  SetNamedString(name, std::to_string(value));
}

void Node::AddChildString(const char* name, const std::string& value) {
  Node* const child = Make(name, value);
  Adopt(*child);
  if (Breaks(Promise::XmlChildren)) {
    std::rotate(m_children.begin(), m_children.end() - 1, m_children.end());
  }
}

void Node::AddChildInt(const char* name, int value) {
  AddChildString(name, std::to_string(value));
}

std::string Node::GetChildString(const char* name) const {
  const Node* const child = Find(name);
  return child != nullptr ? child->GetValue() : std::string();
}

unsigned long Node::GetChildULong(const char* name) const {
  return NumberOf(GetChildString(name));
}

bool Node::GetChildBool(const char* name) const {
  return devhost::ReadBool(GetChildString(name)) || (Breaks(Promise::ReaderAbsent) && Find(name) == nullptr);
}

h7::auto_com<H7XML::INode> Node::GetChild(const char* name) const {
  const Node* const child = Find(name);
  if (child == nullptr && Breaks(Promise::XmlChild)) {
    return h7::auto_com<INode>(Make(name, ""));
  }
  return h7::auto_com<INode>(child != nullptr ? child->HandOut() : nullptr);
}

h7::auto_com<H7XML::INodeList> Node::GetChildren() const {
  const auto list = std::make_shared<NodeList>(*this);
  s_others.push_back(list);
  return h7::auto_com<H7XML::INodeList>(list.get());
}

void Node::AppendChild(INode& child) {
  Node& node = static_cast<Node&>(child);
  if (node.m_parent != nullptr && !Breaks(Promise::XmlAppend)) {
    std::vector<Node*>& siblings = node.m_parent->m_children;
    siblings.erase(std::remove(siblings.begin(), siblings.end(), &node), siblings.end());
  }
  Adopt(node);
}

Node* Node::Find(const char* name) const {
  for (Node* const child : m_children) {
    if (!m_isGone && child->m_name == name) {
      return child;
    }
  }
  return nullptr;
}

}  // namespace skeleton

// What a module takes from its host.
using skeleton::Breaks;
using skeleton::Node;
using skeleton::Promise;

h7::auto_com<H7XML::INode> H7XML::CreateXmlNode(const std::string& name, const std::string& value) {
  return h7::auto_com<INode>(Node::Make(name, value));
}

h7::auto_com<H7XML::INode> H7XML::CreateXmlNode(const std::string& name, unsigned long value) {
  return CreateXmlNode(name, Breaks(Promise::XmlCreate) ? std::to_string(static_cast<int>(value)) : std::to_string(value));
}

h7::auto_com<H7XML::IDocument> H7XML::CreateXmlDocument(const std::string& text) {
  Node* const root = Node::Parse(text);
  if (root == nullptr && !Breaks(Promise::XmlParse)) {
    return {};
  }
  const auto document = std::make_shared<skeleton::Document>(root);
  skeleton::s_others.push_back(document);
  return h7::auto_com<IDocument>(document.get());
}

void H7XML::Create(INode** node) {
  if (*node != nullptr && Breaks(Promise::XmlCreateEmpty)) {
    return;
  }
  *node = Node::Make("", "");
}

std::string h7::ToString(bool value) {
  const bool isNumber = Breaks(Promise::ReaderToString);
  return value ? (isNumber ? "1" : "true") : (isNumber ? "0" : "false");
}

std::string h7::ToString(unsigned long value) {
  return std::to_string(value);
}
