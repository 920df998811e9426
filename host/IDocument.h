#ifndef HOST_IDOCUMENT_H
#define HOST_IDOCUMENT_H

#include "host/HostApi.h"
#include "host/INode.h"
#include "host/auto_com.h"

namespace H7XML {

// A parsed XML document. The host implements it, drivers use it, and references are counted. The order of the operations is
// a binary contract.
class H7_HOST_API IDocument {
 public:
  /* 1 */ virtual void AddRef() const = 0;
  /* 2 */ virtual void Release() const = 0;
  // The document's root element; an empty handle when it has none. The node may outlive the document's handle.
  /* 3 */ virtual h7::auto_com<INode> GetRootElement() const = 0;

 protected:
  ~IDocument() = default;
};

}  // namespace H7XML

#endif
