#include "host/H7XML.h"

#include <atomic>

#include "devhost/xml/XmlNode.h"
#include "devhost/xml/XmlObserver.h"
#include "devhost/xml/XmlReader.h"
#include "host/IDocument.h"
#include "host/ToString.h"

namespace devhost {
namespace {

std::atomic<XmlObserver*> s_observer{nullptr};

// A parsed document: it keeps its root element alive.
class Document final : public XmlObject<H7XML::IDocument> {
 public:
  explicit Document(const XmlNode& root) : m_root(root) { m_root.Pin(); }

  h7::auto_com<H7XML::INode> GetRootElement() const override {
    TellXmlObserver("GetRootElement", "");
    if (!CheckUsable("GetRootElement", DEVHOST_CALLER)) {
      return {};
    }
    return m_root.HandOut(DEVHOST_CALLER);
  }

 private:
  ~Document() override = default;
  void Clear() const noexcept override { m_root.Unpin(); }
  std::string Describe() const override { return "document \"" + m_root.Content().name + "\""; }

  const XmlNode& m_root;
};

}  // namespace

XmlObserver* SetXmlObserver(XmlObserver* observer) noexcept {
  return s_observer.exchange(observer);
}

void TellXmlObserver(const char* operation, const char* name) {
  XmlObserver* const observer = s_observer;
  if (observer != nullptr) {
    observer->OnXmlCall(operation, name != nullptr ? name : "");
  }
}

}  // namespace devhost

namespace H7XML {

h7::auto_com<INode> CreateXmlNode(const std::string& name, const std::string& value) {
  devhost::TellXmlObserver("CreateXmlNode", name.c_str());
  return (new devhost::XmlNode({name, value, {}}))->HandOut(DEVHOST_CALLER);
}

h7::auto_com<INode> CreateXmlNode(const std::string& name, unsigned long value) {
  devhost::TellXmlObserver("CreateXmlNode", name.c_str());
  return (new devhost::XmlNode({name, h7::ToString(value), {}}))->HandOut(DEVHOST_CALLER);
}

h7::auto_com<IDocument> CreateXmlDocument(const std::string& text) {
  devhost::TellXmlObserver("CreateXmlDocument", text.c_str());
  try {
    const h7::auto_com<INode> root = devhost::ReadXmlNode(text);
    return (new devhost::Document(static_cast<devhost::XmlNode&>(*root)))->HandOut(DEVHOST_CALLER);
  } catch (const devhost::XmlError&) {
    return {};
  }
}

void Create(INode** node) {
  devhost::TellXmlObserver("Create", "");
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
