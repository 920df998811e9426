// The grammar of XML 1.0, fifth edition, for documents without a document type. Numbers in brackets are its productions.
#include "devhost/xml/StrictXml.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <set>
#include <string_view>

#include "devhost/text/Words.h"
#include "devhost/xml/XmlCharacters.h"
#include "devhost/xml/XmlPlaces.h"

namespace devhost {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";  // [3]

struct Range {
  std::uint32_t first;
  std::uint32_t last;
};

// [4] of what is not ASCII
constexpr Range kNameStart[] = {{0xC0, 0xD6},     {0xD8, 0xF6},     {0xF8, 0x2FF},    {0x370, 0x37D},
                                {0x37F, 0x1FFF},  {0x200C, 0x200D}, {0x2070, 0x218F}, {0x2C00, 0x2FEF},
                                {0x3001, 0xD7FF}, {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD}, {0x10000, 0xEFFFF}};
// [4a] has these, too
constexpr Range kNameMore[] = {{0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040}};

template <std::size_t size>
bool IsIn(const Range (&ranges)[size], std::uint32_t character) {
  return std::any_of(std::begin(ranges), std::end(ranges),
                     [character](const Range& range) { return character >= range.first && character <= range.last; });
}

// The UTF-8 character at the front of `bytes`, which are all of it.
std::uint32_t Decoded(std::string_view bytes) {
  std::uint32_t character = static_cast<unsigned char>(bytes[0]) & (0xFFU >> (bytes.size() + 1));
  for (const char byte : bytes.substr(1)) {
    character = (character << 6U) | (static_cast<unsigned char>(byte) & 0x3FU);
  }
  return character;
}

std::string Encoded(std::uint32_t character) {
  const auto byte = [character](std::uint32_t mark, unsigned int shift, std::uint32_t bits) {
    return static_cast<char>(mark | ((character >> shift) & bits));
  };
  if (character < 0x80) {
    return {byte(0, 0, 0x7F)};
  }
  if (character < 0x800) {
    return {byte(0xC0, 6, 0x1F), byte(0x80, 0, 0x3F)};
  }
  if (character < 0x10000) {
    return {byte(0xE0, 12, 0x0F), byte(0x80, 6, 0x3F), byte(0x80, 0, 0x3F)};
  }
  return {byte(0xF0, 18, 0x07), byte(0x80, 12, 0x3F), byte(0x80, 6, 0x3F), byte(0x80, 0, 0x3F)};
}

// Reads from the front of a text, of which all characters are allowed.
class Reader {
 public:
  explicit Reader(const std::string& text) : m_text(text), m_places(text) {}

  // [1]
  XmlElement Document() {
    Take("\xEF\xBB\xBF");
    if (Sees("<?xml") && m_at + 5 < m_text.size() && IsBlank(m_text[m_at + 5])) {
      Declaration();
    }
    Misc();
    if (!Sees("<") || Sees("</") || Sees("<!")) {
      Fail(Sees("<!DOCTYPE") ? "a document type can change what the document says; remove it"
           : IsOver()        ? "no root element"
                             : "expected the root element");
    }
    XmlElement root;
    Element(root, 1);
    Misc();
    if (!IsOver()) {
      Fail(Sees("<!DOCTYPE") ? "a document type behind the root element"
           : Sees("<")       ? "a second root element or markup behind the root element"
                             : "text behind the root element");
    }
    return root;
  }

 private:
  [[noreturn]] void Fail(const std::string& problem) const { ThrowXmlError(m_text, m_at, problem); }

  bool IsOver() const { return m_at == m_text.size(); }
  bool Sees(std::string_view what) const { return m_text.compare(m_at, what.size(), what) == 0; }
  static bool IsBlank(char byte) { return kBlanks.find(byte) != std::string_view::npos; }

  bool Take(std::string_view what) {
    if (!Sees(what)) {
      return false;
    }
    m_at += what.size();
    return true;
  }
  void Expect(std::string_view what, const std::string& problem) {
    if (!Take(what)) {
      Fail(problem);
    }
  }

  // [3]; whether there was any.
  bool Blanks() {
    const std::size_t start = m_at;
    m_at = std::min(m_text.find_first_not_of(kBlanks, m_at), m_text.size());
    return m_at != start;
  }

  // All up to `end`, which is passed over.
  std::string_view UpTo(std::string_view end, const std::string& problem) {
    const std::size_t found = m_text.find(end, m_at);
    if (found == std::string::npos) {
      Fail(problem);
    }
    const std::string_view all = std::string_view(m_text).substr(m_at, found - m_at);
    m_at = found + end.size();
    return all;
  }

  // [23] to [26], [32], [80], [81]
  void Declaration() {
    Take("<?xml");
    const auto pseudo = [this](std::string_view name, bool isRequired) {
      const std::size_t start = m_at;
      const bool isApart = Blanks();
      if (!isApart || !Take(name)) {
        if (isRequired) {
          Fail("expected " + std::string(name) + "=");
        }
        m_at = start;
        return std::string_view();
      }
      Blanks();
      Expect("=", "expected =");
      Blanks();
      const std::string_view quote = Sees("'") ? "'" : "\"";
      Expect(quote, "expected a quote");
      const std::string_view value = UpTo(quote, "a quote of the declaration is not closed");
      // An empty value is as wrong as one that is not there.
      return value.empty() ? std::string_view("?") : value;
    };
    const std::string_view version = pseudo("version", true);
    if (version.size() < 3 || version.substr(0, 2) != "1." ||
        version.find_first_not_of("0123456789", 2) != std::string_view::npos) {
      Fail("the version is not 1.0");
    }
    const std::string_view encoding = pseudo("encoding", false);
    std::string lower(encoding);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char byte) { return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + 32) : byte; });
    if (!lower.empty() && lower != "utf-8") {
      Fail("the encoding is not UTF-8");
    }
    const std::string_view standalone = pseudo("standalone", false);
    if (!standalone.empty() && standalone != "yes" && standalone != "no") {
      Fail("standalone is neither yes nor no");
    }
    Blanks();
    Expect("?>", "expected ?> at the end of the declaration");
  }

  // [27], any number
  void Misc() {
    do {
      Blanks();
    } while (Comment() || Instruction());
  }

  // [15]
  bool Comment() {
    if (!Take("<!--")) {
      return false;
    }
    UpTo("--", "a comment is not closed");
    Expect(">", "a comment holds \"--\"; write \"- -\"");
    return true;
  }

  // [16], [17]
  bool Instruction() {
    if (!Take("<?")) {
      return false;
    }
    const std::string target = Name("a processing instruction has no name");
    if (target.size() == 3 && (target[0] | 0x20) == 'x' && (target[1] | 0x20) == 'm' && (target[2] | 0x20) == 'l') {
      Fail(target == "xml" ? "<?xml stands only at the very beginning" : "the name xml is reserved");
    }
    if (!Take("?>")) {
      if (!Blanks()) {
        Fail("expected a blank or ?> behind the name");
      }
      UpTo("?>", "a processing instruction is not closed");
    }
    return true;
  }

  // [4], [4a], [5]
  std::string Name(const std::string& problem) {
    const std::size_t start = m_at;
    for (;;) {
      const bool isFirst = m_at == start;
      const std::string_view bytes = std::string_view(m_text).substr(m_at, 4);
      const std::size_t length = XmlCharacterLength(bytes);
      const bool isAscii = length < 2;
      if (length == 0 || (isAscii && !IsXmlNameByte(bytes[0], isFirst))) {
        break;
      }
      if (!isAscii) {
        const std::uint32_t character = Decoded(bytes.substr(0, length));
        if (!IsIn(kNameStart, character) && (isFirst || !IsIn(kNameMore, character))) {
          break;
        }
      }
      m_at += length;
    }
    if (m_at == start) {
      Fail(problem);
    }
    return m_text.substr(start, m_at - start);
  }

  // [39], [40], [42], [44]
  void Element(XmlElement& element, std::size_t depth) {
    if (depth > kDeepestStrictXml) {
      Fail("elements are nested more than " + std::to_string(kDeepestStrictXml) + " deep, which other programs refuse");
    }
    if (++m_elements > kMostXmlElements) {
      Fail("more than " + std::to_string(kMostXmlElements) + " elements; allowed: at most this many");
    }
    m_places.MoveTo(m_at);
    element.line = m_places.Line();
    element.column = m_places.Column();
    Take("<");
    element.name = Name("\"<\" begins no element; write &lt; for the character itself");
    Attributes(element);
    if (Take("/>")) {
      return;
    }
    Expect(">", "expected an attribute, > or />");
    Content(element, depth);
    Take("</");
    if (!Take(element.name) || (!Blanks() && !Sees(">"))) {
      Fail("expected the end tag of the element in line " + std::to_string(element.line));
    }
    Expect(">", "expected > at the end of an end tag");
  }

  // [41]
  void Attributes(XmlElement& element) {
    std::set<std::string> names;
    while (Blanks() && !Sees(">") && !Sees("/")) {
      XmlAttribute attribute;
      attribute.name = Name("expected the name of an attribute");
      if (!names.insert(attribute.name).second) {
        Fail("one attribute stands twice");
      }
      if (++m_attributes > kMostXmlAttributes) {
        Fail("more than " + std::to_string(kMostXmlAttributes) + " attributes; allowed: at most this many");
      }
      Blanks();
      Expect("=", "expected = behind the name of an attribute");
      Blanks();
      attribute.value = AttributeValue();
      element.attributes.push_back(std::move(attribute));
    }
  }

  // [10], with line ends and blanks as 2.11 and 3.3.3 have them
  std::string AttributeValue() {
    if (!Sees("\"") && !Sees("'")) {
      Fail("the value of an attribute does not stand in quotes");
    }
    const char quote = m_text[m_at++];
    std::string value;
    while (!IsOver() && m_text[m_at] != quote) {
      if (Sees("<")) {
        Fail("the value of an attribute holds \"<\"; write &lt;");
      }
      if (Sees("&")) {
        value += Reference();
      } else if (Take("\r\n") || (IsBlank(m_text[m_at]) && Take({&m_text[m_at], 1}))) {
        value += ' ';
      } else {
        value += m_text[m_at++];
      }
    }
    Expect({&quote, 1}, "the value of an attribute is not closed");
    return value;
  }

  // [43]
  void Content(XmlElement& element, std::size_t depth) {
    for (;;) {
      CharacterData(element.text);
      if (IsOver()) {
        Fail("the element in line " + std::to_string(element.line) + " is not closed");
      }
      if (Sees("&")) {
        element.text += Reference();
      } else if (Sees("</")) {
        break;
      } else if (Take("<![CDATA[")) {  // [18] to [21]
        Append(element.text, UpTo("]]>", "a CDATA section is not closed"));
      } else if (Comment() || Instruction()) {
        continue;
      } else if (Sees("<!")) {
        Fail("\"<!\" begins neither a comment nor a CDATA section");
      } else {
        Element(element.children.emplace_back(), depth + 1);
      }
    }
    if (!element.children.empty() && element.text.find_first_not_of(kBlanks) == std::string::npos) {
      element.text.clear();
    }
  }

  // [14]
  void CharacterData(std::string& into) {
    const std::size_t end = std::min(m_text.find_first_of("<&", m_at), m_text.size());
    const std::string_view all = std::string_view(m_text).substr(m_at, end - m_at);
    const std::size_t bad = all.find("]]>");
    if (bad != std::string_view::npos) {
      m_at += bad;
      Fail("text holds \"]]>\"; write ]]&gt;");
    }
    Append(into, all);
    m_at = end;
  }

  // Line ends become "\n" (2.11).
  static void Append(std::string& into, std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
      const std::size_t end = std::min(text.find('\r', at), text.size());
      into.append(text.substr(at, end - at));
      at = end;
      if (at < text.size()) {
        into += '\n';
        at += text.substr(at, 2) == "\r\n" ? 2 : 1;
      }
    }
  }

  // [66] to [68]; the five names are the only ones without a document type
  std::string Reference() {
    static constexpr std::pair<std::string_view, char> kNames[] = {
        {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}};
    for (const auto& [name, character] : kNames) {
      if (Take(name)) {
        return {character};
      }
    }
    const std::size_t start = m_at;
    const bool isHexadecimal = Take("&#x");
    if (isHexadecimal || Take("&#")) {
      std::uint32_t character = 0;
      const char* const begin = m_text.data() + m_at;
      const auto [end, error] = std::from_chars(begin, m_text.data() + m_text.size(), character, isHexadecimal ? 16 : 10);
      m_at += static_cast<std::size_t>(end - begin);
      const std::string bytes = error == std::errc() && character <= 0x10FFFF ? Encoded(character) : "";
      if (!bytes.empty() && XmlCharacterLength(bytes) == bytes.size() && Take(";")) {
        return bytes;
      }
    }
    m_at = start;
    Fail("\"&\" begins no known reference; write &amp; for the character itself");
  }

  const std::string& m_text;
  XmlPlaces m_places;
  std::size_t m_at = 0;
  std::size_t m_elements = 0;
  std::size_t m_attributes = 0;
};

}  // namespace

XmlElement ReadStrictXml(const std::string& text) {
  const std::size_t bad = FindBadXmlCharacter(text);
  if (bad != std::string::npos) {
    ThrowXmlError(text, bad, "a character that XML does not allow, or that is not UTF-8");
  }
  return Reader(text).Document();
}

}  // namespace devhost
