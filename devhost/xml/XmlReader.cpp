#include "devhost/xml/XmlReader.h"

#include "devhost/xml/XmlNode.h"
#include "devhost/xml/XmlParser.h"

namespace devhost {
namespace {

// Values are destroyed by recursion, so their depth is bounded.
constexpr std::size_t kMaximumDepth = 1000;

class ElementBuilder : public XmlBuilder {
 public:
  void Open(std::size_t line, std::size_t column) override {
    if (m_open.size() == kMaximumDepth) {
      throw XmlError("elements are nested more than " + std::to_string(kMaximumDepth) + " deep", line, column);
    }
    XmlElement& element = m_open.empty() ? root : m_open.back()->children.emplace_back();
    element.line = line;
    element.column = column;
    m_open.push_back(&element);
  }
  XmlContent& Current() override { return *m_open.back(); }
  void Close() override { m_open.pop_back(); }

  XmlElement root;

 private:
  std::vector<XmlElement*> m_open;  // nothing is added beside an open element, so it stays where it is
};

class NodeBuilder : public XmlBuilder {
 public:
  explicit NodeBuilder(XmlNode& root) : m_root(root) {}

  void Open(std::size_t, std::size_t) override { m_open = m_open == nullptr ? &m_root : &m_open->AddChild(); }
  XmlContent& Current() override { return m_open->Content(); }
  void Close() override { m_open = m_open->Parent(); }

 private:
  XmlNode& m_root;
  XmlNode* m_open = nullptr;
};

void AddChildren(XmlNode& node, const XmlElement& element) {
  for (const XmlElement& child : element.children) {
    AddChildren(node.AddChild(child), child);
  }
}

}  // namespace

const std::string* XmlContent::FindAttribute(std::string_view attributeName) const {
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
  ElementBuilder builder;
  ParseXml(text, builder);
  return std::move(builder.root);
}

h7::auto_com<H7XML::INode> ReadXmlNode(const std::string& text) {
  XmlNode* const root = new XmlNode();
  h7::auto_com<H7XML::INode> handle = root->HandOut(DEVHOST_CALLER);
  NodeBuilder builder(*root);
  ParseXml(text, builder);
  return handle;
}

h7::auto_com<H7XML::INode> MakeXmlNode(const XmlElement& element) {
  XmlNode* const root = new XmlNode(element);
  h7::auto_com<H7XML::INode> handle = root->HandOut(DEVHOST_CALLER);
  AddChildren(*root, element);
  return handle;
}

}  // namespace devhost
