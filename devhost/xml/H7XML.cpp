#include "host/H7XML.h"

#include "devhost/xml/XmlCall.h"
#include "devhost/xml/XmlDocument.h"
#include "devhost/xml/XmlNode.h"
#include "devhost/xml/XmlObserver.h"
#include "devhost/xml/XmlReader.h"
#include "devhost/xml/XmlTree.h"
#include "host/ToString.h"

namespace devhost {
namespace {

XmlObserver* s_observer = nullptr;

}  // namespace

XmlObserver* SetXmlObserver(XmlObserver* observer) noexcept {
  XmlObserver* const before = s_observer;
  s_observer = observer;
  return before;
}

void OnXmlCall(const char* operation, const char* name) {
  if (s_observer != nullptr) {
    s_observer->OnXmlCall(operation, name != nullptr ? name : "");
  }
}

}  // namespace devhost

namespace H7XML {

h7::auto_com<INode> CreateXmlNode(const std::string& name, const std::string& value) {
  devhost::OnXmlCall("CreateXmlNode", name);
  return (new devhost::XmlNode(name, value))->HandOut(DEVHOST_CALLER);
}

h7::auto_com<INode> CreateXmlNode(const std::string& name, unsigned long value) {
  devhost::OnXmlCall("CreateXmlNode", name);
  return (new devhost::XmlNode(name, h7::ToString(value)))->HandOut(DEVHOST_CALLER);
}

h7::auto_com<IDocument> CreateXmlDocument(const std::string& text) {
  devhost::OnXmlCall("CreateXmlDocument", text);
  try {
    const devhost::XmlTree tree = devhost::ParseXmlTree(text);
    return devhost::XmlDocument::Create(tree.Root(), DEVHOST_CALLER);
  } catch (const devhost::XmlError&) {
    return {};
  }
}

void Create(INode** node) {
  devhost::OnXmlCall("Create");
  if (node != nullptr) {
    *node = (new devhost::XmlNode())->HandOut(DEVHOST_CALLER).Detach();
  }
}

}  // namespace H7XML

namespace h7 {

std::string ToString(bool value) {
  return value ? "true" : "false";
}

std::string ToString(unsigned long value) {
  return std::to_string(value);
}

}  // namespace h7
