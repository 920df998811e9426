#ifndef DEVHOST_XML_XML_NODE_LIST_H
#define DEVHOST_XML_XML_NODE_LIST_H

#include "devhost/xml/XmlCounted.h"
#include "devhost/xml/XmlNode.h"
#include "host/INodeList.h"

namespace devhost {

// A walk over the children of one node. It pins the node that was handed out last, so changing the children while walking
// is safe; the walk ends when that node has left its parent meanwhile.
class XmlNodeList final : public H7XML::INodeList, public XmlCounted {
 public:
  // A list for `code`; without a parent it is empty.
  static h7::auto_com<H7XML::INodeList> Create(const XmlNode* parent, const void* code);

  void AddRef() const override;
  void Release() const override;
  h7::auto_com<H7XML::INode> First() override;
  h7::auto_com<H7XML::INode> Next() override;

 private:
  explicit XmlNodeList(const XmlNode* parent);
  ~XmlNodeList() override = default;
  void OnUnused() const noexcept override;
  void Clear() const noexcept override;
  std::string Describe() const override;

  h7::auto_com<H7XML::INode> StepTo(const XmlNode* node, const void* code);

  mutable const XmlNode* m_parent;
  mutable const XmlNode* m_last = nullptr;
};

}  // namespace devhost

#endif
