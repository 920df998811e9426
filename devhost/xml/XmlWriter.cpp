#include <stdexcept>
#include <string_view>

#include "devhost/xml/XmlCharacters.h"
#include "devhost/xml/XmlNode.h"
#include "devhost/xml/XmlReader.h"

namespace devhost {
namespace {

constexpr char kReplacement[] = "\xEF\xBF\xBD";  // U+FFFD

bool IsWhiteSpace(std::string_view text) {
  return !text.empty() && text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

class Writer {
 public:
  // Writes behind what `out` holds already.
  explicit Writer(XmlStyle style, std::string out = "") : m_indented(style == XmlStyle::Indented), m_out(std::move(out)) {}

  // Without recursion, because trees may be deeper than the stack.
  std::string Write(const XmlNode& root) {
    const XmlNode* node = &root;
    for (;;) {
      Open(node->Content(), node->FirstChild() != nullptr);
      if (node->FirstChild() != nullptr) {
        node = node->FirstChild();
        continue;
      }
      while (node != &root && node->NextSibling() == nullptr) {
        node = node->Parent();
        Close(node->Content());
      }
      if (node == &root) {
        return Take();
      }
      node = node->NextSibling();
    }
  }

  std::string Write(const XmlElement& root) {
    Element(root);
    return Take();
  }

  void Attribute(std::string_view name, std::string_view value) {
    m_out += ' ';
    Name(name);
    m_out += "=\"";
    Text(value, true);
    m_out += '"';
  }

  std::string Take() { return std::move(m_out); }

 private:
  void Element(const XmlElement& element) {
    Open(element, !element.children.empty());
    for (const XmlElement& child : element.children) {
      Element(child);
    }
    if (!element.children.empty()) {
      Close(element);
    }
  }

  // Up to the first child; all of an element that has none.
  void Open(const XmlContent& element, bool hasChildren) {
    BreakLine();
    m_out += '<';
    Name(element.name);
    for (const XmlAttribute& attribute : element.attributes) {
      Attribute(attribute.name, attribute.value);
    }
    if (!hasChildren && element.text.empty()) {
      m_out += "/>";
      return;
    }
    m_out += '>';
    Value(element.text, hasChildren);
    if (!hasChildren) {
      EndTag(element);
      return;
    }
    ++m_depth;
    if (m_inline == 0 && !element.text.empty()) {
      m_inline = m_depth;  // line feeds would become part of its text
    }
  }

  // Behind the last child.
  void Close(const XmlContent& element) {
    const bool isInline = m_inline == m_depth;
    --m_depth;
    if (isInline) {
      m_inline = 0;
    } else {
      BreakLine();
    }
    EndTag(element);
  }

  void EndTag(const XmlContent& element) {
    m_out += "</";
    Name(element.name);
    m_out += '>';
  }

  void BreakLine() {
    if (m_indented && m_inline == 0 && !m_out.empty()) {
      m_out += '\n';
      m_out.append(2 * m_depth, ' ');
    }
  }

  // White space beside children would be taken for layout: its first character becomes a reference.
  void Value(std::string_view value, bool hasChildren) {
    if (hasChildren && IsWhiteSpace(value)) {
      Reference(value.front());
      value.remove_prefix(1);
    }
    Text(value, false);
  }

  void Name(std::string_view name) {
    if (name.empty()) {
      m_out += '_';
    }
    for (std::size_t i = 0; i < name.size();) {
      const std::size_t length = XmlCharacterLength(name.substr(i, 4));
      if (length != 0 && IsXmlNameByte(name[i], i == 0)) {
        m_out += name.substr(i, length);
      } else {
        m_out += '_';
      }
      i += length != 0 ? length : 1;
    }
  }

  void Text(std::string_view text, bool attribute) {
    std::size_t plain = 0;  // from here on nothing needs care
    for (std::size_t i = 0; i < text.size();) {
      const unsigned char byte = static_cast<unsigned char>(text[i]);
      if (byte >= 0x20 && byte < 0x80 && text[i] != '&' && text[i] != '<' && text[i] != '>' && text[i] != '"') {
        ++i;
        continue;
      }
      const std::size_t length = XmlCharacterLength(text.substr(i, 4));
      if (length < 2) {
        m_out += text.substr(plain, i - plain);
        Special(text[i], length, attribute);
        plain = i + 1;
      }
      i += length != 0 ? length : 1;
    }
    m_out += text.substr(plain);
  }

  void Special(char character, std::size_t length, bool attribute) {
    if (length == 0) {
      m_out += kReplacement;
    } else if (character == '&') {
      m_out += "&amp;";
    } else if (character == '<') {
      m_out += "&lt;";
    } else if (character == '>') {
      m_out += "&gt;";
    } else if (character == '"' && attribute) {
      m_out += "&quot;";
    } else if (character == '\r' || (attribute && character != '"')) {
      Reference(character);  // a parser would make a line feed or a blank of it
    } else {
      m_out += character;
    }
  }

  void Reference(char character) { m_out += "&#" + std::to_string(static_cast<int>(character)) + ";"; }

  const bool m_indented;
  std::size_t m_depth = 0;
  std::size_t m_inline = 0;  // the depth below which no lines are broken; 0 for none
  std::string m_out;
};

}  // namespace

std::string XmlText(const H7XML::INode& node, XmlStyle style) {
  const XmlNode* const own = dynamic_cast<const XmlNode*>(&node);
  if (own == nullptr) {
    throw std::invalid_argument("the XML node was not made by this host");
  }
  return Writer(style).Write(*own);
}

std::string XmlText(const XmlElement& element, XmlStyle style) {
  return Writer(style).Write(element);
}

void AppendXmlAttribute(std::string& xml, std::string_view name, std::string_view value) {
  Writer writer(XmlStyle::Compact, std::move(xml));
  writer.Attribute(name, value);
  xml = writer.Take();
}

}  // namespace devhost
