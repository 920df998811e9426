#ifndef HOST_INODE_LIST_H
#define HOST_INODE_LIST_H

#include "host/HostApi.h"
#include "host/INode.h"
#include "host/auto_com.h"

namespace H7XML {

// A walk over the child elements of one node. The host implements it, drivers use it, and references are counted.
//
// `for (auto child = list->First(); child; child = list->Next())` visits every child element once, in document order. The
// list keeps its parent alive. The order of the operations is a binary contract.
class H7_HOST_API INodeList {
 public:
  /* 1 */ virtual void AddRef() const = 0;
  /* 2 */ virtual void Release() const = 0;
  // Starts a new walk and returns the first child element, or an empty handle when there are no children.
  /* 3 */ virtual h7::auto_com<INode> First() = 0;
  // Returns the element after the one that was returned last; an empty handle after the last one, and before First().
  /* 4 */ virtual h7::auto_com<INode> Next() = 0;

 protected:
  ~INodeList() = default;
};

}  // namespace H7XML

#endif
