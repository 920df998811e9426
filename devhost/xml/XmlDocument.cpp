#include "devhost/xml/XmlDocument.h"

#include "devhost/xml/XmlObserver.h"

namespace devhost {

h7::auto_com<H7XML::IDocument> XmlDocument::Create(const XmlNode& root, const void* code) {
  XmlDocument* const document = new XmlDocument(root);
  document->Hold(code);
  return h7::auto_com<H7XML::IDocument>(document);
}

void XmlDocument::AddRef() const {
  Hold(DEVHOST_CALLER);
}

void XmlDocument::Release() const {
  Drop(DEVHOST_CALLER);
}

h7::auto_com<H7XML::INode> XmlDocument::GetRootElement() const {
  TellXmlObserver("GetRootElement", "");
  if (!CheckUsable("GetRootElement", DEVHOST_CALLER)) {
    return {};
  }
  return m_root->HandOut(DEVHOST_CALLER);
}

void XmlDocument::OnUnused() const noexcept {
  Retire();
}

void XmlDocument::Clear() const noexcept {
  const XmlNode* const root = m_root;
  m_root = nullptr;
  if (root != nullptr) {
    root->Unpin();
  }
}

std::string XmlDocument::Describe() const {
  return "document \"" + (m_root != nullptr ? m_root->Name() : "") + "\"";
}

}  // namespace devhost
