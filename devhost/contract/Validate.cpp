#include "devhost/contract/Validate.h"

#include <algorithm>
#include <boost/algorithm/string/join.hpp>
#include <map>
#include <utility>

#include "devhost/snmpd/NearName.h"
#include "devhost/text/Words.h"
#include "devhost/xml/StrictXml.h"

namespace devhost {

namespace {

using Holds = ElementShape::Holds;
using Kind = Mismatch::Kind;

constexpr char kXmlBlanks[] = " \t\r\n";

template <class Shapes>
std::string NamesOf(const Shapes& shapes) {
  std::vector<std::string> names;
  names.reserve(shapes.size());
  for (const auto& shape : shapes) {
    names.emplace_back(shape.name);
  }
  return names.empty() ? "none" : boost::join(names, ", ");
}

template <class Shapes>
std::string Meant(const Shapes& shapes, const std::string& name) {
  const NearName word(name);
  std::string meant;
  std::size_t least = NearName::kFar;
  for (const auto& shape : shapes) {
    const std::size_t distance = word.DistanceTo(NearName(shape.name).Text());
    if (distance < least) {
      least = distance;
      meant = shape.name;
    }
  }
  return meant;
}

// A way out for a name that is not allowed.
template <class Shapes>
std::string Instead(const Shapes& shapes, const std::string& name) {
  const std::string meant = Meant(shapes, name);
  return meant.empty() ? "remove it; allowed: " + NamesOf(shapes) : "write " + meant;
}

class Judge {
 public:
  void Element(const XmlElement& element, const ElementShape& shape) {
    if (IsFull()) {
      return;
    }
    if (shape.holds != Holds::Anything) {
      Attributes(element, shape);
      Text(element, shape);
      Children(element, shape);
      for (const UniqueShape& unique : shape.unique) {
        Unique(element, unique);
      }
    }
  }

  std::vector<Mismatch> Take() {
    std::stable_sort(m_found.begin(), m_found.end(),
                     [](const Mismatch& left, const Mismatch& right) { return left.line < right.line; });
    return std::move(m_found);
  }

 private:
  bool IsFull() const { return m_found.size() >= kMostMismatches; }

  void Add(Kind kind, const XmlElement& at, const std::string& element, std::string reason, std::string remedy) {
    if (!IsFull()) {
      m_found.push_back({kind, at.line, element, std::move(reason), std::move(remedy)});
    }
  }

  void Attributes(const XmlElement& element, const ElementShape& shape) {
    for (const XmlAttribute& attribute : element.attributes) {
      if (IsFull()) {
        return;
      }
      const auto known = std::find_if(shape.attributes.begin(), shape.attributes.end(),
                                      [&attribute](const AttributeShape& one) { return attribute.name == one.name; });
      const std::string title = "the attribute " + Quoted(attribute.name) + " of <" + element.name + ">";
      if (known == shape.attributes.end()) {
        Add(Kind::UnknownAttribute, element, element.name,
            (Meant(shape.attributes, attribute.name).empty() ? "an attribute of <" + element.name + ">" : title) +
                " is not known",
            Instead(shape.attributes, attribute.name));
      } else if (!IsOfKind(known->kind, attribute.value)) {
        Add(Kind::WrongValue, element, element.name, title + " has a value that is not allowed",
            std::string("allowed: ") + MeaningOf(known->kind));
      }
    }
    for (const AttributeShape& attribute : shape.attributes) {
      if (attribute.isRequired && element.FindAttribute(attribute.name) == nullptr) {
        Add(Kind::MissingAttribute, element, element.name,
            "<" + element.name + "> has no attribute " + Quoted(attribute.name),
            std::string("write ") + attribute.name + "=\"..\": " + MeaningOf(attribute.kind));
      }
    }
  }

  void Text(const XmlElement& element, const ElementShape& shape) {
    const bool isBlank = element.text.find_first_not_of(kXmlBlanks) == std::string::npos;
    if (shape.holds == Holds::Text && !IsOfKind(shape.text, element.text)) {
      Add(Kind::WrongValue, element, element.name, "<" + element.name + "> has a value that is not allowed",
          std::string("allowed: ") + MeaningOf(shape.text));
    } else if (shape.holds == Holds::Children && !isBlank) {
      Add(Kind::MisplacedText, element, element.name, "<" + element.name + "> holds text; allowed: elements only",
          "remove the text, or put it into an element");
    } else if (shape.holds == Holds::Nothing && !element.text.empty()) {
      Add(Kind::MisplacedText, element, element.name, "<" + element.name + "> is not empty",
          "write <" + element.name + "/>");
    }
  }

  void Children(const XmlElement& element, const ElementShape& shape) {
    std::map<std::string, std::size_t> counts;
    std::size_t place = 0;  // in an order, of the last child that stood right
    for (const XmlElement& child : element.children) {
      if (IsFull()) {
        return;
      }
      const ElementShape* const known = shape.FindChild(child.name);
      if (known == nullptr) {
        Unknown(child, element.name, shape);
        continue;
      }
      if (++counts[child.name] > known->most) {
        Add(Kind::ElementTwice, child, child.name, "<" + child.name + "> stands in <" + element.name + "> more than once",
            "remove all but one");
      } else if (shape.isOrdered) {
        Order(child, shape, static_cast<std::size_t>(known - shape.children.data()), place);
      }
      Element(child, *known);
    }
    for (const ElementShape& child : shape.children) {
      if (counts[child.name] < child.least) {
        Missing(element, child);
      }
    }
  }

  // A name that is not near to a known one may be a part of a value that was not escaped, so it is not repeated.
  void Unknown(const XmlElement& child, const std::string& parent, const ElementShape& shape) {
    const bool isNear = !Meant(shape.children, child.name).empty();
    Add(Kind::UnknownElement, child, isNear ? child.name : parent,
        "<" + parent + (isNear ? "> has no child <" + child.name + ">" : "> has a child that is not allowed"),
        Instead(shape.children, child.name));
  }

  void Order(const XmlElement& child, const ElementShape& shape, std::size_t itsPlace, std::size_t& place) {
    if (itsPlace < place) {
      Add(Kind::WrongOrder, child, child.name, "<" + child.name + "> stands behind <" + shape.children[place].name + ">",
          "keep this order: " + NamesOf(shape.children));
    } else {
      place = itsPlace;
    }
  }

  void Missing(const XmlElement& element, const ElementShape& child) {
    const std::string consequence = child.ifMissing == nullptr ? "" : std::string(": ") + child.ifMissing;
    Add(Kind::MissingElement, element, child.name, "<" + element.name + "> has no <" + child.name + ">" + consequence,
        std::string("add <") + child.name + ">" +
            (child.holds == Holds::Text ? std::string(": ") + MeaningOf(child.text) : ""));
  }

  void Unique(const XmlElement& element, const UniqueShape& unique) {
    std::map<std::vector<std::string>, std::size_t> lines;
    for (const XmlElement& child : element.children) {
      if (std::find(unique.children.begin(), unique.children.end(), child.name) == unique.children.end()) {
        continue;
      }
      std::vector<std::string> key;
      for (const char* const name : unique.attributes) {
        if (const std::string* const value = child.FindAttribute(name)) {
          key.push_back(*value);
        }
      }
      if (key.size() != unique.attributes.size()) {
        continue;  // it is reported that one is missing
      }
      const auto [first, added] = lines.emplace(std::move(key), child.line);
      if (!added) {
        const std::vector<std::string> names(unique.attributes.begin(), unique.attributes.end());
        Add(Kind::NotUnique, child, child.name,
            "<" + child.name + "> has the same " + boost::join(names, " and ") + " as the element in line " +
                std::to_string(first->second),
            "give each a value of its own");
      }
    }
  }

  std::vector<Mismatch> m_found;
};

std::string RootNames() {
  std::vector<std::string> names;
  for (const DocumentShape& document : Documents()) {
    if (std::find(names.begin(), names.end(), document.root.name) == names.end()) {
      names.emplace_back(document.root.name);
    }
  }
  return boost::join(names, ", ");
}

}  // namespace

const char* NameOf(Mismatch::Kind kind) {
  switch (kind) {
    case Kind::NotXml:
      return "not-xml";
    case Kind::UnknownRoot:
      return "root-unknown";
    case Kind::UnknownElement:
      return "element-unknown";
    case Kind::ElementTwice:
      return "element-twice";
    case Kind::MissingElement:
      return "element-missing";
    case Kind::WrongOrder:
      return "element-order";
    case Kind::UnknownAttribute:
      return "attribute-unknown";
    case Kind::MissingAttribute:
      return "attribute-missing";
    case Kind::MisplacedText:
      return "text-misplaced";
    case Kind::WrongValue:
      return "value-wrong";
    case Kind::NotUnique:
      return "not-unique";
  }
  return "";
}

std::vector<Mismatch> Validate(const XmlElement& element, const ElementShape& shape) {
  Judge judge;
  judge.Element(element, shape);
  return judge.Take();
}

std::vector<Mismatch> ValidateDocument(const std::string& text, bool asReply) {
  try {
    const XmlElement root = ReadStrictXml(text);
    const DocumentShape* const document = FindDocument(root.name, asReply);
    if (document == nullptr) {
      return {{Kind::UnknownRoot, root.line, "", "no document has this root element", "allowed: " + RootNames()}};
    }
    return Validate(root, document->root);
  } catch (const XmlError& error) {
    return {{Kind::NotXml, error.Line(), "", "column " + std::to_string(error.Column()) + ": " + error.what(),
             "correct the markup"}};
  }
}

std::string MeantChild(const ElementShape& shape, const std::string& name) {
  return Meant(shape.children, name);
}

}  // namespace devhost
