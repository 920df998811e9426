#ifndef DEVHOST_XML_XML_NODE_LIST_H
#define DEVHOST_XML_XML_NODE_LIST_H

#include <string>

#include "devhost/xml/XmlCounted.h"
#include "devhost/xml/XmlNode.h"
#include "host/INodeList.h"

namespace devhost {

// A walk over the children of one node. It pins the node that was handed out last, so changing the children while walking
// is safe; the walk ends when that node has left its parent meanwhile.
class XmlNodeList final : public XmlObject<H7XML::INodeList> {
 public:
  // Pins the parent; null makes an empty list.
  explicit XmlNodeList(const XmlNode* parent);

  h7::auto_com<H7XML::INode> First() override;
  h7::auto_com<H7XML::INode> Next() override;

 private:
  ~XmlNodeList() override = default;
  void Clear() const noexcept override;
  std::string Describe() const override;

  h7::auto_com<H7XML::INode> StepTo(const XmlNode* node, const void* code);

  const XmlNode* const m_parent;
  const XmlNode* m_last = nullptr;
};

}  // namespace devhost

#endif
