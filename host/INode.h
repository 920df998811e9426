#ifndef HOST_INODE_H
#define HOST_INODE_H

#include <string>

#include "host/HostApi.h"
#include "host/auto_com.h"

namespace H7XML {

class INodeList;

// One XML element. The host implements it, drivers use it, and references are counted: host/auto_com.h says who owns what.
//
// There are two separate families of named access:
//  - named values are the element's attributes (system events, variable lists, persisted state);
//  - named children are child elements (settings exchanged with the configuration tool, notifications).
// A name or text passed in is borrowed for the call. A returned text is a copy. Names are matched exactly. When an element
// has several children of one name, the first one is read.
//
// Typed readers never fail: a value that is absent or of another type reads as false, 0 or the empty text. "true" and "1"
// read as true. An unsigned number is decimal, has at most 32 bits and may have white space around it; anything else reads
// as 0.
//
// A node stays valid while a handle holds it, even when the tree around it is gone. Every operation except AddRef and
// Release may throw std::bad_alloc.
//
// The order of the operations is a binary contract.
class H7_HOST_API INode {
 public:
  /*  1 */ virtual void AddRef() const = 0;
  /*  2 */ virtual void Release() const = 0;

  /*  3 */ virtual std::string GetName() const = 0;
  /*  4 */ virtual void SetName(const std::string& name) = 0;
  // The element's own text.
  /*  5 */ virtual std::string GetValue() const = 0;
  /*  6 */ virtual void SetValue(const std::string& value) = 0;
  /*  7 */ virtual unsigned long GetValueULong() const = 0;

  // Named values (attributes). A setter replaces the value of that name in place, or appends a new one.
  /*  8 */ virtual std::string GetNamedString(const char* name) const = 0;
  /*  9 */ virtual unsigned long GetNamedULong(const char* name) const = 0;
  /* 10 */ virtual bool GetNamedBool(const char* name) const = 0;
  /* 11 */ virtual void SetNamedString(const char* name, const std::string& value) = 0;
  /* 12 */ virtual void SetNamedULong(const char* name, unsigned long value) = 0;

  // Named children. The adders always append a new last child.
  /* 13 */ virtual void AddChildString(const char* name, const std::string& value) = 0;
  /* 14 */ virtual void AddChildInt(const char* name, int value) = 0;
  /* 15 */ virtual std::string GetChildString(const char* name) const = 0;
  /* 16 */ virtual unsigned long GetChildULong(const char* name) const = 0;
  /* 17 */ virtual bool GetChildBool(const char* name) const = 0;
  // Returns the first child of that name, or an empty handle.
  /* 18 */ virtual h7::auto_com<INode> GetChild(const char* name) const = 0;
  // Returns all child elements in document order, whatever their names. Never an empty handle.
  /* 19 */ virtual h7::auto_com<INodeList> GetChildren() const = 0;
  // Makes `child` the last child of this element, and removes it from where it was. The caller's handle stays valid and
  // still refers to the same element.
  /* 20 */ virtual void AppendChild(INode& child) = 0;

 protected:
  ~INode() = default;
};

}  // namespace H7XML

#endif
