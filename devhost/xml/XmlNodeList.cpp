#include "devhost/xml/XmlNodeList.h"

#include <utility>

#include "devhost/xml/XmlObserver.h"

namespace devhost {

XmlNodeList::XmlNodeList(const XmlNode* parent) : m_parent(parent) {
  if (m_parent != nullptr) {
    m_parent->Pin();
  }
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
  if (node != nullptr) {
    node->Pin();
  }
  const XmlNode* const before = std::exchange(m_last, node);
  if (before != nullptr) {
    before->Unpin();
  }
  return node != nullptr ? node->HandOut(code) : h7::auto_com<H7XML::INode>();
}

void XmlNodeList::Clear() const noexcept {
  for (const XmlNode* const pinned : {m_last, m_parent}) {
    if (pinned != nullptr) {
      pinned->Unpin();
    }
  }
}

std::string XmlNodeList::Describe() const {
  return "list of the children of " + (m_parent != nullptr ? "\"" + m_parent->Content().name + "\"" : "nothing");
}

}  // namespace devhost
