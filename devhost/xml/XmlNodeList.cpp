#include "devhost/xml/XmlNodeList.h"

#include "devhost/xml/XmlObserver.h"

namespace devhost {

XmlNodeList::XmlNodeList(const XmlNode* parent) : m_parent(parent) {
  if (m_parent != nullptr) {
    m_parent->Pin();
  }
}

h7::auto_com<H7XML::INodeList> XmlNodeList::Create(const XmlNode* parent, const void* code) {
  XmlNodeList* const list = new XmlNodeList(parent);
  list->Hold(code);
  return h7::auto_com<H7XML::INodeList>(list);
}

void XmlNodeList::AddRef() const {
  Hold(DEVHOST_CALLER);
}

void XmlNodeList::Release() const {
  Drop(DEVHOST_CALLER);
}

h7::auto_com<H7XML::INode> XmlNodeList::First() {
  TellXmlObserver("First", "");
  if (!CheckUsable("First", DEVHOST_CALLER) || m_parent == nullptr) {
    return {};
  }
  return StepTo(m_parent->FirstChild(), DEVHOST_CALLER);
}

h7::auto_com<H7XML::INode> XmlNodeList::Next() {
  TellXmlObserver("Next", "");
  if (!CheckUsable("Next", DEVHOST_CALLER) || m_last == nullptr) {
    return {};
  }
  return StepTo(m_last->Parent() == m_parent ? m_last->NextSibling() : nullptr, DEVHOST_CALLER);
}

h7::auto_com<H7XML::INode> XmlNodeList::StepTo(const XmlNode* node, const void* code) {
  const XmlNode* const before = m_last;
  m_last = node;
  if (m_last != nullptr) {
    m_last->Pin();
  }
  if (before != nullptr) {
    before->Unpin();
  }
  return m_last != nullptr ? m_last->HandOut(code) : h7::auto_com<H7XML::INode>();
}

void XmlNodeList::OnUnused() const noexcept {
  Retire();
}

void XmlNodeList::Clear() const noexcept {
  const XmlNode* const last = m_last;
  const XmlNode* const parent = m_parent;
  m_last = nullptr;
  m_parent = nullptr;
  if (last != nullptr) {
    last->Unpin();
  }
  if (parent != nullptr) {
    parent->Unpin();
  }
}

std::string XmlNodeList::Describe() const {
  return "list of the children of " + (m_parent != nullptr ? "\"" + m_parent->Name() + "\"" : std::string("nothing"));
}

}  // namespace devhost
