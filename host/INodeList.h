#ifndef HOST_INODE_LIST_H
#define HOST_INODE_LIST_H

#include "host/HostApi.h"
#include "host/INode.h"
#include "host/auto_com.h"

namespace H7XML {

// A walk over the child elements of one node. Implemented by the host, used by drivers, counted.
//
// `for (auto child = list->First(); child; child = list->Next())` visits every child element once, in document order. The
// list keeps its parent alive. The order of the operations is a binary contract.
class H7_HOST_API INodeList {
 public:
  /* 1 */ virtual void AddRef() const = 0;
  /* 2 */ virtual void Release() const = 0;
  // The first child element, and the start of a new walk; an empty handle when there is none.
  /* 3 */ virtual h7::auto_com<INode> First() = 0;
  // The element after the one that was handed out last; an empty handle after the last one, and before First().
  /* 4 */ virtual h7::auto_com<INode> Next() = 0;

 protected:
  ~INodeList() = default;
};

}  // namespace H7XML

#endif
