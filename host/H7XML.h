#ifndef HOST_H7XML_H
#define HOST_H7XML_H

#include <string>

#include "host/HostApi.h"
#include "host/IDocument.h"
#include "host/INode.h"
#include "host/INodeList.h"
#include "host/auto_com.h"

// Where XML nodes come from. The host defines all functions; each may throw std::bad_alloc.
namespace H7XML {

// Returns a new element without a parent, with `value` as its own text ("" for no text). Never an empty handle.
H7_HOST_API h7::auto_com<INode> CreateXmlNode(const std::string& name, const std::string& value);

// The same with an unsigned number as text, in decimal.
H7_HOST_API h7::auto_com<INode> CreateXmlNode(const std::string& name, unsigned long value);

// Parses `text`. Returns an empty handle when it is not well-formed XML; nothing is reported.
H7_HOST_API h7::auto_com<IDocument> CreateXmlDocument(const std::string& text);

// Makes a node without name and value, and stores it in `*node` with one reference for the caller
// (`H7XML::Create(handle.Receive())`). Overwrites what `*node` held before, without releasing it.
H7_HOST_API void Create(INode** node);

}  // namespace H7XML

#endif
