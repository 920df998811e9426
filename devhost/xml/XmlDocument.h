#ifndef DEVHOST_XML_XML_DOCUMENT_H
#define DEVHOST_XML_XML_DOCUMENT_H

#include "devhost/xml/XmlCounted.h"
#include "devhost/xml/XmlNode.h"
#include "host/IDocument.h"

namespace devhost {

// A parsed document: it keeps its root element.
class XmlDocument final : public H7XML::IDocument, public XmlCounted {
 public:
  // A document for `code` that pins `root`.
  static h7::auto_com<H7XML::IDocument> Create(const XmlNode& root, const void* code);

  void AddRef() const override;
  void Release() const override;
  h7::auto_com<H7XML::INode> GetRootElement() const override;

 private:
  explicit XmlDocument(const XmlNode& root) : m_root(&root) { m_root->Pin(); }
  ~XmlDocument() override = default;
  void OnUnused() const noexcept override;
  void Clear() const noexcept override;
  std::string Describe() const override;

  mutable const XmlNode* m_root;
};

}  // namespace devhost

#endif
