#include "devhost/xml/XmlTree.h"

#include "devhost/xml/XmlParser.h"

namespace devhost {
namespace {

class TreeSink : public XmlParserSink {
 public:
  explicit TreeSink(XmlNode& root) : m_root(root) {}

  void OnOpen(const char* name, std::size_t, std::size_t) override {
    if (m_open == nullptr) {
      m_open = &m_root;
      m_root.Rename(name);
    } else {
      m_open = &m_open->AddChild(name, "");
    }
  }
  void OnAttribute(const char* name, const char* value) override { m_open->AppendAttribute(name, value); }
  void OnText(const char* text) override { m_open->AppendValue(text); }
  void OnClose() override { m_open = m_open->Parent(); }

 private:
  XmlNode& m_root;
  XmlNode* m_open = nullptr;
};

void Fill(XmlNode& node, const XmlElement& element) {
  for (const XmlAttribute& attribute : element.attributes) {
    node.AppendAttribute(attribute.name, attribute.value);
  }
  for (const XmlElement& child : element.children) {
    Fill(node.AddChild(child.name, child.text), child);
  }
}

}  // namespace

XmlTree ParseXmlTree(const std::string& text) {
  XmlTree tree(new XmlNode());
  TreeSink sink(tree.Root());
  ParseXml(text, sink);
  return tree;
}

XmlTree MakeXmlTree(const XmlElement& element) {
  XmlTree tree(new XmlNode(element.name, element.text));
  Fill(tree.Root(), element);
  return tree;
}

}  // namespace devhost
