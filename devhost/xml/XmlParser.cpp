#include "devhost/xml/XmlParser.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <pugixml.hpp>
#include <set>
#include <string_view>

#include "devhost/xml/XmlCharacters.h"
#include "devhost/xml/XmlPlaces.h"

namespace devhost {
namespace {

// Where the start tag stands: the library knows where its name stands.
std::size_t OffsetOf(pugi::xml_node element) {
  return static_cast<std::size_t>(element.offset_debug()) - 1;
}

bool HasTwiceTheSameAttribute(pugi::xml_node element) {
  std::set<std::string_view> names;
  for (const pugi::xml_attribute attribute : element.attributes()) {
    if (!names.insert(attribute.name()).second) {
      return true;
    }
  }
  return false;
}

// The next node in document order, below `top`.
pugi::xml_node Following(pugi::xml_node node, pugi::xml_node top) {
  if (node.first_child()) {
    return node.first_child();
  }
  while (node != top && !node.next_sibling()) {
    node = node.parent();
  }
  return node == top ? pugi::xml_node() : node.next_sibling();
}

// What the library lets pass: several root elements, text around them, an attribute given twice, too many of them.
pugi::xml_node CheckedRoot(const pugi::xml_document& document, const std::string& text) {
  pugi::xml_node root;
  for (const pugi::xml_node node : document.children()) {
    if (node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata) {
      ThrowXmlError(text, root ? OffsetOf(root) : 0, "text outside of the root element");
    }
    if (node.type() == pugi::node_element && root) {
      ThrowXmlError(text, OffsetOf(node), std::string("a second root element <") + node.name() + ">; only one is allowed");
    }
    if (node.type() == pugi::node_element) {
      root = node;
    }
  }
  if (!root) {
    ThrowXmlError(text, text.size(), "no root element");
  }
  std::size_t attributes = 0;
  for (pugi::xml_node node = root; node; node = Following(node, root)) {
    const auto all = node.attributes();
    attributes += static_cast<std::size_t>(std::distance(all.begin(), all.end()));
    if (attributes > kMostXmlAttributes) {
      ThrowXmlError(text, OffsetOf(node),
                    "more than " + std::to_string(kMostXmlAttributes) + " attributes; allowed: at most this many");
    }
    // One attribute alone, the usual case, costs nothing.
    if (node.first_attribute() != node.last_attribute() && HasTwiceTheSameAttribute(node)) {
      ThrowXmlError(text, OffsetOf(node), std::string("element <") + node.name() + "> has one attribute twice");
    }
  }
  return root;
}

void Open(pugi::xml_node element, XmlPlaces& places, XmlBuilder& builder) {
  places.MoveTo(OffsetOf(element));
  builder.Open(places.Line(), places.Column());
  XmlContent& content = builder.Current();
  content.name = element.name();
  for (const pugi::xml_attribute attribute : element.attributes()) {
    content.attributes.push_back({attribute.name(), attribute.value()});
  }
}

// Without recursion, because documents may be deeper than the stack.
void Build(pugi::xml_node root, XmlPlaces& places, XmlBuilder& builder) {
  Open(root, places, builder);
  pugi::xml_node parent = root;
  pugi::xml_node node = root.first_child();
  while (node || parent != root) {
    if (!node) {
      builder.Close();
      node = parent.next_sibling();
      parent = parent.parent();
    } else if (node.type() == pugi::node_element) {
      Open(node, places, builder);
      parent = node;
      node = node.first_child();
    } else {
      builder.Current().text += node.value();
      node = node.next_sibling();
    }
  }
  builder.Close();
}

}  // namespace

void ParseXml(const std::string& text, XmlBuilder& builder) {
  std::string problem;
  const std::size_t bad = FindXmlProblem(text, problem);
  if (bad != std::string::npos) {
    ThrowXmlError(text, bad, problem);
  }
  // White space beside child elements is layout; alone in an element it is text. Fragments are let in so that what stands
  // outside of the root can be seen and refused.
  constexpr unsigned int kOptions = pugi::parse_cdata | pugi::parse_escapes | pugi::parse_eol | pugi::parse_wconv_attribute |
                                    pugi::parse_ws_pcdata_single | pugi::parse_fragment;
  pugi::xml_document document;
  const pugi::xml_parse_result result = document.load_buffer(text.data(), text.size(), kOptions, pugi::encoding_utf8);
  if (result.status == pugi::status_out_of_memory) {
    throw std::bad_alloc();
  }
  if (!result) {
    ThrowXmlError(text, static_cast<std::size_t>(std::max<std::ptrdiff_t>(result.offset, 0)), result.description());
  }
  const pugi::xml_node root = CheckedRoot(document, text);
  XmlPlaces places(text);
  Build(root, places, builder);
}

}  // namespace devhost
