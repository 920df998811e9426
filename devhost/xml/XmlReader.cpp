#include "devhost/xml/XmlReader.h"

#include "devhost/xml/XmlParser.h"
#include "devhost/xml/XmlTree.h"

namespace devhost {
namespace {

// Values are destroyed by recursion, so their depth is bounded.
constexpr std::size_t kMaximumDepth = 1000;

class ElementSink : public XmlParserSink {
 public:
  void OnOpen(const char* name, std::size_t line, std::size_t column) override {
    if (m_open.size() == kMaximumDepth) {
      throw XmlError("elements are nested more than " + std::to_string(kMaximumDepth) + " deep", line, column);
    }
    m_open.emplace_back();
    m_open.back().name = name;
    m_open.back().line = line;
    m_open.back().column = column;
  }
  void OnAttribute(const char* name, const char* value) override { m_open.back().attributes.push_back({name, value}); }
  void OnText(const char* text) override { m_open.back().text += text; }
  void OnClose() override {
    XmlElement closed = std::move(m_open.back());
    m_open.pop_back();
    if (m_open.empty()) {
      root = std::move(closed);
    } else {
      m_open.back().children.push_back(std::move(closed));
    }
  }

  XmlElement root;

 private:
  std::vector<XmlElement> m_open;
};

}  // namespace

const std::string* XmlElement::FindAttribute(const std::string& attributeName) const {
  for (const XmlAttribute& attribute : attributes) {
    if (attribute.name == attributeName) {
      return &attribute.value;
    }
  }
  return nullptr;
}

XmlError::XmlError(const std::string& problem, std::size_t errorLine, std::size_t errorColumn)
    : std::runtime_error(problem), m_line(errorLine), m_column(errorColumn) {}

XmlElement ReadXml(const std::string& text) {
  ElementSink sink;
  ParseXml(text, sink);
  return std::move(sink.root);
}

h7::auto_com<H7XML::INode> ReadXmlNode(const std::string& text) {
  return ParseXmlTree(text).Root().HandOut(DEVHOST_CALLER);
}

h7::auto_com<H7XML::INode> MakeXmlNode(const XmlElement& element) {
  return MakeXmlTree(element).Root().HandOut(DEVHOST_CALLER);
}

}  // namespace devhost
