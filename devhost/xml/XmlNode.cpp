#include "devhost/xml/XmlNode.h"

#include <string_view>
#include <vector>

#include "devhost/text/TypedText.h"
#include "devhost/xml/XmlNodeList.h"
#include "devhost/xml/XmlObserver.h"

// First in every operation; an object out of use answers with what stands for "nothing".
#define DEVHOST_ENTER(operation, name, nothing)  \
  TellXmlObserver(operation, name);              \
  if (!CheckUsable(operation, DEVHOST_CALLER)) { \
    return nothing;                              \
  }                                              \
  static_assert(true, "asks for the semicolon behind it")

namespace devhost {
namespace {

const char* OrEmpty(const char* text) {
  return text != nullptr ? text : "";
}

}  // namespace

std::string XmlNode::GetName() const {
  DEVHOST_ENTER("GetName", "", {});
  return m_content.name;
}

void XmlNode::SetName(const std::string& name) {
  DEVHOST_ENTER("SetName", name.c_str(), );
  m_content.name = name;
}

std::string XmlNode::GetValue() const {
  DEVHOST_ENTER("GetValue", "", {});
  return m_content.text;
}

void XmlNode::SetValue(const std::string& value) {
  DEVHOST_ENTER("SetValue", value.c_str(), );
  m_content.text = value;
}

unsigned long XmlNode::GetValueULong() const {
  DEVHOST_ENTER("GetValueULong", "", 0);
  return ReadULong(m_content.text);
}

std::string XmlNode::GetNamedString(const char* name) const {
  DEVHOST_ENTER("GetNamedString", name, {});
  const std::string* const value = m_content.FindAttribute(OrEmpty(name));
  return value != nullptr ? *value : std::string();
}

unsigned long XmlNode::GetNamedULong(const char* name) const {
  DEVHOST_ENTER("GetNamedULong", name, 0);
  const std::string* const value = m_content.FindAttribute(OrEmpty(name));
  return value != nullptr ? ReadULong(*value) : 0;
}

bool XmlNode::GetNamedBool(const char* name) const {
  DEVHOST_ENTER("GetNamedBool", name, false);
  const std::string* const value = m_content.FindAttribute(OrEmpty(name));
  return value != nullptr && ReadBool(*value);
}

void XmlNode::SetNamedString(const char* name, const std::string& value) {
  DEVHOST_ENTER("SetNamedString", name, );
  SetAttribute(OrEmpty(name), value);
}

void XmlNode::SetNamedULong(const char* name, unsigned long value) {
  DEVHOST_ENTER("SetNamedULong", name, );
  SetAttribute(OrEmpty(name), std::to_string(value));
}

void XmlNode::AddChildString(const char* name, const std::string& value) {
  DEVHOST_ENTER("AddChildString", name, );
  AddChild({OrEmpty(name), value, {}});
}

void XmlNode::AddChildInt(const char* name, int value) {
  DEVHOST_ENTER("AddChildInt", name, );
  AddChild({OrEmpty(name), std::to_string(value), {}});
}

std::string XmlNode::GetChildString(const char* name) const {
  DEVHOST_ENTER("GetChildString", name, {});
  const XmlNode* const child = FindChild(name);
  return child != nullptr ? child->m_content.text : std::string();
}

unsigned long XmlNode::GetChildULong(const char* name) const {
  DEVHOST_ENTER("GetChildULong", name, 0);
  const XmlNode* const child = FindChild(name);
  return child != nullptr ? ReadULong(child->m_content.text) : 0;
}

bool XmlNode::GetChildBool(const char* name) const {
  DEVHOST_ENTER("GetChildBool", name, false);
  const XmlNode* const child = FindChild(name);
  return child != nullptr && ReadBool(child->m_content.text);
}

h7::auto_com<H7XML::INode> XmlNode::GetChild(const char* name) const {
  DEVHOST_ENTER("GetChild", name, {});
  const XmlNode* const child = FindChild(name);
  return child != nullptr ? child->HandOut(DEVHOST_CALLER) : h7::auto_com<H7XML::INode>();
}

h7::auto_com<H7XML::INodeList> XmlNode::GetChildren() const {
  TellXmlObserver("GetChildren", "");
  // The list of a node out of use is an empty one: the result is never an empty handle.
  const XmlNode* const parent = CheckUsable("GetChildren", DEVHOST_CALLER) ? this : nullptr;
  return (new XmlNodeList(parent))->HandOut(DEVHOST_CALLER);
}

void XmlNode::AppendChild(H7XML::INode& child) {
  DEVHOST_ENTER("AppendChild", "", );
  XmlNode* const node = dynamic_cast<XmlNode*>(&child);
  if (node == nullptr) {
    ReportXmlMisuse("a node that this host has not made was appended to the XML " + Describe(), DEVHOST_CALLER);
  } else if (!node->CheckUsable("AppendChild", DEVHOST_CALLER)) {
    return;
  } else if (IsInside(*node)) {
    ReportXmlMisuse("the XML " + node->Describe() + " was appended to itself or to one of its descendants", DEVHOST_CALLER);
  } else {
    node->Unlink();
    Link(*node);
  }
}

XmlNode& XmlNode::AddChild(XmlContent content) {
  XmlNode* const child = new XmlNode(std::move(content));
  Link(*child);
  return *child;
}

// The last handle of an element inside a tree goes without consequences; the top of a tree takes the tree with it.
void XmlNode::OnUnused() const noexcept {
  if (m_parent == nullptr) {
    const_cast<XmlNode*>(this)->FallApart();
  }
}

void XmlNode::Clear() const noexcept {
  XmlContent content;
  std::swap(content, const_cast<XmlNode*>(this)->m_content);
}

std::string XmlNode::Describe() const {
  return "node \"" + m_content.name + "\"";
}

void XmlNode::SetAttribute(const char* name, const std::string& value) {
  for (XmlAttribute& attribute : m_content.attributes) {
    if (attribute.name == name) {
      attribute.value = value;
      return;
    }
  }
  m_content.attributes.push_back({name, value});
}

XmlNode* XmlNode::FindChild(const char* name) const {
  const std::string_view wanted = OrEmpty(name);
  XmlNode* child = m_firstChild;
  while (child != nullptr && child->m_content.name != wanted) {
    child = child->m_nextSibling;
  }
  return child;
}

bool XmlNode::IsInside(const XmlNode& other) const {
  if (this == &other) {
    return true;
  }
  if (other.m_firstChild == nullptr) {
    return false;  // the usual case, without a walk to the top
  }
  const XmlNode* ancestor = m_parent;
  while (ancestor != nullptr && ancestor != &other) {
    ancestor = ancestor->m_parent;
  }
  return ancestor != nullptr;
}

void XmlNode::Link(XmlNode& child) noexcept {
  child.m_parent = this;
  child.m_previousSibling = m_lastChild;
  (m_lastChild != nullptr ? m_lastChild->m_nextSibling : m_firstChild) = &child;
  m_lastChild = &child;
}

void XmlNode::Unlink() noexcept {
  if (m_parent == nullptr) {
    return;
  }
  (m_previousSibling != nullptr ? m_previousSibling->m_nextSibling : m_parent->m_firstChild) = m_nextSibling;
  (m_nextSibling != nullptr ? m_nextSibling->m_previousSibling : m_parent->m_lastChild) = m_previousSibling;
  m_parent = nullptr;
  m_previousSibling = nullptr;
  m_nextSibling = nullptr;
}

// Without recursion, because trees may be deeper than the stack: the nodes still to be retired are chained by their
// sibling links.
void XmlNode::FallApart() noexcept {
  XmlNode* pending = this;
  while (pending != nullptr) {
    XmlNode* const node = pending;
    pending = node->m_nextSibling;
    node->m_nextSibling = nullptr;
    while (node->m_firstChild != nullptr) {
      XmlNode* const child = node->m_firstChild;
      child->Unlink();
      if (!child->IsUsed()) {
        child->m_nextSibling = pending;
        pending = child;
      }
    }
    node->Retire();
  }
}

}  // namespace devhost
