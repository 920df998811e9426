#ifndef DRIVERS_HOSTPROBE_PARSED_ROOT_H
#define DRIVERS_HOSTPROBE_PARSED_ROOT_H

#include <stdexcept>
#include <string>

#include "host/H7XML.h"

namespace drivers {

// The root element of that text. Throws std::runtime_error when the host does not parse it.
inline h7::auto_com<H7XML::INode> ParsedRoot(const std::string& text) {
  const h7::auto_com<H7XML::IDocument> document = H7XML::CreateXmlDocument(text);
  h7::auto_com<H7XML::INode> root = document ? document->GetRootElement() : h7::auto_com<H7XML::INode>();
  if (!root) {
    throw std::runtime_error("it does not parse " + text.substr(0, 60));
  }
  return root;
}

}  // namespace drivers

#endif
